// The simulation's small value types: component orders the captured columns rely on, the
// angle between orientations (range, sign, precision).
#include "simulation/HxMath.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr double kPi = 3.14159265358979323846;

HxOrientation about(double x, double y, double z, double angle) {
  return HxOrientation::fromAxisAngle(HxVector(x, y, z), angle);
}

// Quaternions are (w, x, y, z), a zero axis or a zero quaternion normalised giving the identity;
// motions and forces linear (force) then angular (moment); distances are Euclidean. (Rotation and
// composition are pinned by the angles below and by the default resolution of held placements.)
TEST(HxMath, ComponentOrdersAndDistance) {
  EXPECT_EQ(about(0, 0, 2, 0.6), HxOrientation(std::cos(0.3), 0, 0, std::sin(0.3)));  // axis of any length
  EXPECT_TRUE(about(0, 0, 0, 1.0) == HxOrientation() && HxOrientation(0, 0, 0, 0).normalized() == HxOrientation());
  const HxGeneralMotion motion(HxVector(1, 2, 3), HxVector(4, 5, 6));
  const HxGeneralForce force(7, 8, 9, 10, 11, 12);
  for (HxU32 i = 0; i < 6; ++i) EXPECT_TRUE(motion[i] == 1.0 + i && force[i] == 7.0 + i) << i;
  EXPECT_TRUE(motion.angular() == HxVector(4, 5, 6) && force.moment() == HxVector(10, 11, 12));
  EXPECT_DOUBLE_EQ(HxVector(1, 2, 3).distanceTo(HxVector(4, 6, 3)), 5.0);
}

// angleAxisBetween(from, to): the rotation taking `from` to `to`, in [0, pi], axis in the world
// frame; q and -q are one orientation; no rotation gives axis (1, 0, 0); small angles keep
// their relative precision (millirad tolerances are compared against them).
TEST(HxOrientation, AngleAxisBetween) {
  const HxOrientation q = about(0.2, -1.0, 0.4, 1.1);
  const HxOrientation minusQ(-q[0], -q[1], -q[2], -q[3]);
  const HxOrientation a = about(1, 0, 0, 0.3);
  const struct {
    const char* what;
    HxOrientation from, to;
    double angle;
    HxVector axis;
    double tolerance;
  } rows[] = {
      {"identical", q, q, 0.0, HxVector(1, 0, 0), 1e-12},
      {"negated", q, minusQ, 0.0, HxVector(1, 0, 0), 1e-12},
      {"quarter about z", HxOrientation(), about(0, 0, 1, kPi / 2), kPi / 2, HxVector(0, 0, 1), 1e-12},
      {"the other way round", about(0, 0, 1, kPi / 2), HxOrientation(), kPi / 2, HxVector(0, 0, -1), 1e-12},
      {"world-frame axis", a, about(0, 1, 0, 0.5) * a, 0.5, HxVector(0, 1, 0), 1e-12},
      {"from a negated quaternion", minusQ, about(1, 1, 0, 0.7) * q, 0.7, HxVector(std::sqrt(0.5), std::sqrt(0.5), 0),
       1e-12},
      {"3/2 pi is pi/2 the other way", HxOrientation(), about(0, 0, 1, 1.5 * kPi), kPi / 2, HxVector(0, 0, -1), 1e-12},
      {"half turn", HxOrientation(), about(1, 0, 0, kPi), kPi, HxVector(1, 0, 0), 1e-12},
      {"1e-3", a, about(0, 0, 1, 1e-3) * a, 1e-3, HxVector(0, 0, 1), 1e-9},
      {"1e-6", a, about(0, 0, 1, 1e-6) * a, 1e-6, HxVector(0, 0, 1), 1e-12},
      {"1e-9", a, about(0, 0, 1, 1e-9) * a, 1e-9, HxVector(0, 0, 1), 1e-15},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    double angle = -1.0;
    HxVector axis(9, 9, 9);
    row.from.angleAxisBetween(row.to, angle, axis);
    EXPECT_NEAR(angle, row.angle, row.tolerance);
    EXPECT_LT(axis.distanceTo(row.axis), row.angle > 0.0 && row.angle < 0.01 ? 1e-6 : 1e-12);
  }
}

}  // namespace
