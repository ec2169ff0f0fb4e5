// What the engine tells a recording's column descriptions: joint kinds (so units), names, and
// which columns a mode computes, checked against what a capture of the engine holds.

#include <algorithm>
#include <string>
#include <vector>

#include "analysis/capture/HxColumnDescription.h"
#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxXmlReader.h"
#include "tests/simulation/mujoco/HxMujocoTestFixture.h"

namespace {

using namespace hxmujocotest;
using namespace HxSimAnalysis;

// A turning link and a sliding one; only the hinge's actuator is a DC motor.
const char* const kHingeAndSlide = R"(<mujoco model="hs"><size nuser_actuator="1"/>
  <default><geom type="capsule" size="0.03" contype="0" conaffinity="0"/></default>
  <worldbody><body name="base"><body name="turn"><joint name="turn" type="hinge" axis="0 0 1"/>
    <geom fromto="0 0 0 0.3 0 0"/><body name="push" pos="0.3 0 0"><joint name="push" type="slide" axis="1 0 0"/>
      <geom fromto="0 0 0 0.2 0 0"/></body></body></body></worldbody>
  <actuator><motor joint="turn" gear="10" user="0.9"/><motor joint="push" gear="10"/></actuator></mujoco>)";

// A hinge is revolute and a slide prismatic, which gives their joint quantities' units; the
// motor power of the joint without a DC motor is not computed.
TEST_F(MujocoTest, HingeAndSlideUnits) {
  ASSERT_TRUE(sim_.loadString(kHingeAndSlide)) << sim_.lastError();
  EXPECT_TRUE(sim_.jointKind(0, 0) == HxJointKind::Revolute && sim_.jointKind(0, 1) == HxJointKind::Prismatic &&
              sim_.jointKind(0, 2) == HxJointKind::Unknown && sim_.jointKind(1, 0) == HxJointKind::Unknown);
  HxSystemDataCapture capture;
  for (const char* link : {"turn", "push"}) {
    for (const HxToken& token :
         {HxJointPositionDataCaptureTypeToken, HxJointTorqueDataCaptureTypeToken, HxMotorPowerDataCaptureTypeToken}) {
      capture.addLinkDataCaptureType(0, link, token);
    }
  }
  std::string described;
  for (const HxColumnDescription& column : hxDescribeColumns(capture, &sim_)) {
    described += column.quantity.substr(0, 5) + " " + column.unit + (column.computed ? "" : " (not computed)") + ", ";
  }
  EXPECT_EQ(described, "time s, pathP 1, joint rad, joint N m, motor W, joint m, joint N, motor W (not computed), ");
}

// On the default scene with the default capture, the kinematic mode leaves out every quantity
// that needs the dynamics (230 of the 432 columns); the dynamic mode computes all of them. After
// some steps every column counted as not computed holds zero. Names are the engine's.
TEST_P(MujocoModeTest, DefaultCaptureColumns) {
  ASSERT_TRUE(sim_.loadFile(kDefaultScene, GetParam()));
  HxSystemDataCapture capture;
  HxXmlReader reader;
  ASSERT_TRUE(reader.openFile(std::string(HX_SOURCE_DIR) + "/examples/config/default_capture.xml") &&
              reader.readObject(capture));
  const std::vector<HxColumnDescription> columns = hxDescribeColumns(capture, &sim_);
  ASSERT_EQ(columns.size(), 432u);
  const auto notComputed = std::count_if(columns.begin(), columns.end(), [](auto& c) { return !c.computed; });
  EXPECT_EQ(notComputed, GetParam() == Mode::Kinematic ? 230 : 0);

  HxSystemDataStorage record;
  capture.allocateStorage(record);
  for (int step = 0; step < 50; ++step) ASSERT_TRUE(sim_.step());
  capture.captureData(sim_);
  capture.storeData(record);
  std::vector<double> values;
  record.getRealElements(values, false);
  for (std::size_t c = 2; c < columns.size(); ++c) {
    const HxColumnDescription& column = columns[c];
    EXPECT_TRUE(column.computed || values[c] == 0.0) << column.label;
    const std::string side = column.manipulatorIndex == 0 ? "left_" : "right_";
    const std::string endEffector = column.level != 2 ? "" : side + (column.endEffectorIndex == 0 ? "tool" : "probe");
    EXPECT_TRUE(column.manipulatorName == side + "base" && column.endEffectorName == endEffector) << column.label;
  }
}
// (Instantiated for both modes with the other tests of MujocoModeTest.)

}  // namespace
