// The reader: files, and hostile documents that must end in a false return and one message
// naming file and line, never a crash, a hang or a leak. (Node kinds, comments and processing
// instructions are met by the compound tests.)
#include "framework/HxXmlReader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "tests/framework/HxFrameworkTestTypes.h"
#include "tests/support/HxScopedTempDir.h"

namespace {

using HxFrameworkTest::kOpen;
using HxFrameworkTest::readInto;
using HxFrameworkTest::ReadResult;
using HxFrameworkTest::repeat;
using HxFrameworkTest::Sample;

// A file is read like memory; a missing one is one message with the system's reason.
TEST(HxXmlReader, FileInputAndMissingFile) {
  const HxScopedTempDir dir("reader");
  const std::string path = dir.write("file.xml", kOpen + "<t:count>7</t:count></t:sample>\n");
  Hx::ScopedPrintCapture capture;
  HxXmlReader reader;
  Sample sample;
  EXPECT_TRUE(reader.openFile(path) && reader.readObject(sample) && sample.count.value() == 7u);
  EXPECT_STREQ(reader.attributeValue(0), "");  // out of range: empty, never null
  std::filesystem::remove(path);
  HxXmlReader missing;
  EXPECT_FALSE(missing.openFile(path) || missing.readObject(sample));
  ASSERT_TRUE(capture.records().size() == 1u && capture.records()[0].type == Hx::Print::Error);
  EXPECT_EQ(capture.records()[0].text, path + ":0: cannot open file: No such file or directory\n");
}

// Every hostile document: false, one error message "hostile.xml:<line>: ..." (the deep nesting
// reports the unknown child first), nothing printed by libxml2 itself. No entity is
// expanded and no external entity loaded: an entity's text (a local file's content) reaches no
// value and no message.
TEST(HxXmlReader, HostileDocumentsFailWithOneMessage) {
  std::string laughs = "<?xml version=\"1.0\"?>\n<!DOCTYPE lolz [\n <!ENTITY lol0 \"lol\">\n";
  for (int i = 1; i <= 9; ++i)
    laughs += " <!ENTITY lol" + std::to_string(i) + " \"" + repeat("&lol" + std::to_string(i - 1) + ";", 10) + "\">\n";
  laughs += "]>\n" + kOpen + "<t:name>&lol9;</t:name><t:inner t:x=\"&lol9;\"/></t:sample>\n";
  const HxScopedTempDir dir("reader");
  const std::string marker = "TOP-SECRET-MARKER-4711";
  const std::string secret = "file://" + dir.write("secret.txt", marker + "\n");
  const std::string doctype = "<?xml version=\"1.0\"?>\n<!DOCTYPE t:sample ";
  const std::string useEntity = kOpen + "<t:name>&x;</t:name></t:sample>";
  const struct {
    const char* what;
    std::string text;
    const char* fragment = "";  // expected in the message
  } rows[] = {
      {"truncated", kOpen + "\n<t:count>7</t:count>\n<t:inner>"},
      {"mismatched tags", kOpen + "\n<t:count>7</t:name>\n</t:sample>"},
      {"10,000-deep nesting", kOpen + repeat("<t:inner>", 10000) + repeat("</t:inner>", 10000) + "</t:sample>",
       "Excessive depth"},
      {"billion laughs", laughs},
      {"external entity", doctype + "[<!ENTITY x SYSTEM \"" + secret + "\">]>\n" + useEntity},
      {"external DTD", doctype + "SYSTEM \"" + secret + "\">\n" + kOpen + "<t:name>x</t:name></t:sample>"},
      {"parameter entity", doctype + "[<!ENTITY % p SYSTEM \"" + secret + "\"> %p;]>\n" + kOpen + "</t:sample>"},
      {"document type", "<?xml version=\"1.0\"?>\n<!DOCTYPE r>\n<r/>", ": document type declarations are not accepted"},
      {"undeclared entity", kOpen + "<t:name>&nope;</t:name></t:sample>"},
      {"undeclared prefix", "<q:sample/>"},
      {"content after the root", kOpen + "</t:sample><extra/>"},
      {"empty document", ""},
      {"not XML", "\x01\x02 just bytes"},
      {"invalid UTF-8", kOpen + "<t:name>\xC3\x28</t:name></t:sample>"},
      {"two attributes of one name", "<t:sample xmlns:t=\"urn:a#\" id=\"1\" id=\"2\"/>"},
      {"text above libxml2's 10 MB limit", kOpen + "<t:name>" + std::string(11000000, 'x') + "</t:name></t:sample>"},
      {"attribute value above the limit", "<t:sample xmlns:t=\"urn:a#\" id=\"" + std::string(11000000, '1') + "\"/>"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    Sample sample;
    const ReadResult outcome = readInto(sample, row.text, "hostile.xml");
    ASSERT_EQ(outcome.messages.size(), std::string(row.what) == "10,000-deep nesting" ? 2u : 1u);
    const Hx::PrintRecord& last = outcome.messages.back();
    EXPECT_TRUE(!outcome.result && last.type == Hx::Print::Error &&
                last.context.find("HxXmlReader") != std::string::npos)
        << last.context;
    EXPECT_TRUE(std::regex_search(last.text, std::regex("^hostile\\.xml:[0-9]+: ")) &&
                last.text.find(row.fragment) != std::string::npos)
        << last.text;
    EXPECT_EQ(last.text.find(marker), std::string::npos);
    EXPECT_TRUE(outcome.standardError.empty() && sample.name.value().empty());
  }
}

}  // namespace
