// Compound, basic and enum types: round trips, order independence, read-only members,
// refusal of unknown children and attributes and of bad values with file and line, copies,
// and the polymorphic base with its creators and library list.
#include "framework/HxXmlCompoundType.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "framework/HxXmlBaseVariableCompoundType.h"
#include "framework/HxXmlTokens.h"
#include "tests/framework/HxFrameworkTestTypes.h"

namespace {

using namespace HxFrameworkTest;

// Every kind of member is written (attributes, enum names, registration order) and read back
// equal; the read-only member is written but not read.
TEST(HxXmlCompoundType, RoundTripOfEveryKindOfMember) {
  const Sample original = filledSample();
  const std::string document = written(original);
  Sample back;
  const ReadResult read = readInto(back, document);
  EXPECT_TRUE(read.result);
  EXPECT_TRUE(read.messages.empty());
  EXPECT_TRUE(back == original) << document;
  EXPECT_TRUE(back.specified() && back.inner.gain.specified());
  EXPECT_NE(document.find("<ns1:version>v1</ns1:version>"), std::string::npos);
  EXPECT_EQ(back.version.value(), "");
  EXPECT_NE(document.find(" xmlns:ns1=\"" + kNs + "\" id=\"42\" ns1:scale=\"1e+21\" unit=\"millimetre\">"),
            std::string::npos)
      << document;
  EXPECT_LT(document.find("<ns1:name>"), document.find("<ns1:time>"));
  EXPECT_LT(document.find("<ns1:mode>stopped</ns1:mode>"), document.find("<ns1:inner>"));
  // Writing what was read gives the same document but for the read-only member.
  back.version = std::string("v1");
  EXPECT_EQ(written(back), document);
}

// Zeros keep their sign, infinities and NaN survive, as element and as attribute; a bool
// reads "1" and an enum a decimal value.
TEST(HxXmlCompoundType, SpecialDoublesAndLenientFormsRoundTrip) {
  for (const double value : {0.0, -0.0, 5e-324, 1.7976931348623157e308, -1.0 / 0.0, 1.0 / 0.0, 0.0 / 0.0}) {
    SCOPED_TRACE(value);
    Sample sample;
    sample.time = value;
    sample.scale = value;
    Sample back;
    EXPECT_TRUE(readInto(back, written(sample)).result);
    EXPECT_TRUE(back.time == sample.time && back.scale == sample.scale);
    EXPECT_TRUE(std::isnan(value) || std::signbit(back.time.value()) == std::signbit(value));  // NaN: no sign kept
  }
  Sample back;
  EXPECT_TRUE(readInto(back, kOpen + "<t:enabled> 1 </t:enabled><t:mode>1</t:mode></t:sample>").result);
  EXPECT_TRUE(back.enabled.value());
  EXPECT_EQ(back.mode.value(), Sample::Running);
}

// Children come in any order, comments and empty elements are fine, the read-only member is
// skipped (also when empty), and an empty root reads as specified.
TEST(HxXmlCompoundType, ChildrenAreReadInAnyOrderAndEmptyFormsWork) {
  Sample back;
  const ReadResult read = readInto(back, kOpen +
                                             "<!-- reversed --><t:inner><t:label>x</t:label><t:gain>2</t:gain>"
                                             "</t:inner><t:version/><t:count>3</t:count><t:name></t:name>"
                                             "<t:time>0.5</t:time><t:version>ignored</t:version></t:sample>\n");
  EXPECT_TRUE(read.result);
  EXPECT_TRUE(read.messages.empty());
  Sample expected;
  expected.inner.gain = 2.0;
  expected.inner.label = std::string("x");
  expected.count = 3u;
  expected.time = 0.5;
  EXPECT_TRUE(back == expected);
  EXPECT_EQ(back.version.value(), "");
  Sample empty;
  EXPECT_TRUE(readInto(empty, "<t:sample xmlns:t=\"" + kNs + "\"/>").result);
  EXPECT_TRUE(empty.specified());
}

// Unknown children and attributes and values that do not parse: false, one type-4 message
// naming the function, file and line; the bad value is left alone and the rest is still read.
TEST(HxXmlCompoundType, RefusedInputIsReportedAndTheRestIsRead) {
  const struct {
    std::string attributes, body, message;
    int line;
    const char* context;
  } rows[] = {
      {"", "\n<t:bogus><deep><deeper/></deep></t:bogus>", "HxXmlCompoundType Error: element \"" + kNs +
       "bogus\" not registered.", 3, "HxXmlCompoundType::readValueFromToken"},
      {" t:odd=\"1\"", "", "HxXmlCompoundType Error: attribute \"" + kNs + "odd\" not registered.", 2,
       "HxXmlCompoundType::readAttributeFromToken"},
      {" id=\"x\"", "", "HxXmlBasicType Error: attribute value \"x\" is not an unsigned integer.", 2,
       "HxXmlBasicType<T>::readAttribute"},
      {" unit=\"inch\"", "", "HxXmlEnumType Error: \"inch\" is not a known name.", 2, "HxXmlEnumType<T>::fromText"},
      {"", "\n\n<t:time>fast</t:time>", "HxXmlBasicType Error: \"fast\" is not a real number.", 4,
       "HxXmlBasicType<T>::read"},
      {"", "<t:count>-1</t:count>", "HxXmlBasicType Error: \"-1\" is not an unsigned integer.", 2,
       "HxXmlBasicType<T>::read"},
      {"", "<t:enabled>yes</t:enabled>", "HxXmlBasicType Error: \"yes\" is not a boolean (true or false).", 2,
       "HxXmlBasicType<T>::read"},
      {"", "<t:mode>flying</t:mode>", "HxXmlEnumType Error: \"flying\" is not a known name.", 2,
       "HxXmlEnumType<T>::fromText"},
      {"", "<t:time><x/></t:time>", "HxXmlBasicType Error: element \"" + kNs +
       "time\" holds elements, expected a real number.", 2, "HxXmlBasicType<T>::read"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.message);
    Sample back = filledSample();
    const ReadResult read = readInto(back,
                                     "\n<t:sample xmlns:t=\"" + kNs + "\"" + row.attributes + ">" + row.body +
                                         "<t:inner><t:label>rest</t:label></t:inner></t:sample>",
                                     "v.xml");
    EXPECT_FALSE(read.result);
    ASSERT_EQ(read.messages.size(), 1u);
    EXPECT_EQ(read.messages[0].type, Hx::Print::Error);
    EXPECT_EQ(read.messages[0].text, row.message + "\n\tFile: v.xml\n\tLine: " + std::to_string(row.line) + "\n");
    EXPECT_NE(read.messages[0].context.find(row.context), std::string::npos) << read.messages[0].context;
    EXPECT_EQ(back.inner.label.value(), "rest");
    back.inner.label = filledSample().inner.label;
    EXPECT_TRUE(back == filledSample());
  }
}

// A copy (constructed or assigned) registers its own members, never the source's.
TEST(HxXmlCompoundType, CopiesRegisterTheirOwnMembers) {
  Sample original = filledSample();
  (void)original.componentMap();  // registered before copying
  Sample copy(original);
  Sample assigned;
  (void)assigned.componentMap();
  assigned = original;
  for (const Sample* sample : {&copy, &assigned}) {
    const auto& components = sample->componentMap();
    ASSERT_EQ(components.size(), 8u);
    EXPECT_EQ(components[0].object, &sample->name);
    EXPECT_EQ(components[5].object, &sample->inner);
    EXPECT_TRUE(components[6].readOnly && sample->isReadOnlyComponent(testToken("version")));
    EXPECT_TRUE(*sample == original);
  }
}

// The smallest container over the polymorphic base: a creator and the library list.
class Shelf : public HxXmlBaseVariableCompoundType {
 public:
  HxXmlObject* clone() const override { return new Shelf(*this); }
  HxXmlObject* newObject() const override { return new Shelf(); }
  const HxToken& token() const override {
    static const HxToken token("shelf");
    return token;
  }
  HxBoolean equality(const HxXmlObject* other) const override { return dynamic_cast<const Shelf*>(other); }
  void registerComponentCreators() override { registerComponentCreator(Inner::classToken(), &Inner::creator); }
  HxBoolean readValueFromToken(const HxToken& token, HxXmlReader& reader) override {
    if (!(token == HxXml::HxAddLibrariesToken)) return false;
    const HxBoolean listed = readLibraryList(reader);
    return processLibraries() && listed;
  }
};

// Objects are made by token; the library list is written as a count and a group of quoted
// names, reads back, and each library not announced is reported.
TEST(HxXmlBaseVariableCompoundType, CreatorsAndLibraryList) {
  Shelf shelf;
  const std::unique_ptr<HxXmlObject> made(shelf.newObjectFromToken(Inner::classToken()));
  EXPECT_TRUE(dynamic_cast<Inner*>(made.get()));
  EXPECT_EQ(shelf.newObjectFromToken(HxToken("nothing")), nullptr);
  HxXmlBaseVariableCompoundType::registerLibrary("libhxTestModule");
  shelf.setAddLibraries({"libhxTestModule", "with \"quotes\" and blanks"});
  const std::string document = written(shelf);
  EXPECT_NE(document.find("<addLibraries count=\"2\">\n    <group>\"libhxTestModule\" \"with \\\"quotes\\\" and "
                          "blanks\"</group>\n  </addLibraries>"),
            std::string::npos)
      << document;

  Shelf back;
  const ReadResult read = readInto(back, document, "shelf.xml");
  EXPECT_FALSE(read.result);  // the second library is not present
  ASSERT_EQ(read.messages.size(), 1u);
  EXPECT_EQ(read.messages[0].type, Hx::Print::Error);
  EXPECT_EQ(read.messages[0].text,
            "HxXmlBaseVariableCompoundType Error: library \"with \"quotes\" and blanks\" is not available.\n");
  EXPECT_EQ(back.addLibraries(), shelf.addLibraries());

  HxXmlBaseVariableCompoundType::registerLibrary("with \"quotes\" and blanks");
  EXPECT_TRUE(readInto(back, document).result);
  const Shelf copy(back);
  EXPECT_EQ(copy.addLibraries(), shelf.addLibraries());
  EXPECT_EQ(copy.creatorMap().size(), 1u);
}

}  // namespace
