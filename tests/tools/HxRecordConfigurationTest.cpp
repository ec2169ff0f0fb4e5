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

const std::string kSm = "xmlns:sm=\"http://www.hxtoolkit.org/namespace/sm#\"";

// A capture of manipulator 0 whose element holds `body` from line 5 on.
std::string captureOf(const std::string& body) {
  return "<?xml version=\"1.0\"?>\n<sm:generalCapture " + kSm +
         ">\n<sm:manipulatorDataCaptureVector count=\"1\"><element>\n<sm:manipulatorIndex>0</sm:manipulatorIndex>\n" +
         body + "\n</element></sm:manipulatorDataCaptureVector>\n</sm:generalCapture>\n";
}
// A list of `count` quantities on line 5, or of a link's quantities on line 6 (`level` "link").
std::string typesOf(const std::string& types, const std::string& count = "1", const std::string& level = "") {
  const std::string list = "<sm:dataCaptureTypeVector count=\"" + count + "\">" + types + "</sm:dataCaptureTypeVector>";
  if (level.empty()) return list;
  return "<sm:linkDataCaptureVector count=\"1\"><element><sm:linkIdentification>l</sm:linkIdentification>\n" + list +
         "</element></sm:linkDataCaptureVector>";
}
std::string reachTargetWith(const std::string& body) {
  return "<sm:endEffectorDataCaptureVector count=\"1\"><element><sm:endEffectorIndex>0</sm:endEffectorIndex>\n" +
         typesOf("<sm:reachTargetDataCaptureType>" + body + "</sm:reachTargetDataCaptureType>") +
         "</element></sm:endEffectorDataCaptureVector>";
}
std::string writersOf(const std::string& count, const std::string& writers) {
  return "<sm:outputWriterVector " + kSm + " count=\"" + count + "\">\n" + writers + "</sm:outputWriterVector>\n";
}

