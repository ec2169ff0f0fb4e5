// Real MuJoCo runs recorded through the library by hxrecord's session, checked for physical
// sense through the recorded CSV columns: placements and centre of mass are the engine's,
// velocities the derivatives of positions, motor power the drive formula, every path point is
// reached, and driving into a joint limit or the table raises the matching event flag.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <ostream>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "tests/tools/HxRecordTestSupport.h"
#include "tools/lib/HxRecord.h"

using Mode = HxMujocoSimulation::Mode;

// Names the mode in test listings (found by argument-dependent lookup, hence outside the
// anonymous namespace; internal linkage keeps it to this file).
static void PrintTo(Mode mode, std::ostream* os) { *os << (mode == Mode::Dynamic ? "Dynamic" : "Kinematic"); }

namespace {

using namespace HxRecordTest;

const char* const kSides[] = {"left", "right"};

std::string prefix(HxU32 m) { return "Manip[" + std::to_string(m) + "]:"; }
std::string linkPrefix(HxU32 m, HxU32 j) { return prefix(m) + kSides[m] + "_link" + std::to_string(j + 1) + ":"; }
std::string reachPrefix(HxU32 m, HxU32 e) { return prefix(m) + "EE[" + std::to_string(e) + "]:Reach Target:"; }

// A placement from 7 columns starting at `first` (translation, then quaternion w, x, y, z).
HxEndEffectorPlacement placementAt(const Csv& csv, std::size_t row, const std::string& first) {
  const std::size_t c = csv.column(first);
  const std::vector<double>& v = csv.rows[row];
  return HxEndEffectorPlacement(HxVector(v[c], v[c + 1], v[c + 2]),
                                HxOrientation(v[c + 3], v[c + 4], v[c + 5], v[c + 6]));
}

// `duration` seconds of the default scene (or of `model`) recorded in `mode`, one sample every
// `interval`, into a CSV file only; `ok` when recording and reading back succeeded.
struct Recording {
  Recording(const std::string& name, Mode mode, double duration = 8.0, double interval = 0.01,
            const std::string& model = "") {
    const std::string directory = scratchDirectory(name + (mode == Mode::Dynamic ? "_dynamic" : "_kinematic"));
    HxRecordOptions options;
    options.modelFile = model;
    options.duration = duration;
    options.sampleInterval = interval;
    options.mode = mode;
    options.outputBase = directory + "run";
    options.writersFile = textWriterOnly(directory);
    options.quiet = true;
    session = std::make_unique<HxRecordSession>(options);
    ok = session->prepare() == HxRecordStatus::Success && session->record({}) == HxRecordStatus::Success;
    for (const auto& error : session->errors()) ADD_FAILURE() << error;
    ok = ok && readCsv(directory + "run.csv", csv);
  }
  const HxMujocoSimulation& simulation() const { return session->simulation(); }

