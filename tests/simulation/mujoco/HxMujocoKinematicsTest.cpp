// Tests of HxMujocoKinematics: answers for a state are the same whether the scratch data was
// evaluated for that state just now or left from an earlier query, whatever input changed.

#include "simulation/mujoco/HxMujocoKinematics.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "simulation/HxIndividualManipulator.h"
#include "simulation/HxManipulatorActiveState.h"
#include "tests/simulation/mujoco/HxMujocoTestFixture.h"

namespace {

using namespace hxmujocotest;

// Query q of the kinematics: placement, velocity, acceleration of end effector q % 2 for q / 2
// = 0, 1, 2; centre of mass for q = 6. All numbers written (those of the other queries stay
// neutral), none when it fails.
constexpr int kQueries = 7;
using Answer = std::vector<double>;

Answer ask(const HxManipulatorKinematics& kinematics, int query, const HxManipulatorActiveState& state) {
  const HxU32 e = static_cast<HxU32>(query % 2);
  HxEndEffectorPlacement p;
  HxGeneralMotion m;
  HxVector c;
  const bool answered = query < 2   ? kinematics.endEffectorPlacement(e, state, p)
                        : query < 4 ? kinematics.endEffectorVelocity(e, state, m)
                        : query < 6 ? kinematics.endEffectorAcceleration(e, state, m)
                                    : kinematics.centerOfMass(state, c);
  if (!answered) return {};
  const HxVector& t = p.translation();
  const HxOrientation& o = p.orientation();
  return {t[0], t[1], t[2], o[0], o[1], o[2], o[3], m[0], m[1], m[2], m[3], m[4], m[5], c[0], c[1], c[2]};
}

// The state of `n` joints with inputs `x`, in order: joint positions, base translation and
// orientation (w, x, y, z; not normalised), joint velocities, base velocity, joint
// accelerations, base acceleration. 3 n + 19 inputs, of which those of the base are
// inputBelongsToBase.
HxManipulatorActiveState stateOf(const std::vector<double>& x, HxU32 n) {
  HxManipulatorActiveState s(n);
  const double* p = x.data();
  for (HxU32 j = 0; j < n; ++j) s.mutablePositionState().mutableJointPositions()[j] = *p++;
  s.mutablePositionState().setCoordSystemXform(
      HxCoordSystemXform(HxVector(p[0], p[1], p[2]), HxOrientation(p[3], p[4], p[5], p[6])));
  p += 7;
  for (HxU32 j = 0; j < n; ++j) s.mutableVelocityState().mutableJointVelocities()[j] = *p++;
  s.mutableVelocityState().setBaseVelocity(HxGeneralMotion(p[0], p[1], p[2], p[3], p[4], p[5]));
  p += 6;
  for (HxU32 j = 0; j < n; ++j) s.mutableAccelerationState().mutableJointAccelerations()[j] = *p++;
  s.mutableAccelerationState().setBaseAcceleration(HxGeneralMotion(p[0], p[1], p[2], p[3], p[4], p[5]));
  return s;
}

bool inputBelongsToBase(std::size_t i, std::size_t n) {
  return (i >= n && i < n + 7) || (i >= 2 * n + 7 && i < 2 * n + 13) || i >= 3 * n + 13;
}

// Inputs of a moving state on a tilted base.
std::vector<double> movingInputs(HxU32 n) {
  std::vector<double> x(3 * n + 19);
  for (std::size_t i = 0; i < x.size(); ++i) x[i] = std::sin(1.0 + static_cast<double>(i));
  return x;
}

class MujocoKinematicsTest : public MujocoTest {
 protected:
  // Takes the first manipulator of model text `text`.
  void load(const char* text) {
    Reference ref = Reference::ofText(text);
    ASSERT_TRUE(ref.model);
    mj_forward(ref.model.get(), ref.data.get());
    std::vector<HxMujocoManipulatorLayout> layouts;
    std::string error;
    ASSERT_TRUE(hxMujocoBuildLayouts(ref.model.get(), ref.data.get(), layouts, error)) << error;
    model_ = HxMujocoModelPtr(std::move(ref.model));
    layout_ = std::make_shared<const HxMujocoManipulatorLayout>(std::move(layouts[0]));
  }
  // The answer of kinematics that have evaluated nothing before.
  Answer fresh(int query, const HxManipulatorActiveState& state) const {
    return ask(HxMujocoKinematics(model_, layout_), query, state);
  }

