// Compound, basic and enum types: round trips, order independence, read-only members,
// refusal of unknown children and attributes with file and line, bad values, copies, and the
// polymorphic base with its creators and library list.
#include "framework/HxXmlCompoundType.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "framework/HxPrint.h"
#include "framework/HxXmlBaseVariableCompoundType.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlTokens.h"
#include "framework/HxXmlWriter.h"
#include "tests/framework/HxFrameworkTestTypes.h"

namespace {

using HxFrameworkTest::filledSample;
using HxFrameworkTest::Inner;
using HxFrameworkTest::Sample;

std::string written(const HxXmlObject& object) {
  std::ostringstream stream;
  HxXmlWriter writer("test", stream);
  EXPECT_TRUE(writer.writeObject(object));
  return stream.str();
}

struct ReadResult {
  bool result;
  std::vector<Hx::PrintRecord> messages;
};

ReadResult readInto(HxXmlObject& object, const std::string& text, const std::string& name = "sample.xml") {
  Hx::ScopedPrintCapture capture;
  HxXmlReader reader;
  reader.openMemory(text, name);
  const bool result = reader.readObject(object);
  return ReadResult{result, capture.records()};
}

const std::string kOpen = "<t:sample xmlns:t=\"http://example.org/namespace/test#\">\n";

TEST(HxXmlCompoundType, RoundTripOfEveryKindOfMember) {
  const Sample original = filledSample();
  const std::string document = written(original);
  Sample back;
  const ReadResult read = readInto(back, document);
  EXPECT_TRUE(read.result);
  EXPECT_TRUE(read.messages.empty());
  EXPECT_TRUE(back == original) << document;
  EXPECT_TRUE(back.equality(&original));
  EXPECT_TRUE(back.specified());
  EXPECT_TRUE(back.inner.gain.specified());
  // The read-only member is written but not read back.
  EXPECT_NE(document.find("<ns1:version>v1</ns1:version>"), std::string::npos);
  EXPECT_EQ(back.version.value(), "");
  // Attributes, enum names and registration order as written.
  EXPECT_NE(document.find(" xmlns:ns1=\"http://example.org/namespace/test#\" id=\"42\" ns1:scale=\"1e+21\" "
                          "unit=\"millimetre\">"),
            std::string::npos)
      << document;
  EXPECT_LT(document.find("<ns1:name>"), document.find("<ns1:time>"));
  EXPECT_LT(document.find("<ns1:mode>stopped</ns1:mode>"), document.find("<ns1:inner>"));
  // Writing what was read gives the same document but for the read-only member.
  Sample again = back;
  again.version = std::string("v1");
  EXPECT_EQ(written(again), document);
}

TEST(HxXmlCompoundType, SpecialDoublesAndBooleansRoundTrip) {
  for (const double value : {0.0, -0.0, 5e-324, 1.7976931348623157e308, -1.0 / 0.0, 1.0 / 0.0, 0.0 / 0.0}) {
    Sample sample;
    sample.time = value;
    sample.scale = value;
    Sample back;
    EXPECT_TRUE(readInto(back, written(sample)).result);
    EXPECT_TRUE(back.time == sample.time) << value;
    EXPECT_TRUE(back.scale == sample.scale) << value;
    if (!std::isnan(value)) {
      EXPECT_EQ(std::signbit(back.time.value()), std::signbit(value));
    }
  }
  Sample back;
  EXPECT_TRUE(readInto(back, kOpen + "<t:enabled> 1 </t:enabled><t:mode>1</t:mode></t:sample>").result);
  EXPECT_TRUE(back.enabled.value());
  EXPECT_EQ(back.mode.value(), Sample::Running);  // a decimal value is accepted too
}

TEST(HxXmlCompoundType, ChildrenAreReadInAnyOrderAndEmptyFormsWork) {
  Sample back;
  const ReadResult read = readInto(back, kOpen +
                                             "  <!-- reversed -->\n"
                                             "  <t:inner><t:label>x</t:label><t:gain>2</t:gain></t:inner>\n"
                                             "  <t:count>3</t:count>\n"
                                             "  <t:name></t:name>\n"
                                             "  <t:time>0.5</t:time>\n"
                                             "  <t:version>ignored</t:version>\n"
                                             "</t:sample>\n");
  EXPECT_TRUE(read.result);
  EXPECT_TRUE(read.messages.empty());
  EXPECT_EQ(back.inner.gain.value(), 2.0);
  EXPECT_EQ(back.inner.label.value(), "x");
  EXPECT_EQ(back.count.value(), 3u);
  EXPECT_EQ(back.time.value(), 0.5);
  EXPECT_EQ(back.version.value(), "");
  Sample empty;
  EXPECT_TRUE(readInto(empty, "<t:sample xmlns:t=\"http://example.org/namespace/test#\"/>").result);
  EXPECT_TRUE(empty.specified());
}

TEST(HxXmlCompoundType, UnknownChildIsReportedWithFileAndLineAndRefused) {
  Sample back;
  const ReadResult read = readInto(back, kOpen +
                                             "  <t:count>3</t:count>\n"
                                             "  <t:bogus><deep><deeper/></deep></t:bogus>\n"
                                             "  <t:time>0.5</t:time>\n"
                                             "</t:sample>\n",
                                   "unknown.xml");
  EXPECT_FALSE(read.result);
  ASSERT_EQ(read.messages.size(), 1u);
  EXPECT_EQ(read.messages[0].type, Hx::Print::Error);
  EXPECT_EQ(read.messages[0].text,
            "HxXmlCompoundType Error: element \"http://example.org/namespace/test#bogus\" not registered.\n"
            "\tFile: unknown.xml\n\tLine: 3\n");
  EXPECT_NE(read.messages[0].context.find("HxXmlCompoundType::readValueFromToken"), std::string::npos);
  // The rest is still read.
  EXPECT_EQ(back.count.value(), 3u);
  EXPECT_EQ(back.time.value(), 0.5);
}

TEST(HxXmlCompoundType, UnknownAttributeAndBadValuesAreReported) {
  {
    Sample back;
    const ReadResult read =
        readInto(back, "\n<t:sample xmlns:t=\"http://example.org/namespace/test#\" t:odd=\"1\" id=\"5\"/>", "a.xml");
    EXPECT_FALSE(read.result);
    ASSERT_EQ(read.messages.size(), 1u);
    EXPECT_EQ(read.messages[0].text,
              "HxXmlCompoundType Error: attribute \"http://example.org/namespace/test#odd\" not registered.\n"
              "\tFile: a.xml\n\tLine: 2\n");
    EXPECT_EQ(back.id.value(), 5u);
  }
  const struct Case {
    std::string body;
    std::string message;
  } cases[] = {
      {"\n<t:time>fast</t:time>", "HxXmlBasicType Error: \"fast\" is not a real number.\n\tFile: v.xml\n\tLine: 3\n"},
      {"<t:count>-1</t:count>", "HxXmlBasicType Error: \"-1\" is not an unsigned integer.\n\tFile: v.xml\n\tLine: 2\n"},
      {"<t:enabled>yes</t:enabled>",
       "HxXmlBasicType Error: \"yes\" is not a boolean (true or false).\n\tFile: v.xml\n\tLine: 2\n"},
      {"<t:mode>flying</t:mode>", "HxXmlEnumType Error: \"flying\" is not a known name.\n\tFile: v.xml\n\tLine: 2\n"},
      {"<t:time><x/></t:time>",
       "HxXmlBasicType Error: element \"http://example.org/namespace/test#time\" holds elements, expected a real "
       "number.\n\tFile: v.xml\n\tLine: 2\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.body);
    Sample back = filledSample();
    const Sample before = back;
    const ReadResult read = readInto(back, kOpen + c.body + "</t:sample>", "v.xml");
    EXPECT_FALSE(read.result);
    ASSERT_EQ(read.messages.size(), 1u);
    EXPECT_EQ(read.messages[0].type, Hx::Print::Error);
    EXPECT_EQ(read.messages[0].text, c.message);
    EXPECT_TRUE(back == before);  // the value is left alone
  }
  Sample back;
  const ReadResult read = readInto(back, "<t:sample xmlns:t=\"http://example.org/namespace/test#\" unit=\"inch\"/>");
  EXPECT_FALSE(read.result);
  ASSERT_EQ(read.messages.size(), 1u);
  EXPECT_EQ(read.messages[0].text.rfind("HxXmlEnumType Error: \"inch\" is not a known name.", 0), 0u);
}

TEST(HxXmlCompoundType, CopiesRegisterTheirOwnMembers) {
  Sample original = filledSample();
  (void)original.componentMap();  // registered before copying
  Sample copy(original);
  Sample assigned;
  (void)assigned.componentMap();
  assigned = original;
  for (const Sample* sample : {&copy, &assigned}) {
    const auto& components = sample->componentMap();
    ASSERT_EQ(components.size(), 7u);
    EXPECT_EQ(components[0].object, &sample->name);
    EXPECT_EQ(components[5].object, &sample->inner);
    EXPECT_TRUE(components[6].readOnly);
    EXPECT_TRUE(sample->isReadOnlyComponent(HxFrameworkTest::testToken("version")));
    EXPECT_FALSE(sample->isReadOnlyComponent(HxFrameworkTest::testToken("name")));
  }
  EXPECT_TRUE(copy == original);
  EXPECT_TRUE(assigned == original);
  EXPECT_TRUE(copy.hasChildren());
  EXPECT_TRUE(copy.hasAttributes());
  EXPECT_TRUE(Sample().equalsDefault());
  EXPECT_FALSE(original.equalsDefault());
  std::unique_ptr<HxXmlObject> clone(original.clone());
  EXPECT_TRUE(clone->equality(&original));
  EXPECT_FALSE(clone->equality(&original.inner));
  EXPECT_FALSE(clone->equality(nullptr));
}

// A small polymorphic container over the framework's base: elements made by token.
class Shelf : public HxXmlBaseVariableCompoundType {
 public:
  std::vector<std::unique_ptr<HxXmlObject>> items;

  Shelf() = default;
  Shelf(const Shelf& other) : HxXmlBaseVariableCompoundType(other) {
    for (const auto& item : other.items) items.emplace_back(item->clone());
  }

  HxXmlObject* clone() const override { return new Shelf(); }
  HxXmlObject* newObject() const override { return new Shelf(); }
  const HxToken& token() const override {
    static const HxToken token("shelf");
    return token;
  }
  HxBoolean equality(const HxXmlObject* other) const override { return dynamic_cast<const Shelf*>(other); }
  void registerComponentCreators() override {
    registerComponentCreator(Inner::classToken(), &Inner::creator);
    registerComponentCreator(Sample::classToken(), &Sample::creator);
  }
  HxBoolean readValueFromToken(const HxToken& token, HxXmlReader& reader) override {
    if (token == HxXml::HxAddLibrariesToken) {
      const HxBoolean listed = readLibraryList(reader);
      return processLibraries() && listed;
    }
    std::unique_ptr<HxXmlObject> item(newObjectFromToken(token));
    if (!item) return false;
    reader.readChild(*item);
    items.push_back(std::move(item));
    return true;
  }
  HxBoolean write(HxXmlWriter& writer) const override {
    const HxBoolean result = HxXmlBaseVariableCompoundType::write(writer);
    for (const auto& item : items) writer.writeObject(*item);
    return result;
  }
};

TEST(HxXmlBaseVariableCompoundType, CreatorsLibrariesAndRoundTrip) {
  Shelf shelf;
  EXPECT_EQ(shelf.creatorMap().size(), 2u);
  std::unique_ptr<HxXmlObject> made(shelf.newObjectFromToken(Inner::classToken()));
  ASSERT_TRUE(made);
  EXPECT_TRUE(dynamic_cast<Inner*>(made.get()));
  EXPECT_EQ(shelf.newObjectFromToken(HxToken("nothing")), nullptr);

  HxXmlBaseVariableCompoundType::registerLibrary("libhxTestModule");
  shelf.setAddLibraries({"libhxTestModule", "with \"quotes\" and blanks"});
  shelf.items.emplace_back(new Sample(filledSample()));
  Inner inner;
  inner.gain = 3.0;
  shelf.items.emplace_back(inner.clone());
  const std::string document = written(shelf);
  EXPECT_NE(document.find("<addLibraries count=\"2\">\n    <group>\"libhxTestModule\" \"with \\\"quotes\\\" and "
                          "blanks\"</group>\n  </addLibraries>"),
            std::string::npos)
      << document;

  Shelf back;
  const ReadResult read = readInto(back, document, "shelf.xml");
  EXPECT_FALSE(read.result);  // the second library is not present
  ASSERT_EQ(read.messages.size(), 1u);
  EXPECT_EQ(read.messages[0].text,
            "HxXmlBaseVariableCompoundType Error: library \"with \"quotes\" and blanks\" is not available.\n");
  EXPECT_EQ(back.addLibraries(), shelf.addLibraries());
  ASSERT_EQ(back.items.size(), 2u);
  EXPECT_TRUE(back.items[0]->equality(shelf.items[0].get()));
  EXPECT_TRUE(back.items[1]->equality(&inner));

  HxXmlBaseVariableCompoundType::registerLibrary("with \"quotes\" and blanks");
  Shelf again;
  EXPECT_TRUE(readInto(again, document).result);
  EXPECT_TRUE(again.processLibraries());
  Shelf copy(again);
  EXPECT_TRUE(copy == again);
  EXPECT_EQ(copy.creatorMap().size(), 2u);
}

}  // namespace
