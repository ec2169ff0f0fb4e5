// The reader: node kinds, files, and hostile documents that must end in a
// false return and one message naming file and line, never a crash, a hang or a leak.
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

// Kinds, names as full tokens, depths, lines and attributes (namespace declarations are not
// attributes); comments, processing instructions and blank text are skipped, also by readText.
TEST(HxXmlReader, NodeKindsNamesAttributesAndLines) {
  HxXmlReader reader;
  ASSERT_TRUE(
      reader.openMemory("<?xml version=\"1.0\"?>\n<!-- c -->\n<root xmlns:p=\"urn:x#\" a=\"1\" p:b=\"two\">\n"
                        "  <p:empty/>\n  <text>hi<!-- inside --></text>\n  <?pi data?>\n</root>\n",
                        "kinds.xml"));
  std::string walk;  // "kind name-or-text depth@line attributes" per node (no line for ends)
  for (int kind; (kind = reader.next()) > 0;) {
    walk += std::to_string(kind) + " " + (kind == HxXmlReader::Text ? reader.text() : reader.name().token()) + " " +
            std::to_string(reader.depth());
    if (kind != HxXmlReader::EndElement) walk += "@" + std::to_string(reader.lineNumber());
    for (int i = 0; i < reader.attributeCount(); ++i) {
      walk += " " + reader.attributeName(i).token() + "=" + reader.attributeValue(i);
    }
    walk += "\n";
  }
  EXPECT_EQ(walk, "1 root 0@3 a=1 urn:x#b=two\n3 urn:x#empty 1@4\n1 text 1@5\n4 hi 2@5\n2 text 1\n2 root 0\n");
  EXPECT_TRUE(reader.next() == HxXmlReader::EndOfDocument && !reader.hasError());
  EXPECT_STREQ(reader.fileName(), "kinds.xml");
  EXPECT_STREQ(reader.attributeValue(2), "");

  // readText joins the text around comments.
  std::string text;
  ASSERT_TRUE(reader.openMemory("<a> x <!--c--> y </a>") && reader.next() == HxXmlReader::StartElement);
  EXPECT_TRUE(reader.readText(text) && text == " x  y ") << text;
}

// A file is read like memory; a missing one is one message with the system's reason.
TEST(HxXmlReader, FileInputAndMissingFile) {
  const HxScopedTempDir dir("reader");
  const std::string path = dir.write("file.xml", kOpen + "<t:count>7</t:count></t:sample>\n");
  Hx::ScopedPrintCapture capture;
  HxXmlReader reader;
  Sample sample;
  EXPECT_TRUE(reader.openFile(path) && reader.readObject(sample) && sample.count.value() == 7u);
  std::filesystem::remove(path);
  HxXmlReader missing;
  EXPECT_FALSE(missing.openFile(path) || missing.readObject(sample));
  ASSERT_EQ(capture.records().size(), 1u);
  EXPECT_EQ(capture.records()[0].type, Hx::Print::Error);
  EXPECT_EQ(capture.records()[0].text, path + ":0: cannot open file: No such file or directory\n");
}

// Every hostile document: false, one error message "hostile.xml:<line>: ..." (the deep nesting
// reports the unknown child first), nothing printed by libxml2 itself, quickly. No entity is
// expanded and no external entity loaded: an entity's text (a local file's content) reaches no
// value and no message.
TEST(HxXmlReader, HostileDocumentsFailWithOneMessage) {
  std::string laughs = "<?xml version=\"1.0\"?>\n<!DOCTYPE lolz [\n <!ENTITY lol \"lol\">\n";
  for (int i = 1; i <= 9; ++i) {
    laughs += " <!ENTITY lol" + std::to_string(i) + " \"" +
              repeat("&lol" + (i > 1 ? std::to_string(i - 1) : std::string()) + ";", 10) + "\">\n";
  }
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
      {"/etc/passwd", doctype + "[<!ENTITY x SYSTEM \"/etc/passwd\">]>\n" + useEntity},
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
    EXPECT_TRUE(!outcome.result && last.type == Hx::Print::Error);
    EXPECT_NE(last.context.find("HxXmlReader"), std::string::npos);
    EXPECT_TRUE(std::regex_search(last.text, std::regex("^hostile\\.xml:[0-9]+: ")) &&
                last.text.find(row.fragment) != std::string::npos)
        << last.text;
    EXPECT_TRUE(last.text.find(marker) == std::string::npos && last.text.find("root:") == std::string::npos);
    EXPECT_TRUE(outcome.standardError.empty() && outcome.seconds < 5.0 && sample.name.value().empty());
  }
}

}  // namespace
