#pragma once
/// \file
/// Small value types of the simulation's mathematics: HxVector, HxOrientation,
/// HxGeneralMotion, HxGeneralForce and HxCoordSystemXform.
///
/// Conventions (see simulation/README.md): SI units, right-handed frames, quaternions
/// stored as (w, x, y, z) with the scalar part first.

#include <array>

#include "framework/HxTypes.h"

/// A vector (or point) of three doubles X, Y, Z.
class HxVector {
 public:
  /// The zero vector.
  HxVector() = default;
  /// The vector (x, y, z).
  HxVector(double x, double y, double z) : v_{x, y, z} {}

  /// Component X.
  double x() const { return v_[0]; }
  /// Component Y.
  double y() const { return v_[1]; }
  /// Component Z.
  double z() const { return v_[2]; }

  /// Component 0 (X), 1 (Y) or 2 (Z); the index is not checked.
  double operator[](HxU32 i) const { return v_[i]; }
  /// Component `i` (0 X, 1 Y, 2 Z), writable; the index is not checked.
  double& operator[](HxU32 i) { return v_[i]; }

  /// Euclidean distance between this point and `other`.
  double distanceTo(const HxVector& other) const;
  /// Euclidean length.
  double norm() const;
  /// Dot product with `other`.
  double dot(const HxVector& other) const;
  /// Cross product, this vector times `other` (right-handed).
  HxVector cross(const HxVector& other) const;

  /// Component-wise sum.
  HxVector operator+(const HxVector& other) const;
  /// Component-wise difference, this vector minus `other`.
  HxVector operator-(const HxVector& other) const;
  /// Every component multiplied by `factor`.
  HxVector operator*(double factor) const;

  /// Exact component-wise equality.
  bool operator==(const HxVector& other) const { return v_ == other.v_; }
  /// Negation of `operator==`.
  bool operator!=(const HxVector& other) const { return v_ != other.v_; }

 private:
  std::array<double, 3> v_{0.0, 0.0, 0.0};
};

/// An orientation held as a unit quaternion.
///
/// Component order is (w, x, y, z): operator[](0) is the scalar part w, operator[](1..3) the
/// vector part x, y, z. This is the order in which captured orientation columns
/// "Quaternion 0" to "Quaternion 3" appear, and the order MuJoCo uses, so engine quaternions
/// are copied without reordering. The constructor stores the components as given; use
/// normalized() when they may not be of unit length.
class HxOrientation {
 public:
  /// The identity orientation (1, 0, 0, 0).
  HxOrientation() = default;
  /// The quaternion (w, x, y, z), stored as given (not normalised).
  HxOrientation(double w, double x, double y, double z) : q_{w, x, y, z} {}

  /// The rotation by `angle` radians about `axis` (any non-zero length); the identity when
  /// the axis is zero.
  static HxOrientation fromAxisAngle(const HxVector& axis, double angle);

  /// Scalar part w.
  double w() const { return q_[0]; }
  /// Vector part x.
  double x() const { return q_[1]; }
  /// Vector part y.
  double y() const { return q_[2]; }
  /// Vector part z.
  double z() const { return q_[3]; }

  /// Component 0 (w), 1 (x), 2 (y) or 3 (z); the index is not checked.
  double operator[](HxU32 i) const { return q_[i]; }
  /// Component `i` (0 w, 1 x, 2 y, 3 z), writable; the index is not checked.
  double& operator[](HxU32 i) { return q_[i]; }

  /// Rotation angle (radians, in [0, pi]) and unit axis of the rotation that takes this
  /// orientation to `other`, expressed in the world frame: other = R(axis, angle) * this.
  /// q and -q are the same orientation and give angle 0. When the rotation is below rounding
  /// level (about 1e-15 rad) or a quaternion is zero or not finite, the angle is 0 and the axis
  /// (1, 0, 0). The inputs need not be exactly of unit length.
  void angleAxisBetween(const HxOrientation& other, double& angle, HxVector& axis) const;

  /// Hamilton product: the rotation `other` followed by this one.
  HxOrientation operator*(const HxOrientation& other) const;
  /// The inverse rotation of a unit quaternion (w, -x, -y, -z).
  HxOrientation conjugate() const;
  /// This quaternion scaled to unit length; the identity if it is zero.
  HxOrientation normalized() const;
  /// `v` rotated by this orientation (assumed of unit length).
  HxVector rotate(const HxVector& v) const;

  /// Component-wise equality (q and -q compare unequal; use angleAxisBetween to compare
  /// orientations).
  bool operator==(const HxOrientation& other) const { return q_ == other.q_; }
  /// Negation of `operator==`.
  bool operator!=(const HxOrientation& other) const { return q_ != other.q_; }

