#pragma once
/// \file
/// HxBasePowerConverter and HxDcElectricMotor: what drives a joint.

/// Base of everything that converts power to drive a joint (electric motor, hydraulic
/// actuator, ...). Handed out by a joint drive as a pointer to this base; a caller recognises
/// a particular kind by dynamic_cast.
class HxBasePowerConverter {
 public:
  /// Polymorphic base: destroyed through a pointer to it.
  virtual ~HxBasePowerConverter() = default;

 protected:
  HxBasePowerConverter() = default;
  /// For derived classes' copies.
  HxBasePowerConverter(const HxBasePowerConverter&) = default;
  /// For derived classes' assignments.
  HxBasePowerConverter& operator=(const HxBasePowerConverter&) = default;
};

/// A DC electric motor driving a joint.
class HxDcElectricMotor : public HxBasePowerConverter {
 public:
  /// A motor whose power divisor is `divisor` (1.0: an ideal motor).
  explicit HxDcElectricMotor(double divisor = 1.0) : divisor_(divisor) {}

  /// The number by which the mechanical power at the motor shaft is divided to give the
  /// motor's power: its efficiency, in (0, 1].
  double divisor() const { return divisor_; }
  /// Replaces the divisor; not checked against (0, 1].
  void setDivisor(double divisor) { divisor_ = divisor; }

 private:
  double divisor_;
};
