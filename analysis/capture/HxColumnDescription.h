#pragma once
/// \file
/// HxColumnDescription: what each data column of a recording is, for people and tools that
/// read recordings.

#include <string>
#include <vector>

#include "framework/HxTypes.h"

class HxSystemDataCapture;
class HxSystemSimulation;

/// One data column of a recording: its label, the quantity it belongs to, where in the system
/// it was captured, its unit and frame, and whether the simulation computes it.
///
/// Units and frames are those of the quantity catalogue (`HxQuantityInfo::unit`, `frame`): SI
/// texts, "1" for dimensionless columns, "" when there is none (or, for a joint-space quantity,
/// when the joint's kind is not known).
struct HxColumnDescription {
  /// The column's label, as the capture's label list builds it.
  std::string label;
  /// Local token name of the quantity; "time" and "pathPointIndex" for the first two columns.
  std::string quantity;
  /// The quantity's description ("Joint Positions"); "Time" and "Point Path Index" for the first
  /// two columns.
  std::string description;
  /// The quantity's level (an `HxDataCaptureLevel` code); -1 for the first two columns.
  int level = -1;
  /// The manipulator index the quantity was captured for.
  HxU32 manipulatorIndex = 0;
  /// The manipulator's name in the simulation; empty without one.
  std::string manipulatorName;
  /// The link's identifier (link-level quantities).
  std::string linkIdentifier;
  /// The end-effector index (end-effector-level quantities).
  HxU32 endEffectorIndex = 0;
  /// The end effector's name in the simulation (end-effector-level quantities); empty without one.
  std::string endEffectorName;
  /// The column's position within its quantity's columns (disabled ones counted).
  HxU32 componentIndex = 0;
  /// The quantity's label of that column ("Translation X"); for the first two columns their label.
  std::string component;
  /// The column's unit; "" when it has none or it is not known.
  std::string unit;
  /// The column's frame: "world", "joint" or "".
  std::string frame;
  /// False when the simulation does not compute the column, so it holds zeros that are not
  /// measurements: a quantity that needs the dynamics without them, or the power data without
  /// it, motor power of a joint without a DC motor, and every column of a manipulator, link or
  /// end effector that the simulation does not have.
  bool computed = true;
};

/// Every data column of a recording made with `capture`, in file order: the time, the path-point
/// index, then the active columns in the capture's flat order (disabled columns left out,
/// exactly as the data rows hold them). The labels equal those of the capture's label list,
/// except that the list also keeps one label for a disabled one-column quantity (and ends with
/// empty labels for disabled columns), which have no data column.
///
/// With a simulation, names, the kinds of joints (so joint units) and `computed` come from it;
/// without one, names are empty, joint units are those of an unknown joint ("") and every
/// column counts as computed.
std::vector<HxColumnDescription> hxDescribeColumns(const HxSystemDataCapture& capture,
                                                   const HxSystemSimulation* simulation = nullptr);
