#pragma once
/// \file
/// HxJointRow: one link-level quantity of every joint of a manipulator, where a simulation
/// holds it.

#include <typeinfo>
#include <vector>

#include "framework/HxTypes.h"
#include "simulation/HxMath.h"

class HxSystemSimulation;

/// One link-level quantity for all joints of one manipulator, as the simulation holds it at the
/// moment: one double per joint, or one wrench (six values) per joint. A capture of many
/// link-level types reads each row once per sample and every type's value out of it, instead of
/// calling each type's `captureData`; both give the same values and results, since the types'
/// own `captureData` reads through the same row.
struct HxJointRow {
  /// What the row holds.
  enum class Kind : HxU32 {
    Doubles,  ///< `doubles[j]` is joint j's value
    Forces,   ///< `forces[j]` is joint j's wrench
    Absent,   ///< the simulation does not provide the quantity now: a capture fails
    Call,     ///< the quantity is not a plain read now (it keeps history): ask `captureData`
  };

  /// What the row holds.
  Kind kind = Kind::Absent;
  /// Number of joints in the row.
  HxU32 count = 0;
  /// The values, with `Kind::Doubles`.
  const double* doubles = nullptr;
  /// The wrenches, with `Kind::Forces`.
  const HxGeneralForce* forces = nullptr;

  /// A row of one double per joint.
  static HxJointRow of(const std::vector<double>& values) {
    return HxJointRow{Kind::Doubles, static_cast<HxU32>(values.size()), values.data(), nullptr};
  }
  /// A row of one wrench per joint.
  static HxJointRow of(const std::vector<HxGeneralForce>& wrenches) {
    return HxJointRow{Kind::Forces, static_cast<HxU32>(wrenches.size()), nullptr, wrenches.data()};
  }
  /// A row of what the simulation does not provide now.
  static HxJointRow absent() { return HxJointRow{}; }
  /// A row that only `captureData` can read.
  static HxJointRow call() { return HxJointRow{Kind::Call, 0, nullptr, nullptr}; }

  /// Joint `j`'s entry of `perManipulator[m]`'s row, picked by `select`; absent when `m` is out
  /// of range.
  template <class Entry, class Select>
  static HxJointRow at(const std::vector<Entry>& perManipulator, HxU32 m, Select select) {
    return m < perManipulator.size() ? of(select(perManipulator[m])) : absent();
  }

  /// Reads joint `j` into `out` as a capture does: one value from a row of doubles, six from a
  /// row of wrenches. False, and `out` left alone, when `j` is out of range or the row is
  /// absent (the caller has already set its values to zero). Not for a `Kind::Call` row.
  bool read(HxU32 j, double* out) const {
    if (j >= count) return false;
    if (kind == Kind::Doubles) {
      out[0] = doubles[j];
      return true;
    }
    if (kind == Kind::Forces) {
      const HxGeneralForce& wrench = forces[j];
      for (HxU32 k = 0; k < 6; ++k) out[k] = wrench[k];
      return true;
    }
    return false;
  }
  /// Number of values `read` gives per joint for a row of `kind`.
  static HxU32 widthOf(Kind kind) { return kind == Kind::Forces ? 6 : 1; }
};

/// Reads the row of one quantity for manipulator `manipulator` of `simulation`.
using HxJointRowReader = HxJointRow (*)(const HxSystemSimulation& simulation, HxU32 manipulator);

/// How the objects of one link-level class may be read a row at a time: the reader, and the
/// class it answers for. A class derived from that one may capture otherwise, so the reader
/// holds only for objects whose class is exactly `owner`.
struct HxJointRowSource {
  /// The reader; null when the type is only read through `captureData`.
  HxJointRowReader reader = nullptr;
  /// The class the reader answers for.
  const std::type_info* owner = nullptr;
  /// Values per joint: 1, or 6 for a wrench.
  HxU32 width = 0;
};