 private:
  std::array<double, 4> q_{1.0, 0.0, 0.0, 0.0};
};

/// Six doubles, components 0-2 and 3-5 being the two three-vector parts of a motion or a wrench:
/// the storage, construction and comparison shared by HxGeneralMotion and HxGeneralForce.
/// `Derived` is the class built on it, so that only two objects of the same class compare.
template <class Derived>
class HxSpatialVector {
 public:
  /// All zero.
  HxSpatialVector() = default;
  /// The six components in order: the first part (a0, a1, a2), then the second (b0, b1, b2).
  HxSpatialVector(double a0, double a1, double a2, double b0, double b1, double b2) : v_{a0, a1, a2, b0, b1, b2} {}
  /// Components 0-2 from `a`, 3-5 from `b`.
  HxSpatialVector(const HxVector& a, const HxVector& b) : v_{a[0], a[1], a[2], b[0], b[1], b[2]} {}

  /// Component 0 to 5; the index is not checked.
  double operator[](HxU32 i) const { return v_[i]; }
  /// Component `i` (0 to 5), writable; the index is not checked.
  double& operator[](HxU32 i) { return v_[i]; }

  /// Number of components (6).
  static constexpr HxU32 size() { return 6; }

  /// Exact component-wise equality.
  bool operator==(const Derived& other) const { return v_ == other.v_; }
  /// Negation of `operator==`.
  bool operator!=(const Derived& other) const { return v_ != other.v_; }

 protected:
  /// Components 0-2.
  HxVector head() const { return HxVector(v_[0], v_[1], v_[2]); }
  /// Components 3-5.
  HxVector tail() const { return HxVector(v_[3], v_[4], v_[5]); }

 private:
  std::array<double, 6> v_{0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
};

/// A six-component motion (velocity or acceleration): components 0-2 linear X, Y, Z,
/// components 3-5 angular X, Y, Z. Default: all zero. Constructed from the six components
/// (linear X, Y, Z, angular X, Y, Z) or from the linear and the angular part.
class HxGeneralMotion : public HxSpatialVector<HxGeneralMotion> {
 public:
  using HxSpatialVector::HxSpatialVector;

  /// Linear part, components 0-2.
  HxVector linear() const { return head(); }
  /// Angular part, components 3-5.
  HxVector angular() const { return tail(); }
};

/// A six-component wrench: components 0-2 force X, Y, Z, components 3-5 moment X, Y, Z.
/// Default: all zero. Constructed from the six components (force X, Y, Z, moment X, Y, Z) or
/// from the force and the moment part.
class HxGeneralForce : public HxSpatialVector<HxGeneralForce> {
 public:
  using HxSpatialVector::HxSpatialVector;

  /// Force part, components 0-2.
  HxVector force() const { return head(); }
  /// Moment part, components 3-5.
  HxVector moment() const { return tail(); }
};

/// A coordinate-system transformation (placement of a frame): a translation followed by an
/// orientation. A point p given in the frame is at translation() + orientation().rotate(p)
/// in the reference frame. Default: identity.
class HxCoordSystemXform {
 public:
  HxCoordSystemXform() = default;
  /// The placement with that translation and orientation.
  HxCoordSystemXform(const HxVector& translation, const HxOrientation& orientation)
      : translation_(translation), orientation_(orientation) {}

  /// Origin of the frame in the reference frame.
  const HxVector& translation() const { return translation_; }
  /// Orientation of the frame relative to the reference frame.
  const HxOrientation& orientation() const { return orientation_; }
  /// Replaces the translation.
  void setTranslation(const HxVector& translation) { translation_ = translation; }
  /// Replaces the orientation.
  void setOrientation(const HxOrientation& orientation) { orientation_ = orientation; }

  /// Composition: the placement of a frame given relative to this frame by `inner`, expressed
  /// in this frame's reference frame (world_T_inner = this * inner).
  HxCoordSystemXform operator*(const HxCoordSystemXform& inner) const;
  /// The point `p`, given in this frame, expressed in the reference frame.
  HxVector transformPoint(const HxVector& p) const;

  /// Exact equality of translation and orientation components.
  bool operator==(const HxCoordSystemXform& other) const {
    return translation_ == other.translation_ && orientation_ == other.orientation_;
  }
  /// Negation of `operator==`.
  bool operator!=(const HxCoordSystemXform& other) const { return !(*this == other); }

 private:
  HxVector translation_;
  HxOrientation orientation_;
};
