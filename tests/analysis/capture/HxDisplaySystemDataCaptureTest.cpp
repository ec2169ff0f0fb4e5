// The display description: plot types by name and number, defaults, and the XML form.

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "analysis/capture/HxDisplaySystemDataCapture.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxPrint.h"
#include "tests/analysis/capture/HxCaptureTestSupport.h"

namespace {

using namespace HxSimAnalysis;
using HxCaptureTest::readFromString;
using HxCaptureTest::writeToString;

TEST(HxDisplaySystemDataCapture, PlotTypesByNameAndNumber) {
  EXPECT_EQ(HxDisplaySystemDataCapture::numPlotTypes(), HxDisplaySystemDataCapture::plotTypeTokens().size());
  EXPECT_EQ(HxDisplaySystemDataCapture::plotTypeTokens(), (std::vector<std::string>{"scrollingCurve", "barChart"}));
  EXPECT_EQ(&HxDisplaySystemDataCapture::plotTypeTokens(), &HxDisplaySystemDataCapture::plotTypeTokens());

  HxDisplaySystemDataCapture display;
  EXPECT_EQ(display.plotType(), 0u);
  EXPECT_TRUE(display.setPlotType(std::string("barChart")));
  EXPECT_EQ(display.plotType(), 1u);
  EXPECT_FALSE(display.setPlotType(std::string("pieChart")));
  EXPECT_EQ(display.plotType(), 1u);
  EXPECT_TRUE(display.setPlotType(std::string("scrollingCurve")));
  EXPECT_EQ(display.plotType(), 0u);
  display.setPlotType(7u);  // no range check
  EXPECT_EQ(display.plotType(), 7u);
}

TEST(HxDisplaySystemDataCapture, DefaultWritesScrollingCurveAndTwoEmptyConfigurations) {
  const std::string text = writeToString(HxDisplaySystemDataCapture());
  EXPECT_NE(text.find("<sm:displaySystemDataCapture"), std::string::npos) << text;
  EXPECT_NE(text.find("<sm:plotType>scrollingCurve</sm:plotType>"), std::string::npos) << text;
  EXPECT_NE(text.find("<sm:leftSystemDataCapture>"), std::string::npos) << text;
  EXPECT_NE(text.find("<sm:rightSystemDataCapture>"), std::string::npos) << text;
  EXPECT_LT(text.find("sm:title"), text.find("sm:leftSystemDataCapture"));
  EXPECT_LT(text.find("sm:leftSystemDataCapture"), text.find("sm:rightSystemDataCapture"));
  EXPECT_LT(text.find("sm:rightSystemDataCapture"), text.find("sm:plotType"));
}

TEST(HxDisplaySystemDataCapture, XmlRoundTrip) {
  HxDisplaySystemDataCapture display;
  display.setTitle("Joint tracking");
  display.leftSystemDataCapture().addLinkDataCaptureType(0, "elbow", HxJointPositionDataCaptureTypeToken);
  HxSystemDataCapture right;
  right.addLinkDataCaptureType(0, "elbow", HxControlOutputJointVelocityDataCaptureTypeToken);
  display.setRightSystemDataCapture(right);
  display.setPlotType(std::string("barChart"));

  Hx::ScopedPrintCapture messages;
  const std::string text = writeToString(display);
  EXPECT_NE(text.find("<sm:plotType>barChart</sm:plotType>"), std::string::npos) << text;
  HxDisplaySystemDataCapture read;
  ASSERT_TRUE(readFromString(read, text));
  EXPECT_TRUE(messages.records().empty()) << messages.text();
  EXPECT_EQ(read, display);
  EXPECT_EQ(read.title(), "Joint tracking");
  EXPECT_EQ(read.plotType(), 1u);
  EXPECT_EQ(read.rightSystemDataCapture().elementSize(), 1u);  // the read recomputed it

  // A plot type given by number reads too.
  std::string numeric = text;
  numeric.replace(numeric.find("barChart"), 8, "1");
  HxDisplaySystemDataCapture fromNumber;
  ASSERT_TRUE(readFromString(fromNumber, numeric));
  EXPECT_EQ(fromNumber.plotType(), 1u);

  HxDisplaySystemDataCapture copy(display);
  EXPECT_EQ(copy, display);
  copy.setTitle("other");
  EXPECT_NE(copy, display);
  std::unique_ptr<HxXmlObject> clone(display.clone());
  EXPECT_TRUE(display.equality(clone.get()));
  EXPECT_FALSE(display.equality(&display.leftSystemDataCapture()));
}

}  // namespace
