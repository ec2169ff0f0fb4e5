#pragma once
/// \file
/// HxIndividualManipulator: one manipulator's model (links, end effectors, joint drives and
/// kinematics), with HxLink and HxJointDrive.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "framework/HxToken.h"
#include "framework/HxTypes.h"
#include "simulation/HxBasePowerConverter.h"
#include "simulation/HxEndEffector.h"
#include "simulation/HxEndEffectorPlacement.h"
#include "simulation/HxManipulatorKinematics.h"
#include "simulation/HxMath.h"

class HxManipulatorActiveState;

/// One link of a manipulator: its identifier (unique within the manipulator) and its index,
/// the joint/link index under which its per-joint data is held.
class HxLink {
 public:
  /// Empty identifier, index 0.
  HxLink() = default;
  /// The link `identifier` whose per-joint data is held at `index`; neither is checked.
  HxLink(std::string identifier, HxU32 index) : identifier_(std::move(identifier)), index_(index) {}

  /// Identifier of the link, unique within its manipulator.
  const std::string& identifier() const { return identifier_; }
  /// Joint/link index under which the link's per-joint data is held.
  HxU32 index() const { return index_; }

 private:
  std::string identifier_;
  HxU32 index_ = 0;
};

/// The drive of one joint: the scale factor between joint and drive motion (a gear ratio:
/// drive speed = scaleFactor() * joint speed) and the power converter that drives it.
class HxJointDrive {
 public:
  /// Ratio 1, no power converter.
  HxJointDrive() = default;
  /// A drive of ratio `scaleFactor` with `converter` (null: none); the converter is shared, not
  /// copied.
  explicit HxJointDrive(double scaleFactor, std::shared_ptr<const HxBasePowerConverter> converter = nullptr)
      : scaleFactor_(scaleFactor), converter_(std::move(converter)) {}

  /// Drive speed per unit of joint speed.
  double scaleFactor() const { return scaleFactor_; }
  /// The power converter driving the joint, or null when there is none.
  const HxBasePowerConverter* powerConverter() const { return converter_.get(); }

  /// Replaces the ratio; not checked.
  void setScaleFactor(double scaleFactor) { scaleFactor_ = scaleFactor; }
  /// Replaces the power converter (null: none); the converter is shared, not copied.
  void setPowerConverter(std::shared_ptr<const HxBasePowerConverter> converter) { converter_ = std::move(converter); }

 private:
  double scaleFactor_ = 1.0;
  std::shared_ptr<const HxBasePowerConverter> converter_;
};

/// The model of one manipulator: its links (by position and by identifier), its end
/// effectors, its joint drives, and the kinematics that answer placement, velocity,
/// acceleration and centre-of-mass queries for a given active state.
///
/// Copies share the kinematics and the power converters (both immutable through this class).
/// The queries are const and do not allocate.
class HxIndividualManipulator {
 public:
  /// No links, joints or end effectors, and no kinematics: every kinematic query answers the
  /// identity placement, zero motion or zero vector (and the kinematics reports false).
  HxIndividualManipulator();
  /// As above, with the given kinematics (null selects the default one).
  explicit HxIndividualManipulator(std::shared_ptr<const HxManipulatorKinematics> kinematics);

  /// Name of the manipulator (for messages and engines); empty by default.
  const std::string& name() const { return name_; }
  /// Replaces the name.
  void setName(const std::string& name) { name_ = name; }

  // Links.

  /// Number of link positions (including positions without a link).
  HxU32 numberOfLinks() const { return static_cast<HxU32>(links_.size()); }
  /// The link at `position`, or null when the position is past the end or holds no link.
  const HxLink* link(HxU32 position) const;
  /// The first link whose identifier equals `identifier`, or null when there is none.
  const HxLink* findLink(const std::string& identifier) const;
  /// Appends a link position holding `link`.
  void addLink(const HxLink& link) {
    links_.emplace_back(link);
    linksStamp_.renew();
  }
  /// Appends a link position that holds no link (link(position) gives null).
  void addAbsentLink() {
    links_.emplace_back(std::nullopt);
    linksStamp_.renew();
  }
  /// Removes every link position.
  void clearLinks() {
    links_.clear();
    linksStamp_.renew();
  }
  /// A number that names the current list of links: it changes whenever the list changes, a
  /// copy of the manipulator has the stamp of its source (the same links), and two lists with
  /// the same stamp are equal. Never 0. Lets a caller keep what it looked up in the links (a
  /// link's index by identifier) and know when to look again.
  std::uint64_t linksStamp() const { return linksStamp_.value; }

