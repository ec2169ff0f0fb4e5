#include "simulation/HxMath.h"

#include <cmath>
#include <limits>

double HxVector::distanceTo(const HxVector& other) const { return (*this - other).norm(); }

double HxVector::norm() const { return std::sqrt(dot(*this)); }

double HxVector::dot(const HxVector& other) const {
  return v_[0] * other.v_[0] + v_[1] * other.v_[1] + v_[2] * other.v_[2];
}

HxVector HxVector::cross(const HxVector& other) const {
  return HxVector(v_[1] * other.v_[2] - v_[2] * other.v_[1], v_[2] * other.v_[0] - v_[0] * other.v_[2],
                  v_[0] * other.v_[1] - v_[1] * other.v_[0]);
}

HxVector HxVector::operator+(const HxVector& other) const {
  return HxVector(v_[0] + other.v_[0], v_[1] + other.v_[1], v_[2] + other.v_[2]);
}

HxVector HxVector::operator-(const HxVector& other) const {
  return HxVector(v_[0] - other.v_[0], v_[1] - other.v_[1], v_[2] - other.v_[2]);
}

HxVector HxVector::operator*(double factor) const { return HxVector(v_[0] * factor, v_[1] * factor, v_[2] * factor); }

HxOrientation HxOrientation::fromAxisAngle(const HxVector& axis, double angle) {
  const double length = axis.norm();
  if (length == 0.0) return HxOrientation();
  const double s = std::sin(0.5 * angle) / length;
  return HxOrientation(std::cos(0.5 * angle), axis.x() * s, axis.y() * s, axis.z() * s);
}

void HxOrientation::angleAxisBetween(const HxOrientation& other, double& angle, HxVector& axis) const {
  // The relative rotation r with other = r * this. For unit quaternions the conjugate is the
  // inverse; atan2 below is insensitive to the common scale of slightly non-unit inputs.
  HxOrientation r = other * conjugate();
  // q and -q are one orientation: take the representative with w >= 0 so the angle is in [0, pi].
  if (r.w() < 0.0) r = HxOrientation(-r.w(), -r.x(), -r.y(), -r.z());
  const HxVector v(r.x(), r.y(), r.z());
  const double s = v.norm();
  const double length = std::sqrt(r.w() * r.w() + s * s);
  // A vector part at the level of rounding noise is no rotation: its direction is noise too.
  if (!(s > 4.0 * std::numeric_limits<double>::epsilon() * length)) {
    angle = 0.0;
    axis = HxVector(1.0, 0.0, 0.0);
    return;
  }
  // atan2 keeps full precision for small angles, where acos(w) would not.
  angle = 2.0 * std::atan2(s, r.w());
  axis = v * (1.0 / s);
}

HxOrientation HxOrientation::operator*(const HxOrientation& o) const {
  const double w1 = q_[0], x1 = q_[1], y1 = q_[2], z1 = q_[3];
  const double w2 = o.q_[0], x2 = o.q_[1], y2 = o.q_[2], z2 = o.q_[3];
  return HxOrientation(w1 * w2 - x1 * x2 - y1 * y2 - z1 * z2, w1 * x2 + x1 * w2 + y1 * z2 - z1 * y2,
                       w1 * y2 - x1 * z2 + y1 * w2 + z1 * x2, w1 * z2 + x1 * y2 - y1 * x2 + z1 * w2);
}

HxOrientation HxOrientation::conjugate() const { return HxOrientation(q_[0], -q_[1], -q_[2], -q_[3]); }

HxOrientation HxOrientation::normalized() const {
  const double n = std::sqrt(q_[0] * q_[0] + q_[1] * q_[1] + q_[2] * q_[2] + q_[3] * q_[3]);
  if (n == 0.0 || !std::isfinite(n)) return HxOrientation();
  return HxOrientation(q_[0] / n, q_[1] / n, q_[2] / n, q_[3] / n);
}

HxVector HxOrientation::rotate(const HxVector& v) const {
  // v' = v + 2w (u x v) + 2 u x (u x v), u the vector part.
  const HxVector u(q_[1], q_[2], q_[3]);
  const HxVector t = u.cross(v) * 2.0;
  return v + t * q_[0] + u.cross(t);
}

HxCoordSystemXform HxCoordSystemXform::operator*(const HxCoordSystemXform& inner) const {
  return HxCoordSystemXform(transformPoint(inner.translation_), orientation_ * inner.orientation_);
}

HxVector HxCoordSystemXform::transformPoint(const HxVector& p) const { return translation_ + orientation_.rotate(p); }
