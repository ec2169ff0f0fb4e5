// Real MuJoCo runs recorded through the library by hxrecord's session, checked for physical
// sense through the recorded CSV columns: placements and centre of mass are the engine's,
// velocities the derivatives of positions, motor power the drive formula, every path point is
// reached, and driving into a joint limit or the table raises the matching event flag.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <regex>
#include <string>
#include <vector>

#include "simulation/HxBasePowerConverter.h"
#include "tests/tools/test_hxrecord_support.h"
#include "tools/lib/HxRecord.h"

namespace {

using namespace HxRecordTest;
using Mode = HxMujocoSimulation::Mode;

const char* const kSides[] = {"left", "right"};

std::string prefix(HxU32 m) { return "Manip[" + std::to_string(m) + "]:"; }
std::string linkPrefix(HxU32 m, HxU32 j) { return prefix(m) + kSides[m] + "_link" + std::to_string(j + 1) + ":"; }
std::string endEffectorPrefix(HxU32 m, HxU32 e) { return prefix(m) + "EE[" + std::to_string(e) + "]:"; }

double angleBetween(const HxOrientation& a, const HxOrientation& b) {
  double angle = 0.0;
  HxVector axis;
  a.angleAxisBetween(b, angle, axis);
  return angle;
}

// A placement from 7 columns starting at `first` (translation, then quaternion w, x, y, z).
HxEndEffectorPlacement placementAt(const Csv& csv, std::size_t row, const std::string& first) {
  const std::size_t c = csv.column(first);
  const std::vector<double>& v = csv.rows[row];
  return HxEndEffectorPlacement(HxVector(v[c], v[c + 1], v[c + 2]),
                                HxOrientation(v[c + 3], v[c + 4], v[c + 5], v[c + 6]));
}

// Records the default scene (or `options.modelFile`) in `mode` into a CSV file only.
class Recording {
 public:
  Recording(const std::string& name, Mode mode, HxRecordOptions options = HxRecordOptions()) {
    const std::string directory = scratchDirectory(name);
    options.mode = mode;
    options.outputBase = directory + "run";
    options.writersFile = textWriterOnly(directory);
    options.quiet = true;
    session_ = std::make_unique<HxRecordSession>(options);
  }
  HxRecordStatus run(const HxRecordSession::SampleObserver& observer = {}) {
    const HxRecordStatus prepared = session_->prepare();
    if (prepared != HxRecordStatus::Success) {
      for (const auto& error : session_->errors()) ADD_FAILURE() << error;
      return prepared;
    }
    const HxRecordStatus status = session_->record(observer);
    for (const auto& error : session_->errors()) ADD_FAILURE() << error;
    if (status == HxRecordStatus::Success) readCsv(session_->options().outputBase + ".csv", csv_);
    return status;
  }
  HxRecordSession& session() { return *session_; }
  const Csv& csv() const { return csv_; }

