// Number text: shortest round-trip doubles, special values, integers, parsing, locale independence.
#include "framework/HxNumberText.h"

#include <gtest/gtest.h>
#include <locale.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <locale>
#include <random>

#include "tests/framework/HxFrameworkTestTypes.h"
#include "tests/support/HxScopedTempDir.h"

namespace {

using Limits = std::numeric_limits<double>;

std::uint64_t bitsOf(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

double fromBits(std::uint64_t bits) {
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

// The text fits the documented capacity, the three forms agree, and it reads back bit for bit
// through our parser and through strtod.
void expectRoundTrip(double value) {
  const std::string text = HxDOUBLE2STRING(value);
  ASSERT_LE(text.size(), static_cast<size_t>(HxDoubleTextCapacity));
  char buffer[HxDoubleTextCapacity];
  std::string reused = "an earlier, longer text in a reused string";
  HxDOUBLE2STRING(value, reused);
  EXPECT_EQ(std::string(buffer, HxDOUBLE2STRING(value, buffer)) + "|" + reused, text + "|" + text);
  double parsed = 0.0;
  ASSERT_TRUE(HxSTRING2DOUBLE(text, parsed)) << text;
  EXPECT_EQ(bitsOf(parsed), bitsOf(value)) << text;
  EXPECT_EQ(bitsOf(std::strtod(text.c_str(), nullptr)), bitsOf(value)) << text;
}

// Random bit patterns cover every exponent; the text is never longer than the shortest %g
// that reads back (an integral value may come out in full when no longer than its exponent form).
TEST(HxNumberText, RandomDoublesRoundTripBitExactInShortestForm) {
  std::mt19937_64 random(20240611);
  for (int i = 0; i < 200000; ++i) {
    const double value = fromBits(random());
    if (std::isnan(value)) continue;
    expectRoundTrip(value);
    char candidate[512];
    for (int precision = 1; i % 16 == 0 && precision <= 17; ++precision) {
      std::snprintf(candidate, sizeof candidate, "%.*g", precision, value);
      if (std::strtod(candidate, nullptr) != value) continue;
      EXPECT_LE(HxDOUBLE2STRING(value).size(), std::strlen(candidate)) << candidate;
      break;
    }
  }
}

// Exact texts of typical and special values and of integers (decimal, the only radix the library
// uses); NaN of any sign or payload is "nan" and reads back.
TEST(HxNumberText, KnownTextsAndSpecialValues) {
  std::string texts;  // the last NaN signalling, with payload
  for (const double value :
       {0.1, 100.0, 1e21, 123456.789, -2.5e-300, 0.0, -0.0, Limits::denorm_min(), Limits::infinity(),
        -Limits::infinity(), Limits::quiet_NaN(), -Limits::quiet_NaN(), fromBits(0x7FF0000000000001ull)}) {
    texts += HxDOUBLE2STRING(value) + " ";
  }
  EXPECT_EQ(texts, "0.1 100 1e+21 123456.789 -2.5e-300 0 -0 5e-324 inf -inf nan nan nan ");
  EXPECT_EQ(HxINT2STRING(0, 10) + " " + HxINT2STRING(4294967295u, 10), "0 4294967295");
  for (const double value : {-Limits::denorm_min(), 2.2250738585072009e-308, Limits::min(), Limits::max(),
                             Limits::lowest(), Limits::epsilon(), 1.0 / 3.0, 9007199254740993.0}) {
    expectRoundTrip(value);
  }
  double nan = 0.0;
  EXPECT_TRUE(HxSTRING2DOUBLE("nan", nan) && std::isnan(nan) && std::isnan(std::strtod("nan", nullptr)));
}

// Whole texts only (blanks around allowed); a refused text leaves the value alone.
TEST(HxNumberText, ParsingAcceptsWholeTextsOnly) {
  double value = 0.0;
  EXPECT_TRUE(HxSTRING2DOUBLE("  -1.5e3\n", value) && value == -1500.0);
  EXPECT_TRUE(HxSTRING2DOUBLE("+2", value) && value == 2.0);
  EXPECT_TRUE(HxSTRING2DOUBLE("-inf", value) && value == -Limits::infinity());
  value = 7.0;
  for (const char* bad : {"", "  ", "1.5x", "x", "1,5", "--1", "+-1", "0x10", "1e999", "1 2"}) {
    EXPECT_FALSE(HxSTRING2DOUBLE(bad, value) || value != 7.0) << bad;
  }
  unsigned int number = 0;
  EXPECT_TRUE(HxSTRING2UINT(" 42 ", number) && number == 42u);
  EXPECT_TRUE(HxSTRING2UINT("4294967295", number) && number == 4294967295u);
  number = 9;
  for (const char* bad : {"", "-1", "+1", "4294967296", "12a", "1.0", " "}) {
    EXPECT_FALSE(HxSTRING2UINT(bad, number) || number != 9u) << bad;
  }
}

// Runs in a child process with a comma-decimal locale as both the C and the C++ global locale
// and prints, on standard error, what printf, our texts, the writer, the reader and a message
// made of numbers there.
[[noreturn]] void reportUnderCommaLocale(const std::string& name, const std::string& path) {
  if (!path.empty()) setenv("LOCPATH", path.c_str(), 1);
  std::locale::global(std::locale(name.c_str()));
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", 0.5);
  std::ostringstream stream;
  HxXmlWriter("", stream).writeObject(HxXmlBasicType<double>(1234.5), HxToken("value"));
  HxXmlReader reader;
  reader.openMemory(stream.str());
  HxXmlBasicType<double> back;
  double point = 0.0;
  double comma = 0.0;
  const bool parsed[] = {HxSTRING2DOUBLE("0.5", point), HxSTRING2DOUBLE("0,5", comma), reader.readObject(back)};
  Hx::ScopedPrintCapture capture;
  Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__) << 1234567u << " " << 0.5;
  std::fprintf(stderr, "printf %s, text %s, parsed %d%d %g, written %d, read %d %g, message %s.", text,
               HxDOUBLE2STRING(-1234567.25).c_str(), parsed[0], parsed[1], point * 10,
               stream.str().find("<value>1234.5</value>") != std::string::npos, parsed[2], back.value() * 10,
               capture.text().c_str());
  std::_Exit(0);
}

// Number texts, the writer, the reader and messages keep the point under a comma-decimal locale
// (an installed one, else one made with localedef), set in a child process (a death test):
// glibc keeps memory of a locale loaded from LOCPATH, which the leak checker would report.
TEST(HxNumberText, IndependentOfTheLocale) {
  std::string name = "hx_comma", path;
  for (const char* candidate : {"de_DE.UTF-8", "fr_FR.UTF-8"}) {  // glibc matches "utf8" too
    if (const locale_t probe = newlocale(LC_ALL_MASK, candidate, locale_t{})) {
      freelocale(probe);
      name = candidate;
    }
  }
  const HxScopedTempDir locales("locales");
  if (name == "hx_comma") {
    path = locales.path().string();
    if (std::system(("localedef -i de_DE -f UTF-8 '" + path + "/hx_comma' >/dev/null 2>&1").c_str()) != 0) {
      GTEST_SKIP() << "no comma-decimal locale, and localedef failed";
    }
  }
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(reportUnderCommaLocale(name, path), testing::ExitedWithCode(0),
              "printf 0,5, text -1234567\\.25, parsed 10 5, written 1, read 1 12345, message 1234567 0\\.5\\.");
}

}  // namespace
