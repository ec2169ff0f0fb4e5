// The writer: exact layout, namespaces, escaping (checked by our reader and by xmllint), data
// mode, and no allocation per element once warm.
#include "framework/HxXmlWriter.h"

#include <gtest/gtest.h>

#include <fstream>

#include "framework/HxXmlTokens.h"
#include "tests/framework/HxFrameworkTestTypes.h"
#include "tests/support/HxAllocationCounter.h"

namespace {

using HxFrameworkTest::xmllintAccepts;
using HxFrameworkTest::xmllintAvailable;

HxToken ns(const char* local) { return HxToken("http://example.org/namespace/writer#" + std::string(local)); }

// What the recorder's golden XML file does not show: "--" in the document name broken up, a
// prefix made up for an unregistered namespace and declared on each element that uses it (an
// attribute included), a registered one declared once on the root. Misuse stays well-formed: a
// stray end is ignored, an attribute without value is closed empty, an attribute after content
// is dropped with its value. A failed stream gets nothing.
TEST(HxXmlWriter, NamespacesMisuseAndFailure) {
  const std::string registered = "http://example.org/namespace/registered#";
  HxXmlWriter::registerNamespacePrefix(registered, "rg");
  std::ostringstream stream;
  {
    HxXmlWriter writer("doc -- name", stream);
    writer.endElement();
    writer.startElement(HxXml::HxDefaultToken);
    writer.addAttribute(HxToken("open"));
    for (const char* value : {"1.5", "2"}) {
      writer.startElement(ns("first"));
      writer.addAttribute(ns("unit"));
      writer.writeScalar("m");
      writer.writeScalar(value);
      writer.addAttribute(HxToken("late"));
      writer.writeScalar("dropped");
      writer.writeScalar(" kept");
      writer.endElement();
    }
    writer.startElement(HxToken(registered + "leaf"));
    for (int i = 0; i < 3; ++i) writer.endElement();
    EXPECT_TRUE(writer.depth() == 0 && writer.good());
  }
  const std::string first = "<ns1:first xmlns:ns1=\"http://example.org/namespace/writer#\" ns1:unit=\"m\">";
  EXPECT_EQ(stream.str(),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- doc - - name -->\n"
            "<default xmlns:rg=\"http://example.org/namespace/registered#\" open=\"\">\n  " +
                first + "1.5 kept</ns1:first>\n  " + first + "2 kept</ns1:first>\n  <rg:leaf/>\n</default>\n");

  std::ostringstream failed;
  failed.setstate(std::ios::failbit);
  HxXmlWriter writer("", failed);
  EXPECT_FALSE(writer.writeObject(HxXmlBasicType<double>(1.0), HxToken("x")) || writer.good());
}

// Every awkward character, as attribute, text and quoted scalar of a group: the reader gives
// back the text (control characters other than tab, line feed and carriage return, and invalid
// UTF-8, become U+FFFD), splits the group again and leaves data mode on the group's end; xmllint
// accepts the file.
TEST(HxXmlWriter, EscapingSurvivesReadingBack) {
  const std::string awkward = std::string("a&b<c>d\"e'f]]>g\th\ni\rj\\k ") + '\x01' + "l" + '\x1F' +
                              "m \xC3\xBC \xE2\x82\xAC \xF0\x9F\x98\x80 bad:\xC3\x28 \xED\xA0\x80 \xEF\xBF\xBE end";
  const std::string fffd = "\xEF\xBF\xBD";
  const std::string expected = std::string("a&b<c>d\"e'f]]>g\th\ni\rj\\k ") + fffd + "l" + fffd +
                               "m \xC3\xBC \xE2\x82\xAC \xF0\x9F\x98\x80 bad:" + fffd + "( " + fffd + fffd + fffd +
                               " " + fffd + fffd + fffd + " end";
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
    writer.writeScalar("-2.5e3");
    for (const std::string& text : {awkward, std::string(), std::string("two words")}) writer.writeScalar(text, true);
    writer.writeScalar("inf");
    writer.endElement();
    writer.endElement();
  }
  const std::string document = stream.str();
  EXPECT_TRUE(!xmllintAvailable() || xmllintAccepts(document)) << document;

  Hx::ScopedPrintCapture capture;
  HxXmlReader reader;
  ASSERT_TRUE(reader.openMemory(document, "escaped.xml") && reader.next() == HxXmlReader::StartElement);
  ASSERT_EQ(reader.attributeCount(), 1);
  EXPECT_EQ(std::string(reader.attributeValue(0)), expected);
  std::string text;
  ASSERT_TRUE(reader.next() == HxXmlReader::StartElement && reader.readText(text));
  EXPECT_EQ(text, expected);
  ASSERT_TRUE(reader.next() == HxXmlReader::StartElement && reader.next() == HxXmlReader::Text);
  reader.setDataMode(1);
  std::vector<std::string> scalars;
  while (reader.nextScalar()) scalars.push_back(reader.scalar());
  EXPECT_EQ(scalars, (std::vector<std::string>{"-2.5e3", expected, "", "two words", "inf"}));
  EXPECT_TRUE(reader.nodeKind() == HxXmlReader::EndElement && reader.name() == std::string("group"));
  EXPECT_TRUE(reader.dataMode() == 0 && capture.records().empty());
}

// Text scalars report where they landed, counted from the start of the report: plain, in a
// group, quoted and escaped; attribute values and scalars after the report do not.
TEST(HxXmlWriter, ReportsWhereScalarsLand) {
  std::ostringstream stream;
  HxXmlWriter writer("", stream);
  writer.startElement(HxToken("r"));
  std::vector<HxXmlScalarSpan> spans(1);
  writer.reportScalars(&spans);
  const std::size_t start = stream.str().size();
  writer.startElement(ns("b"));
  writer.addAttribute(ns("unit"));
  writer.writeScalar("m");
  writer.writeScalar("1.5");
  writer.endElement();
  writer.startElement(HxXml::HxGroupToken);
  writer.setDataMode(true);
  for (const char* text : {"2", "x \"y\"", "a<b"}) writer.writeScalar(text, text[0] == 'x');
  writer.endElement();
  writer.reportScalars(nullptr);
  writer.startElement(HxToken("after"));
  writer.writeScalar("3");
  writer.endElement();
  const std::string text = stream.str().substr(start);
  std::vector<std::string> landed;
  for (const HxXmlScalarSpan& span : spans) landed.push_back(text.substr(span.begin, span.end - span.begin));
  EXPECT_EQ(landed, (std::vector<std::string>{"1.5", "2", "\"x \\\"y\\\"\"", "a&lt;b"}));
}

// Once the names have been seen, writing more objects (elements, attributes, enum names,
// doubles, quoted strings in a group) allocates nothing.
TEST(HxXmlWriter, SteadyStateWritesDoNotAllocate) {
  std::ofstream stream("/dev/null");  // its buffer is allocated on opening
  HxXmlWriter writer("steady", stream);
  const HxFrameworkTest::Sample sample = HxFrameworkTest::filledSample();
  const auto writeOne = [&] {
    writer.writeObject(sample);
    writer.startElement(HxXml::HxGroupToken);
    writer.setDataMode(true);
    for (int i = 0; i < 8; ++i) sample.time.write(writer);
    sample.name.write(writer);
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
