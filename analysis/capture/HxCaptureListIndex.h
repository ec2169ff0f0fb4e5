#pragma once
/// \file
/// HxCaptureListIndex: look-ups over a configuration's list of manipulator captures, kept in
/// step with it during set-up.

#include <unordered_map>
#include <vector>

#include "analysis/capture/HxManipulatorDataCapture.h"
#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxTypes.h"

/// What `HxSystemDataCapture` looks up while it is configured, kept beside its list of
/// manipulator captures so that adding a type for the thousandth manipulator costs what it
/// does for the first: the position of the last capture of each manipulator index (the one its
/// keyed operations act on), and the element count of each capture with their sum.
///
/// The owner tells it what changed (`appended`, `changed`) or, for anything else, that the list
/// changed (`forget`); the look-ups are then rebuilt from the list on their next use. Answers
/// are those of walking the whole list. A copy or an assignment starts with nothing kept.
class HxCaptureListIndex {
 public:
  /// The manipulator captures of a configuration.
  using Captures = HxXmlVectorType<HxManipulatorDataCapture>;

  /// Nothing kept.
  HxCaptureListIndex() = default;
  /// Starts with nothing kept: what is kept describes the source's owner.
  HxCaptureListIndex(const HxCaptureListIndex&) {}
  /// Forgets what is kept.
  HxCaptureListIndex& operator=(const HxCaptureListIndex&) {
    forget();
    return *this;
  }

  /// The list changed in some other way: everything is rebuilt on next use.
  void forget() {
    positionsKept_ = false;
    sizesKept_ = false;
  }
  /// A capture was appended to `captures`.
  void appended(const Captures& captures);
  /// The types of the capture at `position` changed.
  void changed(HxU32 position);

  /// Position of the last capture of manipulator `m` in `captures`; false (position untouched)
  /// when there is none.
  bool find(const Captures& captures, HxU32 m, unsigned int& position);
  /// The full size of every type of `captures`, disabled columns included.
  HxU32 elementCount(const Captures& captures);

 private:
  static constexpr HxU32 kNone = 0xFFFFFFFFu;

  bool positionsKept_ = false;
  std::unordered_map<HxU32, HxU32> lastPosition_;
  bool sizesKept_ = false;
  std::vector<HxU32> sizes_;
  HxU32 total_ = 0;
  // The one capture whose size changed since the last count (kNone: none).
  HxU32 changed_ = kNone;
};