struct Outcome {
  bool read;
  std::vector<std::string> errors;
};
Outcome readCapture(const std::string& text, const std::string& name = "bad.xml") {
  HxSystemDataCapture capture;
  Outcome out{false, {}};
  std::vector<std::string> warnings;
  out.read = hxReadConfiguration(name, &text, HxSimAnalysis::HxGeneralCaptureToken, capture, out.errors, warnings);
  return out;
}
Outcome readWriters(const std::string& text) {
  HxOutputWriterVector writers;
  Outcome out{false, {}};
  std::vector<std::string> warnings;
  out.read =
      hxReadConfiguration("bad.xml", &text, HxSimAnalysis::HxOutputWriterVectorToken, writers, out.errors, warnings);
  return out;
}
double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Each fault (the library reads most of them silently, with a warning or in its own words) is
// one error: file, line, the user's words, never a class or function name.
TEST(HxRecordConfigurationTest, EveryFaultIsOneErrorAtItsLine) {
  const struct {
    std::string text;
    std::string error;  // the message's beginning
  } rows[] = {
      {captureOf(typesOf("<sm:jointTorqueDataCaptureTyp/>", "1", "link")),
       "bad.xml:6: unknown quantity 'jointTorqueDataCaptureTyp'; did you mean 'jointTorqueDataCaptureType'? Known "
       "quantities: controlOutputJointVelocityDataCaptureType, controlTorqueDataCaptureType, "},
      {captureOf(typesOf("<sm:jointPositionDataCaptureType/>")),
       "bad.xml:5: quantity 'jointPositionDataCaptureType' is not captured per manipulator; quantities per "
       "manipulator: baseAccelerationDataCaptureType, "},
      {captureOf(typesOf("<jointTorqueDataCaptureType/>", "1", "link")),
       "bad.xml:6: unknown quantity 'jointTorqueDataCaptureType': the name needs the namespace"},
      {captureOf(typesOf("<sm:controlInputDataCaptureType/>", "1", "link")),
       "bad.xml:6: quantity 'controlInputDataCaptureType' cannot be read from a configuration file."},
      {writersOf("1", "<sm:csvOutputWriter/>"), "bad.xml:2: unknown writer 'csvOutputWriter'; did you mean "},
      {captureOf("<sm:bogus/>"),
       "bad.xml:5: unknown element 'bogus' in 'manipulatorDataCapture'. Known elements: "
       "manipulatorIndex, dataCaptureTypeVector, linkDataCaptureVector"},
      {captureOf(reachTargetWith("<sm:translationTolerence>1</sm:translationTolerence>")),
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
      {captureOf(reachTargetWith("<sm:translationTolerance>nan</sm:translationTolerance>")),
       "bad.xml:6: 'translationTolerance' is 'nan': expected a finite number >= 0\n"},
      {captureOf(reachTargetWith("<sm:orientationTolerance>-inf</sm:orientationTolerance>")),
       "bad.xml:6: 'orientationTolerance' is '-inf': expected a finite number >= 0\n"},
      {captureOf(reachTargetWith("<sm:translationTolerance> -0.5 </sm:translationTolerance>")),
       "bad.xml:6: 'translationTolerance' is '-0.5': expected a finite number >= 0\n"},
      {captureOf(
           "<sm:endEffectorDataCaptureVector count=\"1\"><element>\n<sm:endEffectorIndex>left</sm:endEffectorIndex>"
           "</element></sm:endEffectorDataCaptureVector>"),
       "bad.xml:6: 'endEffectorIndex' is 'left': expected a whole number from 0 to 4294967295\n"},
      {captureOf("stray"), "bad.xml:5: unexpected text 'stray' in 'manipulatorDataCapture'\n"},
      {captureOf("<sm:dataCaptureTypeVector count=\"1\">\n<addLibraries count=\"1\"><group>x</group></addLibraries>"
                 "<sm:centerOfMassDataCaptureType/></sm:dataCaptureTypeVector>"),
       "bad.xml:6: library \"x\" is not available.\n"},
      {"<sm:outputWriterVector " + kSm + "/>", "bad.xml:1: the root element is 'outputWriterVector', expected "},
      {"", "bad.xml:1: the document is empty\n"},
      {"\n<!-- nothing -->\n", "bad.xml:3: the document holds no element\n"},
      {"<a>&#0;</a>", "bad.xml:1: invalid xmlChar value 0\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    const bool writers = row.text.find("outputWriterVector " + kSm + " count") != std::string::npos;
    const Outcome outcome = writers ? readWriters(row.text) : readCapture(row.text);
    EXPECT_FALSE(outcome.read);
    ASSERT_EQ(outcome.errors.size(), 1u);
    EXPECT_EQ((outcome.errors[0] + "\n").rfind(row.error, 0), 0u) << outcome.errors[0];
  }
}

// A million unknown elements: the first 20 messages, then one line with the rest's number,
// quickly; the same limit holds for each kind of message.
TEST(HxRecordConfigurationTest, MessagesOfOneKindAreCountedAfterTwenty) {
  std::string body;
  for (int i = 0; i < 1000000; ++i) body += "<sm:bogus/>\n";
  const auto start = std::chrono::steady_clock::now();
  const Outcome outcome = readCapture(captureOf(body));
  EXPECT_LT(secondsSince(start), 30.0);
  ASSERT_EQ(outcome.errors.size(), 21u);
  EXPECT_EQ(outcome.errors[19].rfind("bad.xml:24: unknown element 'bogus'", 0), 0u);
  EXPECT_EQ(outcome.errors[20], "bad.xml:25: ... and 999980 more messages like this");
}

// An element of 40,000 attributes is refused before it is parsed, in memory and in a file; up to
// 256 attributes read, also when comments, CDATA, processing instructions and quoted values
// hold more '=' than that.
TEST(HxRecordConfigurationTest, AttributeBombEndsQuickly) {
  auto attributes = [](int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += " a" + std::to_string(i) + "=\"=\"";
    return text;
  };
  const std::string bomb =
      "<?xml version=\"1.0\"?>\n<!-- a=\"1\" -->\n<sm:generalCapture " + kSm + attributes(40000) + "/>\n";
  const HxScopedTempDir directory("configuration");
  const std::string file = directory.write("bomb.xml", bomb);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(readCapture(bomb).errors, std::vector<std::string>{"bad.xml:3: an element has more than 256 attributes"});
  HxSystemDataCapture capture;
  std::vector<std::string> errors, warnings;
  EXPECT_FALSE(hxReadConfiguration(file, nullptr, HxSimAnalysis::HxGeneralCaptureToken, capture, errors, warnings));
  EXPECT_EQ(errors, std::vector<std::string>{file + ":3: an element has more than 256 attributes"});
  EXPECT_LT(secondsSince(start), 5.0);

  const std::string equals(300, '=');
  HxXmlReader reader;
  ASSERT_TRUE(reader.openMemory("<!--" + equals + "--><?p " + equals + "?><r" + attributes(255) + " b='" + equals +
                                "'><![CDATA[<r" + equals + ">]]></r>"));
  EXPECT_EQ(reader.next(), HxXmlReader::StartElement);
  EXPECT_EQ(reader.attributeCount(), 256);
}

// hxrecord itself: exit status 4, every line of standard error its own (libxml2 writes nothing
// there, also about a broken encoding).
TEST(HxRecordConfigurationTest, ProgramExitsWithConfigurationError) {
  const HxScopedTempDir directory("configuration");
  directory.write("capture.xml", captureOf(typesOf("<sm:jointTorqueDataCaptureTyp/>", "1", "link")));
  directory.write("encoding.xml", "<?xml version=\"1.0\" encoding=\"EUC-JP\"?>\n<a>\xff\xff\xff</a>\n");
  directory.write("empty.xml", "");
  const struct {
    std::vector<std::string> arguments;
    std::string error;
  } rows[] = {
      {{"-c", "capture.xml"}, "capture configuration: capture.xml:6: unknown quantity 'jointTorqueDataCaptureTyp'; "},
      {{"-c", "encoding.xml"}, "capture configuration: encoding.xml:1: input conversion failed due to input error"},
      {{"-w", "empty.xml"}, "writer list: empty.xml:1: the document is empty\n"},
  };
  for (const auto& row : rows) {
    const HxToolsTest::RunResult run = HxToolsTest::run(HX_RECORD_BINARY, row.arguments, directory.path().string());
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_EQ(run.err.rfind("hxrecord: error: invalid " + row.error, 0), 0u) << run.err;
    EXPECT_EQ(run.err.find("\nhxrecord: "), std::string::npos) << run.err;
  }
}

}  // namespace