  HxMujocoModelPtr model_;
  std::shared_ptr<const HxMujocoManipulatorLayout> layout_;
};

// After any sequence of queries, every answer equals that of kinematics evaluating the state
// from scratch, bit for bit: a change of any single input (of a later stage too, which the
// earlier stages do not see) is noticed, a state seen before is answered again correctly, and
// a state of the wrong size spoils nothing.
TEST_F(MujocoKinematicsTest, RepeatedQueriesAnswerAsAFreshEvaluation) {
  for (const char* model : {kFloatingArm, kPlanarArm}) {
    load(model);
    const bool freeBase = layout_->freeJoint >= 0;
    SCOPED_TRACE(freeBase ? "free base" : "fixed base");
    const HxU32 n = layout_->jointCount();
    const HxMujocoKinematics cached(model_, layout_);
    const std::vector<double> inputs = movingInputs(n);
    const HxManipulatorActiveState start = stateOf(inputs, n);
    std::vector<Answer> atStart;
    for (int q = 0; q < kQueries; ++q) atStart.push_back(fresh(q, start));
    ASSERT_EQ(std::count(atStart.begin(), atStart.end(), Answer()), 0);
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      SCOPED_TRACE(::testing::Message() << "input " << i);
      std::vector<double> changedInputs = inputs;
      changedInputs[i] += 0.3;
      const HxManipulatorActiveState changed = stateOf(changedInputs, n);
      int differing = 0;
      for (int query = 0; query < kQueries; ++query) {
        // The scratch holds the start state evaluated through every stage; then one query
        // for the changed state, and back to the start state.
        for (int all = 0; all < kQueries; ++all) ask(cached, all, start);
        const Answer expected = fresh(query, changed);
        EXPECT_EQ(ask(cached, query, changed), expected) << "query " << query;
        EXPECT_EQ(ask(cached, query, start), atStart[query]) << "query " << query;
        if (expected != atStart[query]) ++differing;
      }
      // The change matters (so a stale answer would have been caught), except that a fixed
      // base takes no base input.
      EXPECT_EQ(differing > 0, freeBase || !inputBelongsToBase(i, n));
    }

    // A state of the wrong size is refused, and what was evaluated before stays valid: with
    // positions right and velocities of another size the position stage answers, no other.
    for (int all = 0; all < kQueries; ++all) ask(cached, all, start);
    HxManipulatorActiveState partly = start;
    partly.mutableVelocityState().mutableJointVelocities().push_back(0.0);
    EXPECT_TRUE(!ask(cached, 0, partly).empty() && ask(cached, 2, partly).empty() && ask(cached, 5, partly).empty() &&
                ask(cached, 6, stateOf(movingInputs(n + 1), n + 1)).empty());
    for (int query = 0; query < kQueries; ++query) EXPECT_EQ(ask(cached, query, start), atStart[query]);
  }
}

// The simulation's kinematics answer its own state from its data, without evaluating it again,
// with the bits a fresh evaluation gives: in dynamic mode every stage, in kinematic mode (whose
// accelerations are not the data's) positions and velocities. A free base always evaluates, a
// state other than the simulation's evaluates, and kinematics kept after the simulation
// loaded another model answer from their own scratch (never from data gone with that model).
TEST_F(MujocoTest, TheSimulationsOwnStateIsAnsweredFromItsData) {
  // Kinematics of the default scene's second arm on a model of their own, for reference.
  Reference ref(kDefaultScene);
  ASSERT_TRUE(ref.model);
  mj_forward(ref.model.get(), ref.data.get());
  std::vector<HxMujocoManipulatorLayout> layouts;
  std::string error;
  ASSERT_TRUE(hxMujocoBuildLayouts(ref.model.get(), ref.data.get(), layouts, error)) << error;
  ASSERT_EQ(layouts.size(), 2u);
  const HxMujocoKinematics reference(HxMujocoModelPtr(std::move(ref.model)),
                                     std::make_shared<const HxMujocoManipulatorLayout>(std::move(layouts[1])));

  for (const Mode mode : {Mode::Dynamic, Mode::Kinematic}) {
    SCOPED_TRACE(mode == Mode::Dynamic ? "dynamic" : "kinematic");
    ASSERT_TRUE(sim_.loadFile(kDefaultScene, mode)) << sim_.lastError();
    const auto& kinematics = dynamic_cast<const HxMujocoKinematics&>(sim_.manipulators()[1].kinematics());
    const std::uint64_t before = kinematics.scratchEvaluations();
    for (int step = 0; step < 40; ++step) {
      ASSERT_TRUE(sim_.step());
      const HxManipulatorActiveState& state = sim_.activeStates()[1];
      for (int query = 0; query < kQueries; ++query) {
        const Answer answer = ask(kinematics, query, state);
        EXPECT_FALSE(answer.empty());
        EXPECT_EQ(answer, ask(reference, query, state)) << query;
      }
      if (step == 0) {
        EXPECT_EQ(kinematics.scratchEvaluations() - before, mode == Mode::Dynamic ? 0u : 3u);
      }
    }
    // Kinematic accelerations evaluate their three stages on the scratch once a step; nothing
    // else evaluates.
    EXPECT_EQ(kinematics.scratchEvaluations() - before, mode == Mode::Dynamic ? 0u : 120u);

    // A state that differs from the simulation's in one bit is evaluated.
    HxManipulatorActiveState moved = sim_.activeStates()[1];
    double& q = moved.mutablePositionState().mutableJointPositions()[2];
    q = std::nextafter(q, 10.0);
    const std::uint64_t beforeMoved = kinematics.scratchEvaluations();
    EXPECT_EQ(ask(kinematics, 6, moved), ask(reference, 6, moved));
    EXPECT_EQ(kinematics.scratchEvaluations(), beforeMoved + 1);
  }

  // Kept past a load of another model: its own answers, from its scratch.
  const HxIndividualManipulator kept = sim_.manipulators()[1];  // shares the kinematics
  const HxManipulatorActiveState keptState = sim_.activeStates()[1];
  ASSERT_TRUE(sim_.loadString(kFloatingArm)) << sim_.lastError();
  const auto& old = dynamic_cast<const HxMujocoKinematics&>(kept.kinematics());
  const std::uint64_t beforeLoad = old.scratchEvaluations();
  for (int query = 0; query < kQueries; ++query) {
    EXPECT_EQ(ask(old, query, keptState), ask(reference, query, keptState)) << query;
  }
  EXPECT_GT(old.scratchEvaluations(), beforeLoad);

  // A free base evaluates its state on the scratch.
  const auto& floating = dynamic_cast<const HxMujocoKinematics&>(sim_.manipulators()[0].kinematics());
  ASSERT_TRUE(sim_.step());
  const std::uint64_t beforeFloating = floating.scratchEvaluations();
  EXPECT_FALSE(ask(floating, 6, sim_.activeStates()[0]).empty());
  EXPECT_EQ(floating.scratchEvaluations(), beforeFloating + 1);
}

}  // namespace
