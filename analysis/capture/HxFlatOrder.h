#pragma once
/// \file
/// The flat order of a sample, written once for every walk over captures and records.

#include "analysis/types/HxDataCaptureLevel.h"
#include "framework/HxTypes.h"

/// Where one captured quantity sits in a sample.
struct HxFlatPosition {
  /// Its level, an `HxDataCaptureLevel` code.
  HxU32 level = HxDataCaptureLevel::Manipulator;
  /// Position of its manipulator capture in the configuration, which is also the position of
  /// that manipulator's storage in a sample record.
  HxU32 manipulator = 0;
  /// Position of its link or end-effector capture (or storage) within the manipulator's list of
  /// them; 0 at manipulator level.
  HxU32 element = 0;
  /// Position of the quantity within its list.
  HxU32 quantity = 0;
};

/// The flat order of a sample: the time and the path-point index, then per manipulator, in list
/// order, its manipulator-level quantities, then those of each of its links in list order, then
/// those of each of its end effectors in list order; every quantity with its values in order.
/// Labels, captured values, the record's values and the element count all follow it, and all
/// walk it through these templates. They take the visitor as a template argument and allocate
/// nothing, so that they serve the per-sample path.
namespace HxFlatOrder {

/// Visits the entries of one manipulator in flat order: `visit(level, position, entry)` for its
/// manipulator-level entry `own` (position 0), then for every entry of `links`, then for every
/// entry of `endEffectors`, with the entry's position in its list. The lists need `size()` and
/// `operator[]` only; the entries are whatever the caller keeps per level (a capture, a list of
/// types, a list of value vectors).
template <class Own, class Links, class EndEffectors, class Visit>
void forEachLevelEntry(Own& own, Links& links, EndEffectors& endEffectors, Visit&& visit) {
  visit(HxDataCaptureLevel::Manipulator, HxU32{0}, own);
  for (HxU32 l = 0; l < links.size(); ++l) visit(HxDataCaptureLevel::Link, l, links[l]);
  for (HxU32 e = 0; e < endEffectors.size(); ++e) visit(HxDataCaptureLevel::EndEffector, e, endEffectors[e]);
}

/// The entries of one manipulator capture: the capture itself (for its manipulator-level
/// types), then its link captures, then its end-effector captures. Each has `dataCaptureVector()`.
template <class ManipulatorCapture, class Visit>
void forEachCaptureEntry(const ManipulatorCapture& capture, Visit&& visit) {
  forEachLevelEntry(capture, capture.linkDataCaptureVector(), capture.endEffectorDataCaptureVector(), visit);
}

/// Every data capture type of a list of manipulator captures, in flat order:
/// `visit(const HxFlatPosition&, const HxDataCaptureType&)`. Each type is looked up once.
template <class ManipulatorCaptures, class Visit>
void forEachCapturedType(const ManipulatorCaptures& captures, Visit&& visit) {
  for (HxU32 m = 0; m < captures.size(); ++m) {
    forEachCaptureEntry(captures[m], [&](HxU32 level, HxU32 element, const auto& entry) {
      const auto& types = entry.dataCaptureVector();
      const HxU32 count = types.size();
      for (HxU32 i = 0; i < count; ++i) visit(HxFlatPosition{level, m, element, i}, types[i]);
    });
  }
}

}  // namespace HxFlatOrder