 private:
  std::unique_ptr<HxRecordSession> session_;
  Csv csv_;
};

class HxRecordPhysicsTest : public ::testing::TestWithParam<Mode> {
 protected:
  static std::string modeName() { return GetParam() == Mode::Dynamic ? "dynamic" : "kinematic"; }
};

// End-effector placement columns are the engine's site poses, centre-of-mass columns its
// subtree centre of mass: at the moment of each sample (the simulation's own answers) and for
// the recorded joint positions (the engine asked again for the state in the file).
TEST_P(HxRecordPhysicsTest, PlacementAndCenterOfMassColumnsAreTheEngines) {
  HxRecordOptions options;
  options.duration = 2.0;
  options.sampleInterval = 0.05;
  Recording recording("placements_" + modeName(), GetParam(), options);
  // Per sample, per manipulator: the engine's site poses and subtree centre of mass.
  std::vector<std::vector<std::vector<HxEndEffectorPlacement>>> sites;
  std::vector<std::vector<HxVector>> centers;
  ASSERT_EQ(recording.run([&](HxU32, const HxMujocoSimulation& sim) {
    sites.emplace_back();
    centers.emplace_back();
    for (HxU32 m = 0; m < sim.numberOfManipulators(); ++m) {
      const HxIndividualManipulator& manipulator = sim.manipulators()[m];
      sites.back().emplace_back();
      for (HxU32 e = 0; e < manipulator.numberOfEndEffectors(); ++e) {
        sites.back().back().push_back(
            sim.endEffectorPlacements()[m].endEffectorPlacement(e, sim.systemPositionStates()[m], manipulator));
      }
      centers.back().push_back(manipulator.centerOfMass(sim.activeStates()[m]));
    }
  }),
            HxRecordStatus::Success);
  const Csv& csv = recording.csv();
  const HxMujocoSimulation& sim = recording.session().simulation();
  ASSERT_EQ(csv.rows.size(), 41u);
  ASSERT_EQ(sites.size(), csv.rows.size());

  double moved = 0.0;
  for (std::size_t row = 0; row < csv.rows.size(); ++row) {
    for (HxU32 m = 0; m < 2; ++m) {
      const HxIndividualManipulator& manipulator = sim.manipulators()[m];
      // The state in the file: base placement and joint positions of this sample.
      HxManipulatorActiveState state(6);
      const HxEndEffectorPlacement base = placementAt(csv, row, prefix(m) + "Base Positions:Translation X");
      state.mutablePositionState().setCoordSystemXform(base);
      for (HxU32 j = 0; j < 6; ++j) {
        state.mutablePositionState().mutableJointPositions()[j] = csv.at(row, linkPrefix(m, j) + "Joint Positions");
      }
      for (HxU32 e = 0; e < 2; ++e) {
        const HxEndEffectorPlacement recorded =
            placementAt(csv, row, endEffectorPrefix(m, e) + "End Effector Placements:Translation X");
        const HxEndEffectorPlacement& site = sites[row][m][e];
        EXPECT_LT(recorded.translation().distanceTo(site.translation()), 1e-12) << "sample " << row;
        EXPECT_LT(angleBetween(recorded.orientation(), site.orientation()), 1e-7) << "sample " << row;
        const HxEndEffectorPlacement again = manipulator.endEffectorPlacement(e, state);
        EXPECT_LT(recorded.translation().distanceTo(again.translation()), 1e-12) << "sample " << row;
        EXPECT_LT(angleBetween(recorded.orientation(), again.orientation()), 1e-7) << "sample " << row;
        moved = std::max(moved, recorded.translation().distanceTo(sites[0][m][e].translation()));
      }
      const HxVector recordedCenter(csv.at(row, prefix(m) + "Center of Mass:X"),
                                    csv.at(row, prefix(m) + "Center of Mass:Y"),
                                    csv.at(row, prefix(m) + "Center of Mass:Z"));
      EXPECT_LT(recordedCenter.distanceTo(centers[row][m]), 1e-12) << "sample " << row;
      EXPECT_LT(recordedCenter.distanceTo(manipulator.centerOfMass(state)), 1e-12) << "sample " << row;
    }
  }
  EXPECT_GT(moved, 0.05);  // the arms did move: the comparison is not of a still scene
}

// Recorded joint velocities are the derivatives of the recorded joint positions: with a sample
// at every step, the position difference over the step is the new velocity (semi-implicit
// Euler in dynamic mode, the integrated control output in kinematic mode).
TEST_P(HxRecordPhysicsTest, JointVelocitiesAgreeWithFiniteDifferences) {
  HxRecordOptions options;
  options.duration = 1.0;
  options.sampleInterval = 0.002;
  Recording recording("velocities_" + modeName(), GetParam(), options);
  ASSERT_EQ(recording.run(), HxRecordStatus::Success);
  const Csv& csv = recording.csv();
  ASSERT_EQ(csv.rows.size(), 501u);
  double fastest = 0.0;
  for (HxU32 m = 0; m < 2; ++m) {
    for (HxU32 j = 0; j < 6; ++j) {
      const std::size_t q = csv.column(linkPrefix(m, j) + "Joint Positions");
      const std::size_t v = csv.column(linkPrefix(m, j) + "Joint Velocities");
      for (std::size_t row = 2; row < csv.rows.size(); ++row) {
        const double dt = csv.rows[row][0] - csv.rows[row - 1][0];
        const double difference = (csv.rows[row][q] - csv.rows[row - 1][q]) / dt;
        EXPECT_NEAR(csv.rows[row][v], difference, 1e-9 + 1e-9 * std::fabs(difference))
            << linkPrefix(m, j) << " t = " << csv.rows[row][0];
        fastest = std::max(fastest, std::fabs(difference));
      }
    }
  }
  EXPECT_GT(fastest, 0.1);
}

// Motor power is scale factor x joint velocity x torque / divisor, with the gears and the
// efficiency of 0.85 that the model declares; manipulator power is the sum of torque x
// velocity. Without dynamics there is no power data: the columns stay 0.
TEST_P(HxRecordPhysicsTest, PowerColumnsFollowTheDriveFormula) {
  HxRecordOptions options;
  options.duration = 1.0;
  Recording recording("power_" + modeName(), GetParam(), options);
  ASSERT_EQ(recording.run(), HxRecordStatus::Success);
  const Csv& csv = recording.csv();
  const HxMujocoSimulation& sim = recording.session().simulation();
  const double gears[] = {100, 150, 100, 50, 50, 30};
  double largest = 0.0;
  for (HxU32 m = 0; m < 2; ++m) {
    for (HxU32 j = 0; j < 6; ++j) {
      const HxJointDrive& drive = sim.manipulators()[m].jointDrive(j);
      const auto* motor = dynamic_cast<const HxDcElectricMotor*>(drive.powerConverter());
      ASSERT_NE(motor, nullptr);
      EXPECT_EQ(drive.scaleFactor(), gears[j]);
      EXPECT_DOUBLE_EQ(motor->divisor(), gears[j] * 0.85);
    }
    for (std::size_t row = 0; row < csv.rows.size(); ++row) {
      double sum = 0.0;
      for (HxU32 j = 0; j < 6; ++j) {
        const double velocity = csv.at(row, linkPrefix(m, j) + "Joint Velocities");
        const double torque = csv.at(row, linkPrefix(m, j) + "Control Torques");
        const double power = csv.at(row, linkPrefix(m, j) + "Motor Power");
        if (GetParam() == Mode::Kinematic) {
          EXPECT_EQ(power, 0.0);
          EXPECT_EQ(torque, 0.0);
          continue;
        }
        const double expected = gears[j] * velocity * torque / (gears[j] * 0.85);
        EXPECT_NEAR(power, expected, 1e-12 * (1.0 + std::fabs(expected))) << linkPrefix(m, j) << " sample " << row;
        sum += torque * velocity;
        largest = std::max(largest, std::fabs(power));
      }
      const double manipulatorPower = csv.at(row, prefix(m) + "Manipulator Power");
      if (GetParam() == Mode::Kinematic) {
        EXPECT_EQ(manipulatorPower, 0.0);
      } else {
        EXPECT_NEAR(manipulatorPower, sum, 1e-12 * (1.0 + std::fabs(sum))) << "sample " << row;
      }
    }
  }
  if (GetParam() == Mode::Dynamic) {
    EXPECT_GT(largest, 1.0);  // the motors did work
  }
}

// In the default scene every path point of both arms is reached: "Target Reached" becomes 1
// while the desired placement is that path point, in order, and the path-point index runs
// through all points.
TEST_P(HxRecordPhysicsTest, DefaultSceneReachesEveryPathPoint) {
  Recording recording("reach_" + modeName(), GetParam());
  ASSERT_EQ(recording.run(), HxRecordStatus::Success);
  const Csv& csv = recording.csv();
  const HxMujocoSimulation& sim = recording.session().simulation();

  std::vector<double> indices;
  for (const auto& row : csv.rows) {
    if (indices.empty() || indices.back() != row[1]) indices.push_back(row[1]);
  }
  EXPECT_EQ(indices, (std::vector<double>{0, 1, 2, 3}));

  for (HxU32 m = 0; m < 2; ++m) {
    const std::vector<HxEndEffectorPlacement>& points = sim.pathPoints(m);
    ASSERT_EQ(points.size(), 4u);
    const std::string reach = endEffectorPrefix(m, 0) + "Reach Target:";
    std::size_t next = 0;  // the path point to be reached next
    for (std::size_t row = 0; row < csv.rows.size() && next < points.size(); ++row) {
      const HxVector desired(csv.at(row, reach + "Desired X"), csv.at(row, reach + "Desired Y"),
                             csv.at(row, reach + "Desired Z"));
      if (desired.distanceTo(points[next].translation()) > 1e-9) continue;
      if (csv.at(row, reach + "Target Reached") != 1.0) continue;
      EXPECT_LE(csv.at(row, reach + "Translation Error"), 1e-3);
      EXPECT_LE(csv.at(row, reach + "Orientation Error"), 1e-3);
      ++next;
    }
    EXPECT_EQ(next, points.size()) << kSides[m] << " arm reached only " << next << " path points";
    EXPECT_TRUE(sim.pathCompleted(m));
  }
}

INSTANTIATE_TEST_SUITE_P(BothModes, HxRecordPhysicsTest, ::testing::Values(Mode::Dynamic, Mode::Kinematic),
                         [](const ::testing::TestParamInfo<Mode>& mode) {
                           return mode.param == Mode::Dynamic ? "Dynamic" : "Kinematic";
                         });

// The default model with the left arm's path points replaced by `sites` (MJCF site elements).
std::string modelWithLeftPath(const std::string& sites) {
  const std::string model = readFile(defaultModelPath());
  const std::string replaced = std::regex_replace(model, std::regex("<site name=\"path:left_base:[^>]*/>"), "");
  const std::size_t end = replaced.find("</worldbody>");
  return replaced.substr(0, end) + sites + "\n  " + replaced.substr(end);
}

// Any sample of `csv` whose column `label` is 1.
bool raised(const Csv& csv, const std::string& label) {
  const std::size_t c = csv.column(label);
  return std::any_of(csv.rows.begin(), csv.rows.end(), [c](const std::vector<double>& row) { return row[c] == 1.0; });
}

// Driving the left arm's tool down into the table raises "Collision Occurred" for the left arm
// only, with an upward external force on one of its links.
TEST(HxRecordEventTest, DrivingIntoTheTableRaisesTheCollisionFlag) {
  const std::string directory = scratchDirectory("collision_model");
  const std::string model = directory + "into_table.xml";
  ASSERT_TRUE(
      writeFile(model, modelWithLeftPath(R"(<site name="path:left_base:0" pos="0.45 0.3 0.6" euler="0 180 0"/>)")));
  HxRecordOptions options;
  options.modelFile = model;
  options.duration = 4.0;
  Recording recording("collision", Mode::Dynamic, options);
  ASSERT_EQ(recording.run(), HxRecordStatus::Success);
  const Csv& csv = recording.csv();
  EXPECT_FALSE(csv.rows.front()[csv.column(endEffectorPrefix(0, 0) + "Reach Target:Collision Occurred")] == 1.0);
  EXPECT_TRUE(raised(csv, endEffectorPrefix(0, 0) + "Reach Target:Collision Occurred"));
  EXPECT_TRUE(raised(csv, endEffectorPrefix(0, 1) + "Reach Target:Collision Occurred"));
  EXPECT_FALSE(raised(csv, endEffectorPrefix(1, 0) + "Reach Target:Collision Occurred"));
  EXPECT_FALSE(raised(csv, endEffectorPrefix(0, 0) + "Reach Target:Target Reached"));  // the table is in the way
  // While touching, the table pushes a link of the left arm upwards.
  const std::size_t flag = csv.column(endEffectorPrefix(0, 0) + "Reach Target:Collision Occurred");
  bool pushed = false;
  for (const auto& row : csv.rows) {
    if (row[flag] != 1.0) continue;
    for (HxU32 j = 0; j < 6; ++j)
      pushed = pushed || row[csv.column(linkPrefix(0, j) + "External Forces:Force Z")] > 0.0;
  }
  EXPECT_TRUE(pushed);
  for (HxU32 j = 0; j < 6; ++j) {
    const std::size_t c = csv.column(linkPrefix(1, j) + "External Forces:Force Z");
    for (const auto& row : csv.rows) ASSERT_EQ(row[c], 0.0) << "the right arm touches nothing";
  }
}

// A path point so close to the shoulder that the elbow would have to fold beyond its 150 degree
// range drives that joint into its limit and raises "Hit Joint Limit", in both modes.
TEST(HxRecordEventTest, DrivingIntoAJointLimitRaisesTheFlag) {
  const std::string directory = scratchDirectory("limit_model");
  const std::string model = directory + "into_limit.xml";
  ASSERT_TRUE(
      writeFile(model, modelWithLeftPath(R"(<site name="path:left_base:0" pos="0.08 0.4 1.0" euler="0 90 0"/>)")));
  for (Mode mode : {Mode::Kinematic, Mode::Dynamic}) {
    HxRecordOptions options;
    options.modelFile = model;
    options.duration = 4.0;
    Recording recording(mode == Mode::Dynamic ? "limit_dynamic" : "limit_kinematic", mode, options);
    ASSERT_EQ(recording.run(), HxRecordStatus::Success);
    const Csv& csv = recording.csv();
    const std::string flag = endEffectorPrefix(0, 0) + "Reach Target:Hit Joint Limit";
    EXPECT_EQ(csv.rows.front()[csv.column(flag)], 0.0);
    EXPECT_TRUE(raised(csv, flag)) << (mode == Mode::Dynamic ? "dynamic" : "kinematic");
    // The elbow (joint 3, range +-150 degrees) is the joint at its limit.
    double elbow = 0.0;
    for (std::size_t row = 0; row < csv.rows.size(); ++row) {
      elbow = std::max(elbow, std::fabs(csv.at(row, linkPrefix(0, 2) + "Joint Positions")));
    }
    EXPECT_NEAR(elbow, 150.0 * M_PI / 180.0, 0.02);
  }
}

}  // namespace
