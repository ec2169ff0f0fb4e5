#pragma once
/// \file
/// HxQuantityCatalogue: what each captured quantity is (columns, units, frames, what it needs
/// from the simulation), for people and tools that read recordings.

#include <string>
#include <vector>

#include "framework/HxToken.h"
#include "framework/HxTypes.h"
#include "simulation/HxJointKind.h"

/// One captured quantity (one data capture type) as a reader of a recording sees it.
///
/// Token, description, level and column labels are taken from the type itself, and whether a
/// configuration file can name it from the type list's creators, so they always agree with the
/// types. Units, frames and what the type needs from the simulation are the catalogue's own.
///
/// Units are SI texts ("s", "m", "rad", "m/s", "rad/s^2", "N", "N m", "W"; "1" for dimensionless
/// columns: quaternion components, flags, counts). Joint-space quantities have the unit of their
/// joint's kind, and none ("") when the kind is unknown. Frames are "world" (world orientation),
/// "joint" (joint space) or "" (no frame: power, flags, errors). Quaternions are (w, x, y, z):
/// "Quaternion 0" is w.
struct HxQuantityInfo {
  /// The type's full token (namespace and local name).
  HxToken token;
  /// The local name, e.g. "jointPositionDataCaptureType".
  std::string name;
  /// The type's description, e.g. "Joint Positions".
  std::string description;
  /// The level at which the type is captured, an `HxDataCaptureLevel` code.
  HxU32 level = 0;
  /// The type's column labels, in column order.
  std::vector<std::string> columnLabels;
  /// True when a configuration file can name the type (the type list reads it).
  bool readableFromFile = false;
  /// True when the type records values only while the simulation integrates the dynamics
  /// (`dynamicsEnabled()`); otherwise its columns hold zeros.
  bool needsDynamics = false;
  /// True when the type also needs the simulation's power data (`powerDataAvailable()`).
  bool needsPowerData = false;

  /// The unit of column `column` for a quantity of a joint of kind `kind` (the kind matters only
  /// for joint-space quantities); "" for a column past the last or a joint quantity of an
  /// unknown kind.
  std::string unit(HxU32 column, HxJointKind kind) const;
  /// The frame of column `column`: "world", "joint" or ""; "" for a column past the last.
  std::string frame(HxU32 column) const;

 private:
  friend const std::vector<HxQuantityInfo>& hxQuantityCatalogue();
  // Per column: its unit when it does not depend on the joint, and its frame.
  std::vector<std::string> units_;
  std::vector<std::string> frames_;
  // Joint-space quantities: the unit of a revolute and of a prismatic joint (empty otherwise).
  std::string revoluteUnit_;
  std::string prismaticUnit_;
};

/// Every one of the 21 data capture types, sorted by local name; built once, on first use.
const std::vector<HxQuantityInfo>& hxQuantityCatalogue();

/// The catalogue entry whose full token or local name is `tokenOrLocalName`; null when none is.
const HxQuantityInfo* hxFindQuantity(const std::string& tokenOrLocalName);
