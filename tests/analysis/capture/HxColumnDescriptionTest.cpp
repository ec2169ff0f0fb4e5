// Column descriptions: one per data column, labelled as the label list labels it, and whether the
// simulation computes each.

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/capture/HxColumnDescription.h"
#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "tests/analysis/types/HxTypesTestSupport.h"
#include "tests/framework/HxFrameworkTestTypes.h"

namespace {

using namespace HxSimAnalysis;
using HxTypesTest::flags;
using Labels = std::vector<std::string>;

template <class Field>
auto fieldOf(const std::vector<HxColumnDescription>& columns, Field field) {
  std::vector<std::decay_t<decltype(columns[0].*field)>> values;
  for (const HxColumnDescription& column : columns) values.push_back(column.*field);
  return values;
}

// The default capture as read, then with a column switched off inside a quantity, a one-column
// quantity switched off and the very last column switched off: the descriptions are the label
// list less the labels of switched-off columns (the list keeps the one-column quantity's label
// and ends in empty ones), as many as the record's values.
TEST(HxColumnDescription, LabelsAndCountFollowTheLabelListAndTheRecord) {
  HxSystemDataCapture capture;
  ASSERT_TRUE(HxFrameworkTest::readFromString(
      capture, HxFrameworkTest::slurp(std::string(HX_SOURCE_DIR) + "/examples/config/default_capture.xml")));
  Labels all, listed;
  capture.getStringElements(all);
  EXPECT_EQ(fieldOf(hxDescribeColumns(capture), &HxColumnDescription::label), all);

  const std::string oneColumn = "Manip[0]:left_link2:Joint Positions";
  std::vector<bool> last(20);
  last.back() = true;
  ASSERT_TRUE(
      capture.setDisableFlags(0, HxBasePositionDataCaptureTypeToken, flags({false, false, false, false, true})) &&
      capture.setDisableFlags(0, "left_link2", HxJointPositionDataCaptureTypeToken, flags({true})) &&
      capture.setDisableFlags(1, 1u, HxReachTargetDataCaptureTypeToken, flags(last)));
  capture.getStringElements(listed);
  listed.erase(std::find(listed.begin(), listed.end(), oneColumn));
  listed.resize(listed.size() - 2);  // the empty labels of the two multi-column switch-offs
  const Labels described = fieldOf(hxDescribeColumns(capture), &HxColumnDescription::label);
  HxSystemDataStorage record;
  capture.allocateStorage(record);
  EXPECT_TRUE(described == listed && described.size() == record.elementSize());
}

// Not computed: a quantity that needs the dynamics without them, one that needs the power data
// without it, anything of a manipulator, link or end effector the simulation does not have (motor
// power: with the engine's tests). Without a simulation everything counts.
TEST(HxColumnDescription, ComputedByTheSimulation) {
  HxScriptedSimulation simulation(1, Labels{"a"}, 1);
  HxSystemDataCapture capture;
  capture.addManipulatorDataCaptureType(0, HxManipulatorPowerDataCaptureTypeToken);
  capture.addLinkDataCaptureType(0, "a", HxJointPositionDataCaptureTypeToken);
  capture.addLinkDataCaptureType(0, "a", HxJointTorqueDataCaptureTypeToken);
  capture.addLinkDataCaptureType(0, "ghost", HxJointPositionDataCaptureTypeToken);
  capture.addEndEffectorDataCaptureType(0, HxEndEffectorVelocityDataCaptureTypeToken, 2u);  // 1 is not there
  capture.addManipulatorDataCaptureType(3, HxCenterOfMassDataCaptureTypeToken);
  const auto one = flags({false, true, true, true, true, true});  // one column of each is enough
  capture.setDisableFlags(0, 0u, HxEndEffectorVelocityDataCaptureTypeToken, one);
  capture.setDisableFlags(0, 1u, HxEndEffectorVelocityDataCaptureTypeToken, one);
  capture.setDisableFlags(3, HxCenterOfMassDataCaptureTypeToken, one);

  // Columns: time, index, manipulator power, a: position, torque, ghost: position, end effectors
  // 0 and 1, manipulator 3. Rows: dynamics and power data; dynamics only; neither.
  const std::vector<bool> rows[] = {
      {1, 1, 1, 1, 1, 0, 1, 0, 0}, {1, 1, 0, 1, 1, 0, 1, 0, 0}, {1, 1, 0, 1, 0, 0, 1, 0, 0}};
  for (int row = 0; row < 3; ++row) {
    simulation.setDynamicsEnabled(row < 2);
    simulation.setPowerDataAvailable(row == 0);
    EXPECT_EQ(fieldOf(hxDescribeColumns(capture, &simulation), &HxColumnDescription::computed), rows[row]) << row;
  }
  EXPECT_EQ(fieldOf(hxDescribeColumns(capture), &HxColumnDescription::computed), std::vector<bool>(9, true));
}

}  // namespace
