// Tests of HxMujocoKinematics: answers for a state are the same whether the scratch data was
// evaluated for that state just now or left from an earlier query, whatever input changed.

#include "simulation/mujoco/HxMujocoKinematics.h"

#include <gtest/gtest.h>
#include <mujoco/mujoco.h>

#include <array>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "simulation/HxEndEffectorPlacement.h"
#include "simulation/HxManipulatorActiveState.h"

namespace {

// A free-base arm (hinge, hinge, slide) and a fixed-base arm, two end effectors each.
const char* kTwoArms = R"(
<mujoco model="kinematics">
  <option gravity="0 0 -9.81"/>
  <default>
    <geom type="capsule" size="0.03" contype="0" conaffinity="0"/>
  </default>
  <worldbody>
    <body name="rover" pos="0 0 0.5">
      <freejoint/>
      <geom type="box" size="0.2 0.1 0.05"/>
      <body name="turret" pos="0.1 0 0.05">
        <joint name="yaw" type="hinge" axis="0 0 1"/>
        <geom fromto="0 0 0 0 0 0.2"/>
        <body name="boom" pos="0 0 0.2">
          <joint name="pitch" type="hinge" axis="0 1 0"/>
          <geom fromto="0 0 0 0.4 0 0"/>
          <body name="slider" pos="0.4 0 0">
            <joint name="extend" type="slide" axis="1 0 0"/>
            <geom fromto="0 0 0 0.2 0 0"/>
            <site name="ee_frame:gripper" pos="0.2 0 0" euler="0.3 0.2 0.1"/>
            <site name="ee_point:tip" pos="0.25 0.02 0"/>
          </body>
        </body>
      </body>
    </body>
    <body name="post" pos="1 1 0">
      <body name="swinger">
        <joint name="swing" type="hinge" axis="0 0 1"/>
        <geom fromto="0 0 0 0.3 0 0.2"/>
        <body name="lifter" pos="0.3 0 0.2">
          <joint name="lift" type="hinge" axis="0 1 0"/>
          <geom fromto="0 0 0 0.3 0 0"/>
          <site name="ee_frame:flange" pos="0.3 0 0" euler="0 0.4 0"/>
          <site name="ee_point:nose" pos="0.35 0 0.05"/>
        </body>
      </body>
    </body>
  </worldbody>
</mujoco>)";

// The queries of the kinematics, each answering up to seven numbers.
enum class Query { Placement0, Placement1, Velocity0, Velocity1, Acceleration0, Acceleration1, CenterOfMass };
constexpr Query kQueries[] = {Query::Placement0,    Query::Placement1,    Query::Velocity0,   Query::Velocity1,
                              Query::Acceleration0, Query::Acceleration1, Query::CenterOfMass};

struct Answer {
  bool ok = false;
  std::array<double, 7> values{};
  bool operator==(const Answer& other) const { return ok == other.ok && values == other.values; }
};

Answer ask(const HxManipulatorKinematics& kinematics, Query query, const HxManipulatorActiveState& state) {
  Answer answer;
  HxEndEffectorPlacement placement;
  HxGeneralMotion motion;
  HxVector com;
  switch (query) {
    case Query::Placement0:
    case Query::Placement1:
      answer.ok = kinematics.endEffectorPlacement(query == Query::Placement0 ? 0 : 1, state, placement);
      for (HxU32 i = 0; i < 3; ++i) answer.values[i] = placement.translation()[i];
      for (HxU32 i = 0; i < 4; ++i) answer.values[3 + i] = placement.orientation()[i];
      break;
    case Query::Velocity0:
    case Query::Velocity1:
      answer.ok = kinematics.endEffectorVelocity(query == Query::Velocity0 ? 0 : 1, state, motion);
      for (HxU32 i = 0; i < 6; ++i) answer.values[i] = motion[i];
      break;
    case Query::Acceleration0:
    case Query::Acceleration1:
      answer.ok = kinematics.endEffectorAcceleration(query == Query::Acceleration0 ? 0 : 1, state, motion);
      for (HxU32 i = 0; i < 6; ++i) answer.values[i] = motion[i];
      break;
    case Query::CenterOfMass:
      answer.ok = kinematics.centerOfMass(state, com);
      for (HxU32 i = 0; i < 3; ++i) answer.values[i] = com[i];
      break;
  }
  return answer;
}

