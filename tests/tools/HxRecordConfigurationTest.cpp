// hxrecord's configuration documents: every fault is an error in the user's words at its file
// and line, messages stay bounded, and hostile documents end quickly.

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxXmlReader.h"
#include "tests/support/HxScopedTempDir.h"
#include "tests/tools/HxToolsTestSupport.h"
#include "tools/lib/HxRecordConfiguration.h"

namespace {

using namespace HxToolsTest;

// The errors of reading `text` (or else `file`) as a writer list (when it starts as one) or a
// capture configuration, which must fail.
std::vector<std::string> errorsOf(const std::string& text, const std::string& file = "") {
  HxSystemDataCapture capture;
  HxOutputWriterVector writers;
  std::vector<std::string> errors, warnings;
  const std::string name = file.empty() ? "bad.xml" : file;
  const std::string* memory = file.empty() ? &text : nullptr;
  const bool read =
      text.rfind("<sm:outputWriterVector", 0) == 0
          ? hxReadConfiguration(name, memory, HxSimAnalysis::HxOutputWriterVectorToken, writers, errors, warnings)
          : hxReadConfiguration(name, memory, HxSimAnalysis::HxGeneralCaptureToken, capture, errors, warnings);
  EXPECT_FALSE(read);
  return errors;
}
double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Each fault (the library reads most of them silently, with a warning or in its own words) is
// one error: file, line, the user's words, never a class or function name.
TEST(HxRecordConfigurationTest, EveryFaultIsOneErrorAtItsLine) {
  const auto reachTarget = [](const std::string& body) {
    return captureOf(entryOf("endEffector", "0",
                             typesOf("<sm:reachTargetDataCaptureType>" + body + "</sm:reachTargetDataCaptureType>")));
  };
  const struct {
    std::string text;
    std::string error;  // the message's beginning
  } rows[] = {
      {captureOf(entryOf("link", "l", typesOf("<sm:jointTorqueDataCaptureTyp/>"))),
       "bad.xml:6: unknown quantity 'jointTorqueDataCaptureTyp'; did you mean 'jointTorqueDataCaptureType'? Known "
       "quantities: controlOutputJointVelocityDataCaptureType, controlTorqueDataCaptureType, "},
      {captureOf(typesOf("<sm:jointPositionDataCaptureType/>")),
       "bad.xml:5: quantity 'jointPositionDataCaptureType' is not captured per manipulator; quantities per "
       "manipulator: baseAccelerationDataCaptureType, "},
      {captureOf(entryOf("link", "l", typesOf("<jointTorqueDataCaptureType/>"))),
       "bad.xml:6: unknown quantity 'jointTorqueDataCaptureType': the name needs the namespace"},
      {writersOf("1", "<sm:csvOutputWriter/>"), "bad.xml:2: unknown writer 'csvOutputWriter'; did you mean "},
      {captureOf("<sm:bogus/>"),
       "bad.xml:5: unknown element 'bogus' in 'manipulatorDataCapture'. Known elements: "
       "manipulatorIndex, dataCaptureTypeVector, linkDataCaptureVector"},
      {reachTarget("<sm:translationTolerence>1</sm:translationTolerence>"),
       "bad.xml:6: unknown element 'translationTolerence' in 'reachTargetDataCaptureType'; did you mean "
       "'translationTolerance'?"},
      {captureOf(typesOf("<sm:centerOfMassDataCaptureType/>", "1\" cont=\"1")),
       "bad.xml:5: unknown attribute 'cont' of 'dataCaptureTypeVector'; did you mean 'count'?"},
      {captureOf(typesOf("<sm:centerOfMassDataCaptureType/><sm:basePositionDataCaptureType/>", "3")),
       "bad.xml:5: 'count' says 3 but the element holds 2\n"},
      {writersOf("3", "<sm:textOutputWriter/>"), "bad.xml:1: 'count' says 3 but the element holds 1\n"},
      {captureOf(typesOf(
           "<sm:centerOfMassDataCaptureType><sm:disableFlags count=\"3\"><group>true false</group></sm:disableFlags>"
           "</sm:centerOfMassDataCaptureType>")),
       "bad.xml:5: 'count' says 3 but the element holds 2\n"},
      {captureOf("<sm:linkDataCaptureVector><element><sm:linkIdentification>l</sm:linkIdentification></element>"
                 "</sm:linkDataCaptureVector>"),
       "bad.xml:5: 'count' is missing but the element holds 1\n"},
      {captureOf("<sm:manipulatorIndex>1</sm:manipulatorIndex>"),
       "bad.xml:5: 'manipulatorIndex' is given twice in 'manipulatorDataCapture' (first on line 4)\n"},
      {captureOf(typesOf("<sm:centerOfMassDataCaptureType/>\n<sm:centerOfMassDataCaptureType/>", "2")),
       "bad.xml:6: quantity 'centerOfMassDataCaptureType' is listed twice in one list (first on line 5)\n"},
      {reachTarget("<sm:translationTolerance>nan</sm:translationTolerance>"),
       "bad.xml:6: 'translationTolerance' is 'nan': expected a finite number >= 0\n"},
      {reachTarget("<sm:translationTolerance>inf</sm:translationTolerance>"),
       "bad.xml:6: 'translationTolerance' is 'inf': expected a finite number >= 0\n"},
      {reachTarget("<sm:orientationTolerance> -0.5 </sm:orientationTolerance>"),
       "bad.xml:6: 'orientationTolerance' is '-0.5': expected a finite number >= 0\n"},
      {captureOf(entryOf("endEffector", "left", "")),
       "bad.xml:5: 'endEffectorIndex' is 'left': expected a whole number from 0 to 4294967295\n"},
      {captureOf("stray"), "bad.xml:5: unexpected text 'stray' in 'manipulatorDataCapture'\n"},
      {captureOf(typesOf("\n<addLibraries count=\"1\"><group>x</group></addLibraries>"
                         "<sm:centerOfMassDataCaptureType/>")),
       "bad.xml:6: library \"x\" is not available.\n"},
      {"\n<!-- nothing -->\n", "bad.xml:3: the document holds no element\n"},
      {"<a>&#0;</a>", "bad.xml:1: invalid xmlChar value 0\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    const std::vector<std::string> errors = errorsOf(row.text);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ((errors[0] + "\n").rfind(row.error, 0), 0u) << errors[0];
  }
}

// A million unknown elements: the first 20 messages, then one line with the rest's number,
// quickly; the same limit holds for each kind of message.
TEST(HxRecordConfigurationTest, MessagesOfOneKindAreCountedAfterTwenty) {
  std::string body;
  for (int i = 0; i < 1000000; ++i) body += "<sm:bogus/>\n";
  const auto start = std::chrono::steady_clock::now();
  const std::vector<std::string> errors = errorsOf(captureOf(body));
  EXPECT_LT(secondsSince(start), 30.0);
  ASSERT_EQ(errors.size(), 21u);
  EXPECT_EQ(errors[19].rfind("bad.xml:24: unknown element 'bogus'", 0), 0u);
  EXPECT_EQ(errors[20], "bad.xml:25: ... and 999980 more messages like this");
}

// An element of 40,000 attributes is refused before it is parsed, in memory and in a file; up to
// 256 attributes read, also when comments, CDATA, processing instructions and quoted values hold
// more '=' than that.
TEST(HxRecordConfigurationTest, AttributeBombEndsQuickly) {
  auto attributes = [](int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += " a" + std::to_string(i) + "=\"=\"";
    return text;
  };
  const std::string bomb =
      "<?xml version=\"1.0\"?>\n<!-- a=\"1\" -->\n<sm:generalCapture " + kSm + attributes(40000) + "/>";
  const HxScopedTempDir directory("configuration");
  const std::string file = directory.write("bomb.xml", bomb);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(errorsOf(bomb), std::vector<std::string>{"bad.xml:3: an element has more than 256 attributes"});
  EXPECT_EQ(errorsOf(bomb, file), std::vector<std::string>{file + ":3: an element has more than 256 attributes"});
  EXPECT_LT(secondsSince(start), 5.0);

  const std::string equals(300, '=');
  HxXmlReader reader;
  ASSERT_TRUE(reader.openMemory("<!--" + equals + "--><?p " + equals + "?><r" + attributes(255) + " b='" + equals +
                                "'><![CDATA[<r" + equals + ">]]></r>"));
  EXPECT_EQ(reader.next(), HxXmlReader::StartElement);
  EXPECT_EQ(reader.attributeCount(), 256);
}

}  // namespace
