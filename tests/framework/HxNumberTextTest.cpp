// Number text: shortest round-trip doubles, special values, parsing, radix, locale independence.
#include "framework/HxNumberText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <locale.h>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <string>

#include "framework/HxPrint.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlWriter.h"

namespace {

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

// Text of a double must read back bit for bit, through our parser and through strtod.
void expectRoundTrip(double value) {
  const std::string text = HxDOUBLE2STRING(value);
  ASSERT_LE(text.size(), static_cast<size_t>(HxDoubleTextCapacity));
  double parsed = 0.0;
  ASSERT_TRUE(HxSTRING2DOUBLE(text, parsed)) << text;
  EXPECT_EQ(bitsOf(parsed), bitsOf(value)) << text;
  EXPECT_EQ(bitsOf(std::strtod(text.c_str(), nullptr)), bitsOf(value)) << text;
}

TEST(HxNumberText, RandomDoublesRoundTripBitExactInShortestForm) {
  std::mt19937_64 random(20240611);
  char buffer[HxDoubleTextCapacity];
  std::string reused;
  for (int i = 0; i < 200000; ++i) {
    // Random bit patterns cover every exponent; NaNs are checked separately.
    double value = fromBits(random());
    if (std::isnan(value)) continue;
    expectRoundTrip(value);
    // The three forms agree.
    const std::string text = HxDOUBLE2STRING(value);
    EXPECT_EQ(std::string(buffer, HxDOUBLE2STRING(value, buffer)), text);
    HxDOUBLE2STRING(value, reused);
    EXPECT_EQ(reused, text);
    // Shortest: no text of %g with fewer characters reads back. (An integral value may come
    // out in full, "2577404796788113408", when that is no longer than its exponent form.)
    if (i % 16 == 0) {
      char candidate[512];
      for (int precision = 1; precision <= 17; ++precision) {
        std::snprintf(candidate, sizeof candidate, "%.*g", precision, value);
        if (std::strtod(candidate, nullptr) == value) {
          EXPECT_LE(text.size(), std::strlen(candidate)) << text << " is longer than " << candidate;
          break;
        }
      }
    }
  }
}

TEST(HxNumberText, KnownTextsAndSpecialValues) {
  EXPECT_EQ(HxDOUBLE2STRING(0.1), "0.1");
  EXPECT_EQ(HxDOUBLE2STRING(100.0), "100");
  EXPECT_EQ(HxDOUBLE2STRING(1e21), "1e+21");
  EXPECT_EQ(HxDOUBLE2STRING(123456.789), "123456.789");
  EXPECT_EQ(HxDOUBLE2STRING(-2.5e-300), "-2.5e-300");
  EXPECT_EQ(HxDOUBLE2STRING(0.0), "0");
  EXPECT_EQ(HxDOUBLE2STRING(-0.0), "-0");
  EXPECT_EQ(HxDOUBLE2STRING(std::numeric_limits<double>::denorm_min()), "5e-324");
  EXPECT_EQ(HxDOUBLE2STRING(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(HxDOUBLE2STRING(-std::numeric_limits<double>::infinity()), "-inf");
  EXPECT_EQ(HxDOUBLE2STRING(std::numeric_limits<double>::quiet_NaN()), "nan");
  EXPECT_EQ(HxDOUBLE2STRING(-std::numeric_limits<double>::quiet_NaN()), "nan");
  EXPECT_EQ(HxDOUBLE2STRING(fromBits(0x7FF0000000000001ull)), "nan");  // signalling, with payload

  for (const double value : {0.0, -0.0, std::numeric_limits<double>::denorm_min(),
                             -std::numeric_limits<double>::denorm_min(), 2.2250738585072009e-308,
                             std::numeric_limits<double>::min(), std::numeric_limits<double>::max(),
                             std::numeric_limits<double>::lowest(), std::numeric_limits<double>::epsilon(),
                             std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                             1.0 / 3.0, 9007199254740993.0}) {
    expectRoundTrip(value);
  }
  double nan = 0.0;
  ASSERT_TRUE(HxSTRING2DOUBLE("nan", nan));
  EXPECT_TRUE(std::isnan(nan));
  EXPECT_TRUE(std::isnan(std::strtod("nan", nullptr)));
}

TEST(HxNumberText, ParsingAcceptsWholeTextsOnly) {
  double value = 7.0;
  EXPECT_TRUE(HxSTRING2DOUBLE("  -1.5e3\n", value));
  EXPECT_EQ(value, -1500.0);
  EXPECT_TRUE(HxSTRING2DOUBLE("+2", value));
  EXPECT_EQ(value, 2.0);
  EXPECT_TRUE(HxSTRING2DOUBLE("-inf", value));
  EXPECT_EQ(value, -std::numeric_limits<double>::infinity());
  value = 7.0;
  for (const char* bad : {"", "  ", "1.5x", "x", "1,5", "--1", "+-1", "0x10", "1e999", "1 2"}) {
    EXPECT_FALSE(HxSTRING2DOUBLE(bad, value)) << bad;
    EXPECT_EQ(value, 7.0) << bad;
  }

  unsigned int number = 9;
  EXPECT_TRUE(HxSTRING2UINT(" 42 ", number));
  EXPECT_EQ(number, 42u);
  EXPECT_TRUE(HxSTRING2UINT("4294967295", number));
  EXPECT_EQ(number, 4294967295u);
  number = 9;
  for (const char* bad : {"", "-1", "+1", "4294967296", "12a", "1.0", " "}) {
    EXPECT_FALSE(HxSTRING2UINT(bad, number)) << bad;
    EXPECT_EQ(number, 9u) << bad;
  }
}

TEST(HxNumberText, IntegerTextInEveryRadix) {
  EXPECT_EQ(HxINT2STRING(0, 10), "0");
  EXPECT_EQ(HxINT2STRING(4294967295u, 10), "4294967295");
  EXPECT_EQ(HxINT2STRING(255, 16), "ff");
  EXPECT_EQ(HxINT2STRING(5, 2), "101");
  EXPECT_EQ(HxINT2STRING(35, 36), "z");
  EXPECT_EQ(HxINT2STRING(12, 1), "12");   // unsupported radix: decimal
  EXPECT_EQ(HxINT2STRING(12, 37), "12");
  std::string out = "previous text that is long";
  HxINT2STRING(7, 10, out);
  EXPECT_EQ(out, "7");
}

bool localeExists(const char* name) {
  locale_t probe = newlocale(LC_ALL_MASK, name, static_cast<locale_t>(0));
  if (!probe) return false;
  freelocale(probe);
  return true;
}

// Counts a failed check of the child process below, saying which on standard error.
int check(bool good, const char* what) {
  if (!good) std::fprintf(stderr, "failed: %s\n", what);
  return good ? 0 : 1;
}

// Runs in a child process with a comma-decimal locale as both the C and the C++ global locale;
// returns the number of failed checks.
int checksUnderCommaLocale(const std::string& name, const std::string& path) {
  if (!path.empty()) setenv("LOCPATH", path.c_str(), 1);
  std::locale::global(std::locale(name.c_str()));
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", 0.5);
  int failures = check(std::string(text) == "0,5", "the locale uses a decimal comma");
  failures += check(HxDOUBLE2STRING(0.5) == "0.5", "0.5 is written with a point");
  failures += check(HxDOUBLE2STRING(-1234567.25) == "-1234567.25", "no digit grouping");
  double value = 0.0;
  failures += check(HxSTRING2DOUBLE("0.5", value) && value == 0.5, "0.5 is read");
  failures += check(!HxSTRING2DOUBLE("0,5", value), "0,5 is refused");
  // Through the writer and the reader, and in a message.
  std::ostringstream stream;
  {
    HxXmlWriter writer("", stream);
    writer.writeObject(HxXmlBasicType<double>(1234.5), HxToken("value"));
  }
  failures += check(stream.str().find("<value>1234.5</value>") != std::string::npos, "the writer uses a point");
  HxXmlReader reader;
  reader.openMemory(stream.str());
  HxXmlBasicType<double> back;
  failures += check(reader.readObject(back) && back.value() == 1234.5, "the reader reads it back");
  Hx::ScopedPrintCapture capture;
  Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__) << 1234567u << " " << 0.5;
  failures += check(capture.text() == "1234567 0.5", "messages use the classic locale");
  return failures;
}

// The comma-decimal locale runs in a child process (a death test): glibc keeps a little memory
// when a locale is loaded from LOCPATH, which the leak checker would report.
TEST(HxNumberText, IndependentOfTheLocale) {
  std::string name;
  std::string path;
  for (const char* candidate : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8"}) {
    if (localeExists(candidate)) {
      name = candidate;
      break;
    }
  }
  if (name.empty()) {
    // None installed: generate one into a temporary folder.
    path = testing::TempDir() + "hx_locales";
    const std::string command =
        "mkdir -p '" + path + "' && localedef -i de_DE -f UTF-8 '" + path + "/hx_comma' >/dev/null 2>&1";
    if (std::system(command.c_str()) != 0) {
      GTEST_SKIP() << "no comma-decimal locale is installed and localedef could not make one";
    }
    name = "hx_comma";
  }
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::_Exit(checksUnderCommaLocale(name, path)), testing::ExitedWithCode(0), "");
}

}  // namespace
