#include "analysis/capture/HxColumnDescription.h"

#include <string>
#include <utility>
#include <vector>

#include "analysis/capture/HxFlatOrder.h"
#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/types/HxForcePowerDataCaptureTypes.h"
#include "analysis/types/HxQuantityCatalogue.h"
#include "framework/HxNumberText.h"
#include "simulation/HxBasePowerConverter.h"
#include "simulation/HxSystemSimulation.h"

namespace {
const std::string versionString("3.0.0");

// What the columns of one manipulator, link or end-effector entry share.
struct EntryContext {
  HxColumnDescription common;  // level, indices, names
  std::string prefix;          // of the labels
  HxJointKind jointKind = HxJointKind::Unknown;
  const HxJointDrive* drive = nullptr;  // link level: the joint's drive, when the simulation has it
  bool present = true;                  // the simulation has the manipulator, link or end effector
};

EntryContext entryContext(const HxManipulatorDataCapture& capture, const HxFlatPosition& at,
                          const HxSystemSimulation* simulation) {
  EntryContext context;
  HxColumnDescription& common = context.common;
  common.level = static_cast<int>(at.level);
  common.manipulatorIndex = capture.manipulatorIndex();
  const HxU32 m = common.manipulatorIndex;
  const HxIndividualManipulator* manipulator = nullptr;
  if (simulation != nullptr) {
    if (m < simulation->manipulators().size()) manipulator = &simulation->manipulators()[m];
    context.present = manipulator != nullptr;
    if (manipulator != nullptr) common.manipulatorName = manipulator->name();
  }

  // The prefix as the label list builds it.
  context.prefix.assign("Manip[").append(HxINT2STRING(m, 10)).append("]:");
  if (at.level == HxDataCaptureLevel::Link) {
    common.linkIdentifier = capture.linkDataCaptureVector()[at.element].linkIdentifier();
    context.prefix.append(common.linkIdentifier).append(":");
    const HxLink* link = manipulator != nullptr ? manipulator->findLink(common.linkIdentifier) : nullptr;
    if (link != nullptr) {
      context.jointKind = simulation->jointKind(m, link->index());
      if (link->index() < manipulator->jointCount()) context.drive = &manipulator->jointDrive(link->index());
    } else if (simulation != nullptr) {
      context.present = false;
    }
  } else if (at.level == HxDataCaptureLevel::EndEffector) {
    common.endEffectorIndex = capture.endEffectorDataCaptureVector()[at.element].endEffectorIndex();
    context.prefix.append("EE[").append(HxINT2STRING(common.endEffectorIndex, 10)).append("]:");
    if (manipulator != nullptr) {
      common.endEffectorName = simulation->endEffectorName(m, common.endEffectorIndex);
      context.present = common.endEffectorIndex < manipulator->numberOfEndEffectors();
    }
  }
  return context;
}

// Whether the simulation computes the quantity `type` of the entry.
bool isComputed(const HxDataCaptureType& type, const HxQuantityInfo* info, const EntryContext& context,
                const HxSystemSimulation* simulation) {
  if (simulation == nullptr) return true;
  if (!context.present) return false;
  if (info != nullptr && info->needsDynamics && !simulation->dynamicsEnabled()) return false;
  if (info != nullptr && info->needsPowerData && !simulation->powerDataAvailable()) return false;
  if (type.token() == HxMotorPowerDataCaptureType::classToken()) {
    return context.drive != nullptr && dynamic_cast<const HxDcElectricMotor*>(context.drive->powerConverter());
  }
  return true;
}

HxColumnDescription leadingColumn(const char* label, const char* quantity, const char* unit) {
  HxColumnDescription column;
  column.label = label;
  column.quantity = quantity;
  column.description = label;
  column.component = label;
  column.unit = unit;
  return column;
}

}  // namespace

std::vector<HxColumnDescription> hxDescribeColumns(const HxSystemDataCapture& capture,
                                                   const HxSystemSimulation* simulation) {
  std::vector<HxColumnDescription> columns;
  columns.push_back(leadingColumn("Time", "time", "s"));
  columns.push_back(leadingColumn("Point Path Index", "pathPointIndex", "1"));

  const HxSystemDataCapture::ManipulatorDataCaptureVector& captures = capture.manipulatorDataCaptureVector();
  EntryContext context;
  HxFlatOrder::forEachCapturedType(captures, [&](const HxFlatPosition& at, const HxDataCaptureType& type) {
    if (at.quantity == 0) context = entryContext(captures[at.manipulator], at, simulation);
    const HxQuantityInfo* info = hxFindQuantity(type.token());
    const bool computed = isComputed(type, info, context, simulation);
    const HxDataCaptureType::FlagVector& flags = type.disableFlags();
    const HxU32 size = type.dataSize();
    for (HxU32 j = 0; j < size; ++j) {
      if (j < flags.size() && flags[j].value()) continue;
      HxColumnDescription column = context.common;
      // A type one column wide is labelled by its description alone.
      column.label = context.prefix + type.description();
      if (size > 1) column.label.append(":").append(type.label(j));
      column.quantity = std::string(type.token().localName());
      column.description = type.description();
      column.componentIndex = j;
      column.component = type.label(j);
      if (info != nullptr) {
        column.unit = info->unit(j, context.jointKind);
        column.frame = info->frame(j);
      }
      column.computed = computed;
      columns.push_back(std::move(column));
    }
  });
  return columns;
}
