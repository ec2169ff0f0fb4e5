#include "simulation/HxMath.h"

#include <cmath>

#include <gtest/gtest.h>

namespace {

constexpr double kPi = 3.14159265358979323846;

void expectVectorNear(const HxVector& actual, const HxVector& expected, double tolerance = 1e-12) {
  EXPECT_NEAR(actual.x(), expected.x(), tolerance);
  EXPECT_NEAR(actual.y(), expected.y(), tolerance);
  EXPECT_NEAR(actual.z(), expected.z(), tolerance);
}

TEST(HxVector, DistanceToIsEuclideanAndSymmetric) {
  const HxVector a(1.0, 2.0, 3.0);
  const HxVector b(4.0, 6.0, 3.0);
  EXPECT_DOUBLE_EQ(a.distanceTo(b), 5.0);
  EXPECT_DOUBLE_EQ(b.distanceTo(a), 5.0);
  EXPECT_DOUBLE_EQ(a.distanceTo(a), 0.0);
  EXPECT_DOUBLE_EQ(HxVector(0.0, 0.0, -0.001).distanceTo(HxVector()), 0.001);
}

TEST(HxOrientation, ComponentOrderIsScalarFirst) {
  // The captured "Quaternion 0..3" columns rely on this order: w, x, y, z.
  const HxOrientation identity;
  EXPECT_EQ(identity[0], 1.0);
  EXPECT_EQ(identity[1], 0.0);
  EXPECT_EQ(identity[2], 0.0);
  EXPECT_EQ(identity[3], 0.0);
  const HxOrientation aboutZ = HxOrientation::fromAxisAngle(HxVector(0.0, 0.0, 2.0), 0.6);
  EXPECT_NEAR(aboutZ[0], std::cos(0.3), 1e-15);
  EXPECT_NEAR(aboutZ[1], 0.0, 1e-15);
  EXPECT_NEAR(aboutZ[2], 0.0, 1e-15);
  EXPECT_NEAR(aboutZ[3], std::sin(0.3), 1e-15);
  EXPECT_EQ(HxOrientation::fromAxisAngle(HxVector(), 1.0), HxOrientation());
}

TEST(HxOrientation, AngleAxisBetweenIdenticalOrientationsIsZero) {
  for (const HxOrientation& q : {HxOrientation(), HxOrientation::fromAxisAngle(HxVector(1, 2, 3), 2.5)}) {
    double angle = -1.0;
    HxVector axis(9, 9, 9);
    q.angleAxisBetween(q, angle, axis);
    EXPECT_NEAR(angle, 0.0, 1e-12);
    expectVectorNear(axis, HxVector(1, 0, 0));
  }
}

TEST(HxOrientation, AngleAxisBetweenKnownRotations) {
  const HxOrientation identity;
  double angle = 0.0;
  HxVector axis;

  identity.angleAxisBetween(HxOrientation::fromAxisAngle(HxVector(0, 0, 1), kPi / 2), angle, axis);
  EXPECT_NEAR(angle, kPi / 2, 1e-12);
  expectVectorNear(axis, HxVector(0, 0, 1));

  // The other way round: same angle, opposite axis.
  HxOrientation::fromAxisAngle(HxVector(0, 0, 1), kPi / 2).angleAxisBetween(identity, angle, axis);
  EXPECT_NEAR(angle, kPi / 2, 1e-12);
  expectVectorNear(axis, HxVector(0, 0, -1));

  // Between two non-trivial orientations, the axis is expressed in the world frame:
  // b = R(y, 0.5) * a.
  const HxOrientation a = HxOrientation::fromAxisAngle(HxVector(1, 0, 0), 0.3);
  const HxOrientation b = HxOrientation::fromAxisAngle(HxVector(0, 1, 0), 0.5) * a;
  a.angleAxisBetween(b, angle, axis);
  EXPECT_NEAR(angle, 0.5, 1e-12);
  expectVectorNear(axis, HxVector(0, 1, 0));
}

TEST(HxOrientation, NegatedQuaternionIsTheSameOrientation) {
  const HxOrientation q = HxOrientation::fromAxisAngle(HxVector(0.2, -1.0, 0.4), 1.1);
  const HxOrientation minusQ(-q[0], -q[1], -q[2], -q[3]);
  double angle = -1.0;
  HxVector axis;
  q.angleAxisBetween(minusQ, angle, axis);
  EXPECT_NEAR(angle, 0.0, 1e-12);

  // And the angle to a third orientation does not depend on the sign chosen.
  const HxOrientation r = HxOrientation::fromAxisAngle(HxVector(1, 1, 0), 0.7) * q;
  double anglePlus = 0.0;
  double angleMinus = 0.0;
  q.angleAxisBetween(r, anglePlus, axis);
  minusQ.angleAxisBetween(r, angleMinus, axis);
  EXPECT_NEAR(anglePlus, 0.7, 1e-12);
  EXPECT_NEAR(angleMinus, 0.7, 1e-12);
}

TEST(HxOrientation, AngleIsAlwaysInZeroToPi) {
  const HxOrientation identity;
  double angle = 0.0;
  HxVector axis;

  // 3/2 pi about +z is pi/2 about -z.
  identity.angleAxisBetween(HxOrientation::fromAxisAngle(HxVector(0, 0, 1), 1.5 * kPi), angle, axis);
  EXPECT_NEAR(angle, kPi / 2, 1e-12);
  expectVectorNear(axis, HxVector(0, 0, -1));

  identity.angleAxisBetween(HxOrientation::fromAxisAngle(HxVector(1, 0, 0), kPi), angle, axis);
  EXPECT_NEAR(angle, kPi, 1e-12);

  for (int i = 0; i <= 40; ++i) {
    const double turned = -2.0 * kPi + i * 0.1 * kPi;
    identity.angleAxisBetween(HxOrientation::fromAxisAngle(HxVector(1, -2, 0.5), turned), angle, axis);
    EXPECT_GE(angle, 0.0) << turned;
    EXPECT_LE(angle, kPi + 1e-12) << turned;
    const double expected = std::abs(std::remainder(turned, 2.0 * kPi));
    EXPECT_NEAR(angle, expected, 1e-9) << turned;
  }
}

TEST(HxOrientation, SmallAnglesKeepTheirPrecision) {
  // Tolerances of a millirad are compared against this angle, so it must not collapse to 0
  // (or jump to 1e-8-ish noise) for small rotations.
  const HxOrientation a = HxOrientation::fromAxisAngle(HxVector(0, 1, 0), 0.4);
  for (double small : {1e-3, 1e-6, 1e-9}) {
    double angle = 0.0;
    HxVector axis;
    a.angleAxisBetween(HxOrientation::fromAxisAngle(HxVector(0, 0, 1), small) * a, angle, axis);
    EXPECT_NEAR(angle, small, small * 1e-6);
    expectVectorNear(axis, HxVector(0, 0, 1), 1e-6);
  }
}

TEST(HxOrientation, RotateAndCompose) {
  const HxOrientation quarterZ = HxOrientation::fromAxisAngle(HxVector(0, 0, 1), kPi / 2);
  expectVectorNear(quarterZ.rotate(HxVector(1, 0, 0)), HxVector(0, 1, 0));
  // The product applies the right factor first.
  const HxOrientation quarterX = HxOrientation::fromAxisAngle(HxVector(1, 0, 0), kPi / 2);
  expectVectorNear((quarterZ * quarterX).rotate(HxVector(0, 1, 0)), quarterZ.rotate(HxVector(0, 0, 1)));
  expectVectorNear((quarterZ * quarterZ.conjugate()).rotate(HxVector(1, 2, 3)), HxVector(1, 2, 3));
  const HxOrientation n = HxOrientation(2.0, 0.0, 0.0, 2.0).normalized();
  EXPECT_NEAR(n[0], std::sqrt(0.5), 1e-15);
  EXPECT_NEAR(n[3], std::sqrt(0.5), 1e-15);
  EXPECT_EQ(HxOrientation(0, 0, 0, 0).normalized(), HxOrientation());
}

TEST(HxCoordSystemXform, CompositionPlacesTheInnerFrameInTheWorld) {
  const HxCoordSystemXform base(HxVector(1, 0, 0), HxOrientation::fromAxisAngle(HxVector(0, 0, 1), kPi / 2));
  const HxCoordSystemXform tool(HxVector(1, 0, 0.5), HxOrientation::fromAxisAngle(HxVector(1, 0, 0), 0.2));
  const HxCoordSystemXform world = base * tool;
  expectVectorNear(world.translation(), HxVector(1, 1, 0.5));
  expectVectorNear(world.transformPoint(HxVector()), HxVector(1, 1, 0.5));
  double angle = 0.0;
  HxVector axis;
  (base.orientation() * tool.orientation()).angleAxisBetween(world.orientation(), angle, axis);
  EXPECT_NEAR(angle, 0.0, 1e-12);
  EXPECT_EQ(HxCoordSystemXform() * tool, tool);
}

TEST(HxGeneralMotionAndForce, ComponentsAreLinearThenAngular) {
  const HxGeneralMotion motion(HxVector(1, 2, 3), HxVector(4, 5, 6));
  const HxGeneralForce force(7, 8, 9, 10, 11, 12);
  for (HxU32 i = 0; i < 6; ++i) {
    EXPECT_EQ(motion[i], 1.0 + i);
    EXPECT_EQ(force[i], 7.0 + i);
  }
  EXPECT_EQ(motion.angular(), HxVector(4, 5, 6));
  EXPECT_EQ(force.force(), HxVector(7, 8, 9));
  EXPECT_EQ(force.moment(), HxVector(10, 11, 12));
  const HxGeneralForce copy = force;
  EXPECT_EQ(copy, force);
  EXPECT_EQ(HxGeneralMotion()[5], 0.0);
}

}  // namespace
