#pragma once
// HxRecordProgressBar: the progress bar hxrecord draws on a terminal while it records.

#include <iosfwd>

/// Draws "hxrecord [#####.....]  42%  3.36 / 8 s" on `out`, redrawn in place when the
/// percentage changes.
class HxRecordProgressBar {
 public:
  explicit HxRecordProgressBar(std::ostream& out) : out_(out) {}
  /// Shows `simulated` seconds of `total`.
  void update(double simulated, double total);
  /// Removes the bar so that the next output starts on a clean line.
  void clear();

 private:
  static constexpr int kWidth = 40;
  std::ostream& out_;
  int percent_ = -1;
  bool drawn_ = false;
};
