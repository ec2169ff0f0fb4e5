#pragma once
/// \file
/// HxCapturePlan: a whole configuration's capture, worked out once and run per sample.

#include <memory>
#include <vector>

#include "analysis/capture/HxManipulatorDataCapture.h"
#include "analysis/types/HxJointRow.h"
#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxTypes.h"

class HxDataCaptureType;
class HxLinkDataCapture;
class HxSystemSimulation;

/// The capture of a configuration's manipulator captures, flattened: what
/// `HxManipulatorDataCapture::captureData` does for each of them in turn, with the same values
/// in every type and the same result, but read at a cost close to copying the values.
///
/// - The values of every type are moved side by side into one block, in the order a sample
///   lists them (`HxDataCaptureType::placeValues`), so that a record takes them with few copies.
/// - A link-level type of the library that reads a joint's value out of a per-joint row of the
///   simulation (`HxDataCaptureType::jointRowSource`) is not called: each row is read once per
///   sample and manipulator, and every joint's value is taken from it. Every other type is
///   called through `captureData`, at its place.
/// - Each link capture resolves its link as in its own `captureData` (a link it does not find
///   leaves its types untouched and fails the capture), and an end-effector capture counts only
///   its last type's result.
///
/// The plan belongs to one configuration object and holds pointers to its captures and types:
/// the owner forgets it whenever its configuration changes, and makes it again before the next
/// capture. A copy or an assignment starts with no plan.
class HxCapturePlan {
 public:
  /// The manipulator captures of a configuration.
  using ManipulatorCaptures = HxXmlVectorType<HxManipulatorDataCapture>;

  /// Nothing worked out.
  HxCapturePlan() = default;
  /// Starts with nothing worked out: what is kept describes the source's owner.
  HxCapturePlan(const HxCapturePlan&) {}
  /// Forgets what is worked out.
  HxCapturePlan& operator=(const HxCapturePlan&) {
    forget();
    return *this;
  }

  /// Drops the plan (the configuration changed). The types keep their values where they are.
  void forget() { made_ = false; }
  /// Whether the plan is worked out.
  bool made() const { return made_; }
  /// Works the plan out for `captures`, and places their types' values side by side.
  void make(const ManipulatorCaptures& captures);
  /// Captures every type of the configuration from `simulation`; the result of calling
  /// `captureData` on every manipulator capture. Does not allocate.
  HxBoolean capture(const HxSystemSimulation& simulation) const;

 private:
  enum class Level : HxU32 { Manipulator, Link, EndEffector };
  // The types of one manipulator capture's own list, of one link capture or of one end-effector
  // capture: the entries up to `end`, after those of the group before.
  struct Group {
    Level level = Level::Manipulator;
    HxU32 manipulator = 0;
    HxU32 element = 0;
    const HxLinkDataCapture* link = nullptr;
    HxU32 end = 0;
  };
  // One type: read from row `row` into `values`, or, with kCalled, called.
  struct Entry {
    const HxDataCaptureType* type = nullptr;
    double* values = nullptr;
    HxU32 row = 0;
    HxU32 width = 0;
  };
  // A row read once per sample: `reader` for manipulator `manipulator`.
  struct RowSource {
    HxJointRowReader reader = nullptr;
    HxU32 manipulator = 0;
  };
  static constexpr HxU32 kCalled = ~HxU32{0};

  // The row of `type` for manipulator `m` among those of this manipulator capture (from
  // `firstRow` on), added when new; kCalled when the type is not read by rows.
  HxU32 rowOf(const HxDataCaptureType& type, HxU32 m, std::size_t firstRow);

  std::vector<Group> groups_;
  std::vector<Entry> entries_;
  std::vector<RowSource> rowSources_;
  mutable std::vector<HxJointRow> rows_;
  std::shared_ptr<double[]> values_;
  bool made_ = false;
};
