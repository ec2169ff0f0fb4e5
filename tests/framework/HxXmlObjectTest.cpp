// Serialisable objects: compound, basic and enum types (round trips, order independence,
// read-only members, refusal of unknown children and attributes and of bad values with file and
// line, copies), the visitor's walk and the XML Schema of an object. (The polymorphic base's
// creators and library list are pinned by the analysis library's polymorphic vector tests.)
#include "framework/HxXmlCompoundType.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/framework/HxFrameworkTestTypes.h"
#include "tests/support/HxScopedTempDir.h"

namespace {

using namespace HxFrameworkTest;

// Every kind of member is written (attributes, enum names, registration order) and read back
// equal; the read-only member is written but not read; writing what was read gives the same.
TEST(HxXmlCompoundType, RoundTripOfEveryKindOfMember) {
  const Sample original = filledSample();
  const std::string document = writeToString(original);
  Sample back;
  const ReadResult read = readInto(back, document);
  EXPECT_TRUE(read.result && read.messages.empty() && back.version.value().empty());
  back.version = std::string("v1");
  EXPECT_TRUE(back == original && back.specified() && back.inner.gain.specified()) << document;
  EXPECT_TRUE(holdsInOrder(
      document, {" xmlns:ns1=\"" + kNs + "\" id=\"42\" ns1:scale=\"1e+21\" unit=\"millimetre\">", "<ns1:name>",
                 "<ns1:time>", "<ns1:mode>stopped</ns1:mode>", "<ns1:inner>", "<ns1:version>v1</ns1:version>"}))
      << document;
  EXPECT_EQ(writeToString(back), document);
}

// Special values survive as element and as attribute (NaN equal to NaN, the sign of zero kept;
// their texts are the number text tests' concern); a bool reads "1" and an enum a decimal value.
TEST(HxXmlCompoundType, SpecialDoublesAndLenientFormsRoundTrip) {
  Sample sample, back;
  sample.scale = 0.0 / 0.0;
  EXPECT_FALSE(back == sample);  // an attribute alone tells them apart
  sample.time = -0.0;
  sample.inner.gain = -1.0 / 0.0;
  EXPECT_TRUE(readInto(back, writeToString(sample)).result && back == sample && std::signbit(back.time.value()));
  EXPECT_TRUE(readInto(back, kOpen + "<t:enabled> 1 </t:enabled><t:mode>1</t:mode></t:sample>").result &&
              back.enabled.value() && back.mode.value() == Sample::Running);
}

// Children come in any order, comments, processing instructions and empty elements are fine
// (text is joined around them), the read-only member is skipped (also when empty), and an empty
// root reads as specified.
TEST(HxXmlCompoundType, ChildrenAreReadInAnyOrderAndEmptyFormsWork) {
  Sample back;
  const ReadResult read =
      readInto(back, "<?xml version=\"1.0\"?>\n<!-- c -->" + kOpen +
                         "<!-- reversed --><t:inner><t:label> x <!--c--> y </t:label><?pi data?>"
                         "<t:gain>2</t:gain></t:inner><t:version/><t:count>3</t:count><t:name>"
                         "</t:name><t:time>0.5</t:time><t:version>ignored</t:version></t:sample>\n");
  EXPECT_TRUE(read.result && read.messages.empty());
  Sample expected;
  expected.inner.gain = 2.0;
  expected.inner.label = std::string(" x  y ");
  expected.count = 3u;
  expected.time = 0.5;
  EXPECT_TRUE(back == expected && back.version.value().empty());
  Sample empty;
  EXPECT_TRUE(readInto(empty, "<t:sample xmlns:t=\"" + kNs + "\"/>").result && empty.specified());
}

// Unknown children (also a subtree 200 deep, within libxml2's limit) and attributes and values
// that do not parse: false, one type-4 message naming the function, file and line; the bad value
// is left alone and the rest is still read.
TEST(HxXmlCompoundType, RefusedInputIsReportedAndTheRestIsRead) {
  const struct {
    std::string tail;     // of the root's start tag, and the content before the inner member
    std::string message;  // after "<class> Error: ", the class being the context's
    int line;
    std::string context;
  } rows[] = {
      {">\n<t:bogus><deep><deeper/></deep></t:bogus>", "element \"" + kNs + "bogus\" not registered.", 3,
       "HxXmlCompoundType::readValueFromToken"},
      {">" + repeat("<x>", 200) + repeat("</x>", 200), "element \"x\" not registered.", 2,
       "HxXmlCompoundType::readValueFromToken"},
      {" t:odd=\"1\">", "attribute \"" + kNs + "odd\" not registered.", 2, "HxXmlCompoundType::readAttributeFromToken"},
      {" id=\"x\">", "attribute value \"x\" is not an unsigned integer.", 2, "HxXmlBasicType<T>::readAttribute"},
      {" unit=\"inch\">", "\"inch\" is not a known name.", 2, "HxXmlEnumType<T>::fromText"},
      {">\n\n<t:time>fast</t:time>", "\"fast\" is not a real number.", 4, "HxXmlBasicType<T>::read"},
      {"><t:count>-1</t:count>", "\"-1\" is not an unsigned integer.", 2, "HxXmlBasicType<T>::read"},
      {"><t:enabled>yes</t:enabled>", "\"yes\" is not a boolean (true or false).", 2, "HxXmlBasicType<T>::read"},
      {"><t:mode>flying</t:mode>", "\"flying\" is not a known name.", 2, "HxXmlEnumType<T>::fromText"},
      {"><t:time><x/></t:time>", "element \"" + kNs + "time\" holds elements, expected a real number.", 2,
       "HxXmlBasicType<T>::read"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.message);
    Sample back = filledSample();
    const ReadResult read = readInto(back, "\n<t:sample xmlns:t=\"" + kNs + "\"" + row.tail +
                                               "<t:inner><t:label>rest</t:label></t:inner></t:sample>");
    ASSERT_EQ(read.messages.size(), 1u);
    EXPECT_TRUE(!read.result && read.messages[0].type == Hx::Print::Error);
    EXPECT_EQ(read.messages[0].text, row.context.substr(0, row.context.find_first_of("<:")) + " Error: " + row.message +
                                         "\n\tFile: sample.xml\n\tLine: " + std::to_string(row.line) + "\n");
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
    EXPECT_TRUE(components[0].object == &sample->name && components[5].object == &sample->inner);
    EXPECT_TRUE(components[6].readOnly && sample->isReadOnlyComponent(testToken("version")) && *sample == original);
  }
}

// Every member is entered under its own token at its depth (attributes first) and exited after
// its children; a false entry hook or the depth gate keeps the visitor out of the children.
TEST(HxXmlObjectVisitor, WalksCompoundsInRegistrationOrder) {
  WalkRecorder all, noInner, shallow;
  all.setCurrentToken(Sample::classToken());
  Sample().accept(&all);
  EXPECT_EQ(all.entered,
            "0:sample 1:id 1:scale 1:unit 1:name 1:time 1:count 1:enabled 1:mode 1:inner 2:gain "
            "2:label 1:version 1:foreign ");
  EXPECT_TRUE(all.exits == 14 && all.depth() == 0);
  noInner.descend = [](const HxXmlObject* object) { return object->token() != Inner::classToken(); };
  Sample().accept(&noInner);
  EXPECT_EQ(noInner.entered.find("gain"), std::string::npos);
  shallow.setMaxDepth(0);
  Sample().accept(&shallow);
  EXPECT_EQ(shallow.entered, "0: ");
}

// The writer's output (special doubles, an enum value without a name, a nested compound, a
// member of a foreign namespace) validates; a bad number, enum name, child or attribute does not.
TEST(HxXmlSchema, WriterOutputValidatesAgainstTheSchema) {
  if (!xmllintAvailable()) GTEST_SKIP() << "xmllint is not installed";
  const HxScopedTempDir dir("schema");
  const std::string schemaPath = dir.file("sample.xsd");
  Sample sample = filledSample();
  sample.time = -1.0 / 0.0;
  sample.inner.gain = 0.0 / 0.0;
  sample.mode = 5u;  // no name: written as decimal
  ASSERT_TRUE(sample.createSchema(schemaPath, sample.token()));
  const std::string instance = writeToString(sample);
  const std::string validate = "--schema '" + schemaPath + "'";
  EXPECT_TRUE(xmllintAccepts(instance, validate)) << instance;

  const std::pair<std::string, std::string> breaks[] = {{">4294967295<", ">fast<"},
                                                        {"millimetre", "inch"},
                                                        {"<ns1:count>", "<ns1:bogus/><ns1:count>"},
                                                        {" id=\"42\"", " nope=\"42\""}};
  for (const auto& [from, to] : breaks) {
    const std::size_t at = instance.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    EXPECT_FALSE(xmllintAccepts(std::string(instance).replace(at, from.size(), to), validate)) << to;
  }
}

}  // namespace