// One change of one input of a state.
struct Change {
  const char* name;
  bool baseOnly;
  std::function<void(HxManipulatorActiveState&)> apply;
};

std::vector<Change> changes() {
  return {
      {"joint position", false, [](HxManipulatorActiveState& s) { s.mutablePositionState().mutableJointPositions()[1] += 0.3; }},
      {"base translation", true,
       [](HxManipulatorActiveState& s) {
         HxCoordSystemXform base = s.positionState().coordSystemXform();
         base.setTranslation(HxVector(base.translation()[0] + 0.2, base.translation()[1], base.translation()[2]));
         s.mutablePositionState().setCoordSystemXform(base);
       }},
      {"base orientation", true,
       [](HxManipulatorActiveState& s) {
         HxCoordSystemXform base = s.positionState().coordSystemXform();
         base.setOrientation(HxOrientation::fromAxisAngle(HxVector(0, 0, 1), 0.5) * base.orientation());
         s.mutablePositionState().setCoordSystemXform(base);
       }},
      {"joint velocity", false, [](HxManipulatorActiveState& s) { s.mutableVelocityState().mutableJointVelocities()[0] += 0.5; }},
      {"base linear velocity", true,
       [](HxManipulatorActiveState& s) {
         HxGeneralMotion v = s.velocityState().baseVelocity();
         v[1] += 0.4;
         s.mutableVelocityState().setBaseVelocity(v);
       }},
      {"base angular velocity", true,
       [](HxManipulatorActiveState& s) {
         HxGeneralMotion v = s.velocityState().baseVelocity();
         v[5] += 0.7;
         s.mutableVelocityState().setBaseVelocity(v);
       }},
      {"joint acceleration", false,
       [](HxManipulatorActiveState& s) { s.mutableAccelerationState().mutableJointAccelerations()[1] += 1.5; }},
      {"base linear acceleration", true,
       [](HxManipulatorActiveState& s) {
         HxGeneralMotion a = s.accelerationState().baseAcceleration();
         a[0] += 2.0;
         s.mutableAccelerationState().setBaseAcceleration(a);
       }},
      {"base angular acceleration", true,
       [](HxManipulatorActiveState& s) {
         HxGeneralMotion a = s.accelerationState().baseAcceleration();
         a[4] += 3.0;
         s.mutableAccelerationState().setBaseAcceleration(a);
       }},
  };
}

// A moving state of `n` joints on a tilted base, its quaternion not of unit length.
HxManipulatorActiveState movingState(HxU32 n) {
  HxManipulatorActiveState state(n);
  for (HxU32 j = 0; j < n; ++j) {
    state.mutablePositionState().mutableJointPositions()[j] = 0.2 + 0.1 * j;
    state.mutableVelocityState().mutableJointVelocities()[j] = -0.4 + 0.3 * j;
    state.mutableAccelerationState().mutableJointAccelerations()[j] = 1.0 - 0.6 * j;
  }
  state.mutablePositionState().setCoordSystemXform(
      HxCoordSystemXform(HxVector(0.3, -0.2, 0.6), HxOrientation(0.9, 0.1, -0.2, 0.3)));
  state.mutableVelocityState().setBaseVelocity(HxGeneralMotion(0.1, 0.2, -0.1, 0.3, -0.2, 0.4));
  state.mutableAccelerationState().setBaseAcceleration(HxGeneralMotion(-0.5, 0.2, 0.3, 0.1, 0.6, -0.3));
  return state;
}

class MujocoKinematicsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const std::string file = ::testing::TempDir() + "hx_kinematics_two_arms.xml";
    FILE* out = std::fopen(file.c_str(), "w");
    ASSERT_NE(out, nullptr);
    std::fputs(kTwoArms, out);
    std::fclose(out);
    char error[512] = "";
    mjModel* model = mj_loadXML(file.c_str(), nullptr, error, sizeof error);
    ASSERT_NE(model, nullptr) << error;
    model_ = HxMujocoModelPtr(model, [](const mjModel* m) { mj_deleteModel(const_cast<mjModel*>(m)); });
    mjData* data = mj_makeData(model);
    mj_forward(model, data);
    std::vector<HxMujocoManipulatorLayout> layouts;
    std::string layoutError;
    const bool built = hxMujocoBuildLayouts(model, data, layouts, layoutError);
    mj_deleteData(data);
    ASSERT_TRUE(built) << layoutError;
    ASSERT_EQ(layouts.size(), 2u);
    ASSERT_GE(layouts[0].freeJoint, 0);
    ASSERT_LT(layouts[1].freeJoint, 0);
    for (auto& layout : layouts) layouts_.push_back(std::make_shared<const HxMujocoManipulatorLayout>(std::move(layout)));
  }

  // The answer of kinematics that have evaluated nothing before.
  Answer fresh(std::size_t manipulator, Query query, const HxManipulatorActiveState& state) const {
    const HxMujocoKinematics kinematics(model_, layouts_[manipulator]);
    return ask(kinematics, query, state);
  }

  HxMujocoModelPtr model_;
  std::vector<std::shared_ptr<const HxMujocoManipulatorLayout>> layouts_;
};

// After any sequence of queries, every answer equals that of kinematics evaluating the state
// from scratch, bit for bit: a change of any single input (of a later stage too, which the
// earlier stages do not see) is noticed, and a state seen before is answered again correctly.
TEST_F(MujocoKinematicsTest, RepeatedQueriesAnswerAsAFreshEvaluation) {
  for (std::size_t k = 0; k < layouts_.size(); ++k) {
    SCOPED_TRACE(k == 0 ? "free base" : "fixed base");
    const bool freeBase = k == 0;
    const HxMujocoKinematics cached(model_, layouts_[k]);
    const HxManipulatorActiveState start = movingState(layouts_[k]->jointCount());
    std::array<Answer, std::size(kQueries)> atStart;
    for (std::size_t q = 0; q < std::size(kQueries); ++q) {
      atStart[q] = fresh(k, kQueries[q], start);
      ASSERT_TRUE(atStart[q].ok);
    }

    for (const Change& change : changes()) {
      SCOPED_TRACE(change.name);
      HxManipulatorActiveState changed = start;
      change.apply(changed);
      int differing = 0;
      for (Query query : kQueries) {
        // The scratch holds the start state evaluated through every stage; then one query
        // for the changed state.
        for (Query all : kQueries) ask(cached, all, start);
        const Answer expected = fresh(k, query, changed);
        EXPECT_EQ(ask(cached, query, changed), expected) << "query " << static_cast<int>(query);
        // And back: the start state again, after the scratch moved on.
        EXPECT_EQ(ask(cached, query, start), atStart[static_cast<std::size_t>(query)]);
        if (!(expected == atStart[static_cast<std::size_t>(query)])) ++differing;
      }
      // The change matters (so a stale answer would have been caught), except that a fixed
      // base takes no base input.
      if (freeBase || !change.baseOnly) {
        EXPECT_GT(differing, 0);
      } else {
        EXPECT_EQ(differing, 0);
      }
    }
  }
}

// A state of the wrong size is refused, and what was evaluated before stays valid.
TEST_F(MujocoKinematicsTest, WrongSizedStateLeavesTheEvaluationValid) {
  const HxMujocoKinematics cached(model_, layouts_[0]);
  const HxManipulatorActiveState state = movingState(layouts_[0]->jointCount());
  for (Query query : kQueries) ask(cached, query, state);

  // Positions right, velocities of another size: the position stage answers, the others fail.
  HxManipulatorActiveState partly = state;
  partly.mutableVelocityState().mutableJointVelocities().push_back(0.0);
  EXPECT_TRUE(ask(cached, Query::Placement0, partly).ok);
  EXPECT_FALSE(ask(cached, Query::Velocity0, partly).ok);
  EXPECT_FALSE(ask(cached, Query::Acceleration1, partly).ok);
  EXPECT_FALSE(ask(cached, Query::CenterOfMass, movingState(layouts_[0]->jointCount() + 1)).ok);

  for (Query query : kQueries) EXPECT_EQ(ask(cached, query, state), fresh(0, query, state));
}

}  // namespace
