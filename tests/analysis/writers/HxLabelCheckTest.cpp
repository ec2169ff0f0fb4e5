// Finding the labels and identifiers of a capture configuration that would corrupt a writer's
// file: what breaks each format, where the text lives, and that only written texts count.

#include "analysis/writers/HxLabelCheck.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "tests/analysis/writers/HxWriterTestSupport.h"
#include "tests/framework/HxFrameworkTestTypes.h"

namespace {

using HxWriterTest::allWriters;

// A capture of manipulator 3 with the configuration label `system`, base positions whose last
// column is labelled `label` (the one before disabled and labelled "x,y"), and joint positions of
// the link `link`.
HxSystemDataCapture captureWith(const std::string& system, const std::string& label, const std::string& link) {
  std::string quoted = "\"";
  for (const char c : label) quoted += (c == '"' || c == '\\' ? "\\" : "") + std::string(1, c);
  const std::string text =
      "<sm:generalCapture xmlns:sm=\"http://www.hxtoolkit.org/namespace/sm#\">"
      "<sm:manipulatorDataCaptureVector count=\"1\"><element><sm:manipulatorIndex>3</sm:manipulatorIndex>"
      "<sm:dataCaptureTypeVector count=\"1\"><sm:basePositionDataCaptureType>"
      "<sm:disableFlags count=\"7\"><group>false false false false false true false</group></sm:disableFlags>"
      "<sm:dataLabels count=\"7\"><group>a b c d e \"x,y\" " +
      quoted +
      "\"</group></sm:dataLabels></sm:basePositionDataCaptureType></sm:dataCaptureTypeVector>"
      "<sm:linkDataCaptureVector count=\"1\"><element><sm:linkIdentification>" +
      link +
      "</sm:linkIdentification><sm:dataCaptureTypeVector count=\"1\"><sm:jointPositionDataCaptureType/>"
      "</sm:dataCaptureTypeVector></element></sm:linkDataCaptureVector>"
      "</element></sm:manipulatorDataCaptureVector></sm:generalCapture>";
  HxSystemDataCapture capture;
  EXPECT_TRUE(HxFrameworkTest::readFromString(capture, text));
  capture.setLabel(system);
  return capture;
}

// "extension: reason" of every finding, in order.
std::vector<std::string> findings(const HxSystemDataCapture& capture) {
  std::vector<std::string> list;
  for (const HxUnsafeLabel& label : hxFindUnsafeLabels(capture, allWriters())) {
    list.push_back(label.extension + ": " + label.reason);
  }
  return list;
}

TEST(HxLabelCheckTest, EachFormatRefusesWhatBreaksIt) {
  using List = std::vector<std::string>;
  const std::string bad = "q'];fid=fopen('X','w');x=['";
  // Texts every format carries; a disabled column's label is not written, so not checked.
  EXPECT_EQ(findings(captureWith("a label: Ünïcode - fine", "Quaternion_3 (rad/s)", "left_link1")), List{});
  EXPECT_EQ(findings(captureWith("s", bad, "l")), (List{".csv: a single quote", ".csv: a comma", ".mrd: a single quote",
                                                        ".mrd: a comma", ".m: a single quote", ".m: a comma"}));
  EXPECT_EQ(findings(captureWith("s", "say \"hi\"\\", "l")),
            (List{".csv: a double quote", ".mrd: a double quote", ".m: a double quote", ".nb: a double quote",
                  ".nb: a backslash"}));
  EXPECT_EQ(findings(captureWith("s", "a  -  b", "l")),
            (List{".csv: the label separator \"  -  \"", ".mrd: the label separator \"  -  \"",
                  ".m: the label separator \"  -  \""}));
  // Control characters: XML keeps tabs and line ends, nothing else does; bytes that are not UTF-8
  // break XML (the configuration's label reaches the XML file alone).
  EXPECT_EQ(findings(captureWith("s", "a\tb", "l")),
            (List{".csv: a control character (U+0009)", ".mrd: a control character (U+0009)",
                  ".m: a control character (U+0009)", ".nb: a control character (U+0009)"}));
  EXPECT_EQ(findings(captureWith("s\x01", "fine", "l")), List{".xml: a control character (U+0001)"});
  EXPECT_EQ(findings(captureWith("caf\xC3", "fine", "l")), List{".xml: bytes that are not UTF-8"});
  EXPECT_EQ(findings(captureWith("\xE0\x80\x80", "fine", "l")), List{".xml: bytes that are not UTF-8"});
}

TEST(HxLabelCheckTest, SaysWhereTheTextLives) {
  const std::vector<HxUnsafeLabel> found = hxFindUnsafeLabels(captureWith("sys\x02", "fine", "elbow,2"), allWriters());
  ASSERT_EQ(found.size(), 4u);
  // The configuration's label reaches the XML file alone.
  EXPECT_TRUE(found[0].source == HxUnsafeLabel::Source::SystemLabel && found[0].extension == ".xml");
  for (std::size_t i = 1; i < found.size(); ++i) {
    const HxUnsafeLabel& link = found[i];
    EXPECT_TRUE(link.source == HxUnsafeLabel::Source::LinkIdentifier && link.text == "elbow,2" &&
                link.manipulatorIndex == 3u)
        << i;
  }
  const HxUnsafeLabel column = hxFindUnsafeLabels(captureWith("s", "a,b", "l"), allWriters()).front();
  EXPECT_TRUE(column.quantity == "Base Positions" && column.column == 6u && column.format == "Comma-Delimited Text");
}

}  // namespace