  std::unique_ptr<HxRecordSession> session;
  Csv csv;
  bool ok = false;
};

class HxRecordPhysicsTest : public ::testing::TestWithParam<Mode> {};

// End-effector placement columns are the engine's site poses and centre-of-mass columns its
// subtree centre of mass: after the recording, the engine asked again for each sample's recorded
// base placement and joint positions gives the recorded values.
TEST_P(HxRecordPhysicsTest, PlacementAndCenterOfMassColumnsAreTheEngines) {
  Recording recording("placements", GetParam(), 2.0, 0.05);
  ASSERT_TRUE(recording.ok);
  const Csv& csv = recording.csv;
  ASSERT_EQ(csv.rows.size(), 41u);
  double moved = 0.0;
  for (std::size_t row = 0; row < csv.rows.size(); ++row) {
    for (HxU32 m = 0; m < 2; ++m) {
      HxManipulatorActiveState state(6);
      state.mutablePositionState().setCoordSystemXform(
          placementAt(csv, row, prefix(m) + "Base Positions:Translation X"));
      for (HxU32 j = 0; j < 6; ++j) {
        state.mutablePositionState().mutableJointPositions()[j] = csv.at(row, linkPrefix(m, j) + "Joint Positions");
      }
      const HxIndividualManipulator& manipulator = recording.simulation().manipulators()[m];
      for (HxU32 e = 0; e < 2; ++e) {
        const std::string first = prefix(m) + "EE[" + std::to_string(e) + "]:End Effector Placements:Translation X";
        const HxEndEffectorPlacement recorded = placementAt(csv, row, first),
                                     engine = manipulator.endEffectorPlacement(e, state);
        double angle = 0.0;
        HxVector axis;
        recorded.orientation().angleAxisBetween(engine.orientation(), angle, axis);
        EXPECT_LT(recorded.translation().distanceTo(engine.translation()), 1e-12) << "sample " << row;
        EXPECT_LT(angle, 1e-7) << "sample " << row;
        moved = std::max(moved, recorded.translation().distanceTo(placementAt(csv, 0, first).translation()));
      }
      const std::string com = prefix(m) + "Center of Mass:";
      const HxVector center(csv.at(row, com + "X"), csv.at(row, com + "Y"), csv.at(row, com + "Z"));
      EXPECT_LT(center.distanceTo(manipulator.centerOfMass(state)), 1e-12) << "sample " << row;
    }
  }
  EXPECT_GT(moved, 0.05);  // the arms did move: the comparison is not of a still scene
}

// With a sample at every step: each joint velocity is the derivative of the joint position (the
// position difference over the step is the new velocity: semi-implicit Euler in dynamic mode,
// the integrated control output in kinematic mode); motor power is scale factor x joint velocity
// x torque / divisor, with the model's gears and efficiency of 0.85; manipulator power is the sum
// of torque x velocity. Without dynamics torques and power stay 0.
TEST_P(HxRecordPhysicsTest, JointVelocityAndPowerColumnsAgree) {
  Recording recording("joints", GetParam(), 1.0, 0.002);
  ASSERT_TRUE(recording.ok);
  const Csv& csv = recording.csv;
  ASSERT_EQ(csv.rows.size(), 501u);
  const bool dynamic = GetParam() == Mode::Dynamic;
  const double gears[] = {100, 150, 100, 50, 50, 30};
  double fastest = 0.0, largest = 0.0;
  for (std::size_t row = 0; row < csv.rows.size(); ++row) {
    const std::vector<double>& now = csv.rows[row];
    const std::vector<double>& before = csv.rows[row == 0 ? 0 : row - 1];
    for (HxU32 m = 0; m < 2; ++m) {
      double sum = 0.0;
      for (HxU32 j = 0; j < 6; ++j) {
        const std::string link = linkPrefix(m, j);
        const std::size_t q = csv.column(link + "Joint Positions");
        const double velocity = now[csv.column(link + "Joint Velocities")];
        const double torque = now[csv.column(link + "Control Torques")];
        if (row >= 2) {
          const double difference = (now[q] - before[q]) / (now[0] - before[0]);
          EXPECT_NEAR(velocity, difference, 1e-9 + 1e-9 * std::fabs(difference)) << link << " t = " << now[0];
          fastest = std::max(fastest, std::fabs(difference));
        }
        const double power = dynamic ? gears[j] * velocity * torque / (gears[j] * 0.85) : 0.0;
        EXPECT_NEAR(now[csv.column(link + "Motor Power")], power, 1e-12 * (1.0 + std::fabs(power))) << link << row;
        EXPECT_TRUE(dynamic || torque == 0.0) << link << row;
        sum += torque * velocity;
        largest = std::max(largest, std::fabs(power));
      }
      EXPECT_NEAR(now[csv.column(prefix(m) + "Manipulator Power")], sum, 1e-12 * (1.0 + std::fabs(sum))) << row;
    }
  }
  EXPECT_GT(fastest, 0.1);
  EXPECT_TRUE(!dynamic || largest > 1.0) << largest;  // the motors did work
}

// In the default scene every path point of both arms is reached: "Target Reached" becomes 1
// while the desired placement is that path point, in order, and the path-point index runs
// through all points.
TEST_P(HxRecordPhysicsTest, DefaultSceneReachesEveryPathPoint) {
  Recording recording("reach", GetParam());
  ASSERT_TRUE(recording.ok);
  const Csv& csv = recording.csv;
  std::vector<double> indices;
  for (const auto& row : csv.rows) {
    if (indices.empty() || indices.back() != row[1]) indices.push_back(row[1]);
  }
  EXPECT_EQ(indices, (std::vector<double>{0, 1, 2, 3}));

  for (HxU32 m = 0; m < 2; ++m) {
    const std::vector<HxEndEffectorPlacement>& points = recording.simulation().pathPoints(m);
    ASSERT_EQ(points.size(), 4u);
    const std::string reach = reachPrefix(m, 0);
    std::size_t next = 0;  // the path point to be reached next
    for (std::size_t row = 0; row < csv.rows.size() && next < points.size(); ++row) {
      const HxVector desired(csv.at(row, reach + "Desired X"), csv.at(row, reach + "Desired Y"),
                             csv.at(row, reach + "Desired Z"));
      if (desired.distanceTo(points[next].translation()) > 1e-9 || csv.at(row, reach + "Target Reached") != 1.0) {
        continue;
      }
      EXPECT_LE(csv.at(row, reach + "Translation Error"), 1e-3);
      EXPECT_LE(csv.at(row, reach + "Orientation Error"), 1e-3);
      ++next;
    }
    EXPECT_EQ(next, points.size()) << kSides[m] << " arm reached only " << next << " path points";
    EXPECT_TRUE(recording.simulation().pathCompleted(m));
  }
}

INSTANTIATE_TEST_SUITE_P(BothModes, HxRecordPhysicsTest, ::testing::Values(Mode::Dynamic, Mode::Kinematic),
                         [](const ::testing::TestParamInfo<Mode>& mode) {
                           return mode.param == Mode::Dynamic ? "Dynamic" : "Kinematic";
                         });

// The CSV of 4 s of the default model whose left arm has the one path point `site` (an MJCF
// site); empty (with the failures added) when recording fails.
Csv recordLeftPath(const std::string& name, Mode mode, const std::string& site) {
  const std::string model =
      std::regex_replace(readFile(defaultModelPath()), std::regex("<site name=\"path:left_base:[^>]*/>"), "");
  const std::size_t end = model.find("</worldbody>");
  const std::string path = scratchDirectory(name + "_model") + "model.xml";
  EXPECT_TRUE(writeFile(path, model.substr(0, end) + site + "\n  " + model.substr(end)));
  Recording recording(name, mode, 4.0, 0.01, path);
  return recording.ok ? recording.csv : Csv();
}

// Any sample of `csv` whose column `label` is 1.
bool raised(const Csv& csv, const std::string& label) {
  const std::size_t c = csv.column(label);
  return std::any_of(csv.rows.begin(), csv.rows.end(), [c](const std::vector<double>& row) { return row[c] == 1.0; });
}

// Driving the left arm's tool down into the table raises "Collision Occurred" for the left arm
// only (not at the start), with an upward external force on one of its links while touching.
TEST(HxRecordEventTest, DrivingIntoTheTableRaisesTheCollisionFlag) {
  const Csv csv = recordLeftPath("collision", Mode::Dynamic,
                                 R"(<site name="path:left_base:0" pos="0.45 0.3 0.6" euler="0 180 0"/>)");
  ASSERT_FALSE(csv.rows.empty());
  const std::size_t flag = csv.column(reachPrefix(0, 0) + "Collision Occurred");
  EXPECT_EQ(csv.rows.front()[flag], 0.0);
  EXPECT_TRUE(raised(csv, reachPrefix(0, 0) + "Collision Occurred") &&
              raised(csv, reachPrefix(0, 1) + "Collision Occurred"));
  EXPECT_FALSE(raised(csv, reachPrefix(1, 0) + "Collision Occurred"));
  EXPECT_FALSE(raised(csv, reachPrefix(0, 0) + "Target Reached"));  // the table is in the way
  bool pushed = false;
  for (const auto& row : csv.rows) {
    for (HxU32 j = 0; j < 6; ++j) {
      pushed = pushed || (row[flag] == 1.0 && row[csv.column(linkPrefix(0, j) + "External Forces:Force Z")] > 0.0);
      EXPECT_EQ(row[csv.column(linkPrefix(1, j) + "External Forces:Force Z")], 0.0) << "the right arm touches nothing";
    }
  }
  EXPECT_TRUE(pushed);
}

// A path point so close to the shoulder that the elbow would have to fold beyond its 150 degree
// range drives that joint into its limit and raises "Hit Joint Limit", in both modes.
TEST(HxRecordEventTest, DrivingIntoAJointLimitRaisesTheFlag) {
  for (Mode mode : {Mode::Kinematic, Mode::Dynamic}) {
    const Csv csv =
        recordLeftPath("limit", mode, R"(<site name="path:left_base:0" pos="0.08 0.4 1.0" euler="0 90 0"/>)");
    ASSERT_FALSE(csv.rows.empty());
    const std::string flag = reachPrefix(0, 0) + "Hit Joint Limit";
    EXPECT_EQ(csv.rows.front()[csv.column(flag)], 0.0);
    EXPECT_TRUE(raised(csv, flag)) << (mode == Mode::Dynamic ? "dynamic" : "kinematic");
    double elbow = 0.0;  // joint 3, range +-150 degrees
    for (std::size_t row = 0; row < csv.rows.size(); ++row) {
      elbow = std::max(elbow, std::fabs(csv.at(row, linkPrefix(0, 2) + "Joint Positions")));
    }
    EXPECT_NEAR(elbow, 150.0 * M_PI / 180.0, 0.02);
  }
}

}  // namespace