  // End effectors.

  /// Number of end effectors.
  HxU32 numberOfEndEffectors() const { return static_cast<HxU32>(endEffectors_.size()); }
  /// End effector `index`; `index` must be below numberOfEndEffectors() (not checked).
  const HxEndEffector& endEffector(HxU32 index) const { return endEffectors_[index]; }
  /// All end effectors, by index.
  const std::vector<HxEndEffector>& endEffectors() const { return endEffectors_; }
  /// Appends an end effector of kind `token`; returns its index.
  HxU32 addEndEffector(const HxToken& token);
  /// Changes the kind of end effector `index`; false when there is no such end effector.
  HxBoolean setEndEffectorToken(HxU32 index, const HxToken& token);

  // Joints.

  /// Number of joints (one drive per joint).
  HxU32 jointCount() const { return static_cast<HxU32>(jointDrives_.size()); }
  /// The drive of joint `jointIndex`; the index must be below jointCount() (not checked).
  const HxJointDrive& jointDrive(HxU32 jointIndex) const { return jointDrives_[jointIndex]; }
  /// The drive of joint `jointIndex`, writable; the index must be below jointCount() (not
  /// checked).
  HxJointDrive& mutableJointDrive(HxU32 jointIndex) { return jointDrives_[jointIndex]; }
  /// Sets the number of joints; new joints get a default drive (ratio 1, no converter).
  void setJointCount(HxU32 count) { jointDrives_.resize(count); }

  // Kinematics.

  /// The kinematics that answer the queries below; never null.
  const HxManipulatorKinematics& kinematics() const { return *kinematics_; }
  /// Replaces the kinematics; null selects the default one.
  void setKinematics(std::shared_ptr<const HxManipulatorKinematics> kinematics);

  /// Placement of end effector `index` for `state` (identity when it cannot be computed).
  HxEndEffectorPlacement endEffectorPlacement(HxU32 index, const HxManipulatorActiveState& state) const;
  /// Velocity of end effector `index` for `state` (zero when it cannot be computed).
  HxGeneralMotion endEffectorVelocity(HxU32 index, const HxManipulatorActiveState& state) const;
  /// Acceleration of end effector `index` for `state` (zero when it cannot be computed).
  HxGeneralMotion endEffectorAcceleration(HxU32 index, const HxManipulatorActiveState& state) const;
  /// Centre of mass of the manipulator for `state` (zero when it cannot be computed).
  HxVector centerOfMass(const HxManipulatorActiveState& state) const;

 private:
  std::string name_;
  // A stamp drawn from one process-wide counter: new on every change of links_, carried by
  // copies, and new for an object moved from (whose links are then unspecified).
  struct LinksStamp {
    std::uint64_t value = next();
    LinksStamp() = default;
    LinksStamp(const LinksStamp& other) = default;
    LinksStamp(LinksStamp&& other) noexcept : value(other.value) { other.renew(); }
    LinksStamp& operator=(const LinksStamp& other) = default;
    LinksStamp& operator=(LinksStamp&& other) noexcept {
      value = other.value;
      other.renew();
      return *this;
    }
    void renew() { value = next(); }
    static std::uint64_t next();
  };

  std::vector<std::optional<HxLink>> links_;
  LinksStamp linksStamp_;
  std::vector<HxEndEffector> endEffectors_;
  std::vector<HxJointDrive> jointDrives_;
  std::shared_ptr<const HxManipulatorKinematics> kinematics_;
};
