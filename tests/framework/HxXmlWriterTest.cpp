// The writer: exact layout, namespaces, escaping (checked by our reader and by xmllint), data
// mode, and no allocation per element once warm.
#include "framework/HxXmlWriter.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "bench/HxAllocationCounter.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlTokens.h"

namespace {

const std::string kNs = "http://example.org/namespace/writer#";

HxToken ns(const char* local) {
  HxToken token(kNs.c_str());
  token += local;
  return token;
}

// A stream buffer that accepts and drops everything without allocating.
class DiscardBuffer : public std::streambuf {
 protected:
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
};

bool xmllintAvailable() { return std::system("command -v xmllint >/dev/null 2>&1") == 0; }

// Runs xmllint --noout on a document; true when it is well-formed.
bool xmllintAccepts(const std::string& document) {
  const std::string path = testing::TempDir() + "hx_writer_check.xml";
  {
    std::ofstream file(path, std::ios::binary);
    file << document;
  }
  const int status = std::system(("xmllint --noout '" + path + "' 2>/dev/null").c_str());
  std::remove(path.c_str());
  return status == 0;
}

TEST(HxXmlWriter, LayoutIndentationAndNamespaces) {
  std::ostringstream stream;
  {
    HxXmlWriter writer("doc -- name", stream);
    writer.startElement(HxXml::HxDefaultToken);
    writer.addAttribute(HxXml::HxCountToken);
    writer.writeScalar("2");
    writer.startElement(ns("first"));
    writer.addAttribute(ns("unit"));
    writer.writeScalar("m");
    writer.writeScalar("1.5");
    writer.endElement();
    writer.startElement(ns("second"));
    writer.startElement(HxXml::HxGroupToken);
    writer.setDataMode(true);
    writer.writeScalar("1");
    writer.writeScalar("two words", true);
    writer.writeScalar("3");
    writer.endElement();
    writer.startElement(HxToken("empty"));
    writer.endElement();
    writer.endElement();
    EXPECT_EQ(writer.depth(), 1);
    writer.endElement();
    EXPECT_EQ(writer.depth(), 0);
    EXPECT_TRUE(writer.good());
  }
  EXPECT_EQ(stream.str(),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!-- doc - - name -->\n"
            "<default count=\"2\">\n"
            "  <ns1:first xmlns:ns1=\"http://example.org/namespace/writer#\" ns1:unit=\"m\">1.5</ns1:first>\n"
            "  <ns1:second xmlns:ns1=\"http://example.org/namespace/writer#\">\n"
            "    <group>1 \"two words\" 3</group>\n"
            "    <empty/>\n"
            "  </ns1:second>\n"
            "</default>\n");
  EXPECT_TRUE(xmllintAccepts(stream.str()) || !xmllintAvailable());
}

TEST(HxXmlWriter, RegisteredNamespacesAreDeclaredOnTheRoot) {
  const std::string uri = "http://example.org/namespace/registered#";
  HxXmlWriter::registerNamespacePrefix(uri, "rg");
  HxToken token(uri.c_str());
  token += "leaf";
  std::ostringstream stream;
  {
    HxXmlWriter writer("", stream);
    writer.startElement(HxToken("root"));
    writer.startElement(token);
    writer.endElement();
    writer.startElement(token);
    writer.endElement();
    writer.endElement();
  }
  EXPECT_EQ(stream.str(),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<root xmlns:rg=\"http://example.org/namespace/registered#\">\n"
            "  <rg:leaf/>\n"
            "  <rg:leaf/>\n"
            "</root>\n");
  // Read back, the tokens are whole again.
  HxXmlReader reader;
  reader.openMemory(stream.str());
  ASSERT_EQ(reader.next(), HxXmlReader::StartElement);
  ASSERT_EQ(reader.next(), HxXmlReader::EmptyElement);
  EXPECT_EQ(reader.name(), token);
}

// Every awkward character: the reader gives back the text (control characters other than tab,
// line feed and carriage return, and invalid UTF-8, become U+FFFD), and xmllint accepts the file.
TEST(HxXmlWriter, EscapingSurvivesReadingBack) {
  const std::string awkward = std::string("a&b<c>d\"e'f]]>g\th\ni\rj\\k ") + '\x01' + "l" + '\x1F' +
                              "m \xC3\xBC \xE2\x82\xAC \xF0\x9F\x98\x80 bad:\xC3\x28 \xED\xA0\x80 \xEF\xBF\xBE end";
  const std::string expected = std::string("a&b<c>d\"e'f]]>g\th\ni\rj\\k ") + "\xEF\xBF\xBD" + "l" +
                               "\xEF\xBF\xBD" + "m \xC3\xBC \xE2\x82\xAC \xF0\x9F\x98\x80 bad:\xEF\xBF\xBD(" +
                               " \xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD \xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD end";
  std::ostringstream stream;
  {
    HxXmlWriter writer("", stream);
    writer.startElement(HxToken("r"));
    writer.addAttribute(HxToken("attribute"));
    writer.writeScalar(awkward);
    writer.startElement(HxToken("text"));
    writer.writeScalar(awkward);
    writer.endElement();
    writer.startElement(HxToken("group"));
    writer.setDataMode(true);
    writer.writeScalar(awkward, true);
    writer.writeScalar("plain", true);
    writer.endElement();
    writer.endElement();
  }
  const std::string document = stream.str();
  if (xmllintAvailable()) {
    EXPECT_TRUE(xmllintAccepts(document)) << document;
  }

  Hx::ScopedPrintCapture capture;
  HxXmlReader reader;
  ASSERT_TRUE(reader.openMemory(document, "escaped.xml"));
  ASSERT_EQ(reader.next(), HxXmlReader::StartElement);
  ASSERT_EQ(reader.attributeCount(), 1);
  EXPECT_EQ(std::string(reader.attributeValue(0)), expected);
  ASSERT_EQ(reader.next(), HxXmlReader::StartElement);
  std::string text;
  ASSERT_TRUE(reader.readText(text));
  EXPECT_EQ(text, expected);
  ASSERT_EQ(reader.next(), HxXmlReader::StartElement);
  ASSERT_EQ(reader.next(), HxXmlReader::Text);
  reader.setDataMode(1);
  ASSERT_TRUE(reader.nextScalar());
  EXPECT_EQ(reader.scalar(), expected);
  ASSERT_TRUE(reader.nextScalar());
  EXPECT_EQ(reader.scalar(), "plain");
  EXPECT_FALSE(reader.nextScalar());
  EXPECT_TRUE(capture.records().empty());
}

TEST(HxXmlWriter, MisuseStaysWellFormed) {
  std::ostringstream stream;
  {
    HxXmlWriter writer("", stream);
    writer.endElement();  // nothing open: no-op
    writer.startElement(HxToken("r"));
    writer.addAttribute(HxToken("open"));  // value never written: closed empty
    writer.startElement(HxToken("c"));
    writer.writeScalar("text");
    writer.addAttribute(HxToken("late"));  // after content: dropped with its value
    writer.writeScalar("dropped");
    writer.writeScalar(" kept");
    writer.endElement();
    writer.endElement();
    writer.endElement();
  }
  // (Namespaces registered by other tests may be declared on the root as well.)
  const std::string document = stream.str();
  EXPECT_EQ(document.substr(0, 41), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r");
  EXPECT_EQ(document.substr(document.find(" open=")), " open=\"\">\n  <c>text kept</c>\n</r>\n");
}

TEST(HxXmlWriter, FailedStreamDropsOutput) {
  std::ostringstream stream;
  stream.setstate(std::ios::failbit);
  HxXmlWriter writer("", stream);
  EXPECT_FALSE(writer.writeObject(HxXmlBasicType<double>(1.0), HxToken("x")));
  EXPECT_FALSE(writer.good());
  EXPECT_EQ(stream.str(), "");
}

// Once the names have been seen, writing more elements allocates nothing.
TEST(HxXmlWriter, SteadyStateWritesDoNotAllocate) {
  DiscardBuffer buffer;
  std::ostream stream(&buffer);
  HxXmlWriter writer("steady", stream);
  const HxToken sample = ns("generalStorage");
  const HxToken time = ns("time");
  const HxToken index = ns("pathPointIndex");
  const HxXmlBasicType<double> value(0.125);
  const HxXmlBasicType<unsigned int> count(17);
  const HxXmlBasicType<std::string> label(std::string("a label longer than the small-string buffer"));
  const auto writeOne = [&] {
    writer.startElement(sample);
    writer.addAttribute(HxXml::HxCountToken);
    count.write(writer);
    writer.startElement(time);
    value.write(writer);
    writer.endElement();
    writer.startElement(index);
    label.write(writer);
    writer.endElement();
    writer.startElement(HxXml::HxGroupToken);
    writer.setDataMode(true);
    for (int i = 0; i < 8; ++i) value.write(writer);
    label.write(writer);
    writer.endElement();
    writer.endElement();
  };
  writer.startElement(HxXml::HxDefaultToken);
  writeOne();  // warm-up
  HxAllocationCounter counter;
  for (int i = 0; i < 1000; ++i) writeOne();
  EXPECT_EQ(counter.allocations(), 0u);
  writer.endElement();
}

}  // namespace
