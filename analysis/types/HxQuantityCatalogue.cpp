#include "analysis/types/HxQuantityCatalogue.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "analysis/types/HxDataCaptureTypes.h"

namespace {
const std::string versionString("3.0.0");

// The units and frames of the columns of one kind of quantity.
struct Columns {
  std::vector<std::string> units;   // per column; empty for a joint-space quantity
  std::vector<std::string> frames;  // per column
  std::string revoluteUnit;         // joint-space quantities only
  std::string prismaticUnit;
};

std::vector<std::string> repeat(const char* text, std::size_t count) { return std::vector<std::string>(count, text); }

std::vector<std::string> join(std::initializer_list<std::vector<std::string>> parts) {
  std::vector<std::string> joined;
  for (const auto& part : parts) joined.insert(joined.end(), part.begin(), part.end());
  return joined;
}

// A placement: translation X, Y, Z, then the quaternion (w, x, y, z).
std::vector<std::string> placementUnits() { return join({repeat("m", 3), repeat("1", 4)}); }

Columns placement() { return {placementUnits(), repeat("world", 7), "", ""}; }
// A motion (linear, angular) or a wrench (force, moment), in world orientation.
Columns sixColumns(const char* first, const char* second) {
  return {join({repeat(first, 3), repeat(second, 3)}), repeat("world", 6), "", ""};
}
Columns point() { return {repeat("m", 3), repeat("world", 3), "", ""}; }
Columns power() { return {{"W"}, {""}, "", ""}; }
Columns joint(const char* revolute, const char* prismatic) { return {{}, {"joint"}, revolute, prismatic}; }
// Reached flag, translation and orientation errors, desired and actual placements, event flags.
Columns reachTarget() {
  return {join({{"1", "m", "rad"}, placementUnits(), placementUnits(), repeat("1", 3)}),
          join({repeat("", 3), repeat("world", 14), repeat("", 3)}), "", ""};
}

enum Needs { Nothing, Dynamics, DynamicsAndPower };

// A type's entry: what the type says of itself and the catalogue's own columns and needs.
struct Entry {
  HxQuantityInfo info;
  Columns columns;
};

template <class Type>
Entry entry(Columns columns, Needs needs) {
  const Type type;
  Entry made{HxQuantityInfo(), std::move(columns)};
  HxQuantityInfo& info = made.info;
  info.token = type.token();
  info.name = std::string(info.token.localName());
  info.description = type.description();
  info.level = type.type();
  for (HxU32 c = 0; c < type.dataSize(); ++c) info.columnLabels.push_back(type.label(c));
  info.readableFromFile = HxDataCaptureTypeVector().creatorMap().count(info.token) > 0;
  info.needsDynamics = needs != Nothing;
  info.needsPowerData = needs == DynamicsAndPower;
  return made;
}

}  // namespace

std::string HxQuantityInfo::unit(HxU32 column, HxJointKind kind) const {
  if (column >= columnLabels.size()) return "";
  if (!revoluteUnit_.empty()) {
    if (kind == HxJointKind::Revolute) return revoluteUnit_;
    if (kind == HxJointKind::Prismatic) return prismaticUnit_;
    return "";
  }
  return column < units_.size() ? units_[column] : "";
}

std::string HxQuantityInfo::frame(HxU32 column) const {
  return column < columnLabels.size() && column < frames_.size() ? frames_[column] : "";
}

const std::vector<HxQuantityInfo>& hxQuantityCatalogue() {
  static const std::vector<HxQuantityInfo> catalogue = [] {
    const Entry entries[] = {
        entry<HxBaseAccelerationDataCaptureType>(sixColumns("m/s^2", "rad/s^2"), Dynamics),
        entry<HxBasePositionDataCaptureType>(placement(), Nothing),
        entry<HxBaseVelocityDataCaptureType>(sixColumns("m/s", "rad/s"), Nothing),
        entry<HxCenterOfMassDataCaptureType>(point(), Nothing),
        entry<HxManipulatorPowerDataCaptureType>(power(), DynamicsAndPower),
        entry<HxControlInputDataCaptureType>(joint("N m", "N"), Dynamics),
        entry<HxControlOutputActualJointVelocityDataCaptureType>(joint("rad/s", "m/s"), Nothing),
        entry<HxControlOutputJointVelocityDataCaptureType>(joint("rad/s", "m/s"), Nothing),
        entry<HxControlOutputJointPositionDataCaptureType>(joint("rad", "m"), Nothing),
        entry<HxControlTorqueDataCaptureType>(joint("N m", "N"), Dynamics),
        entry<HxExternalForceDataCaptureType>(sixColumns("N", "N m"), Dynamics),
        entry<HxJointAccelerationDataCaptureType>(joint("rad/s^2", "m/s^2"), Dynamics),
        entry<HxJointPositionDataCaptureType>(joint("rad", "m"), Nothing),
        entry<HxJointTorqueDataCaptureType>(joint("N m", "N"), Dynamics),
        entry<HxJointVelocityDataCaptureType>(joint("rad/s", "m/s"), Nothing),
        entry<HxMotorPowerDataCaptureType>(power(), DynamicsAndPower),
        entry<HxStructuralForceDataCaptureType>(sixColumns("N", "N m"), Dynamics),
        entry<HxEndEffectorAccelerationDataCaptureType>(sixColumns("m/s^2", "rad/s^2"), Dynamics),
        entry<HxEndEffectorPlacementDataCaptureType>(placement(), Nothing),
        entry<HxEndEffectorVelocityDataCaptureType>(sixColumns("m/s", "rad/s"), Nothing),
        entry<HxReachTargetDataCaptureType>(reachTarget(), Nothing),
    };
    std::vector<HxQuantityInfo> list;
    for (const Entry& made : entries) {
      HxQuantityInfo info = made.info;
      info.units_ = made.columns.units;
      info.frames_ = made.columns.frames;
      info.revoluteUnit_ = made.columns.revoluteUnit;
      info.prismaticUnit_ = made.columns.prismaticUnit;
      list.push_back(std::move(info));
    }
    std::sort(list.begin(), list.end(),
              [](const HxQuantityInfo& a, const HxQuantityInfo& b) { return a.name < b.name; });
    return list;
  }();
  return catalogue;
}

const HxQuantityInfo* hxFindQuantity(const std::string& tokenOrLocalName) {
  for (const HxQuantityInfo& info : hxQuantityCatalogue()) {
    if (info.token == tokenOrLocalName || info.name == tokenOrLocalName) return &info;
  }
  return nullptr;
}
