// Counts heap allocations made through the global operator new, for tests and benchmarks that pin
// down "this path does not allocate".
//
// Linking hx::test_support and using HxAllocationCounter is all it takes: the counter's functions
// live in the same unit as the replacement operator new/delete, so a program that uses the counter
// pulls the replacements in with it. A program that does not use it keeps the standard ones.
//
// Usage:
//     HxAllocationCounter counter;            // starts counting here
//     writer.writeScalar(...);
//     EXPECT_EQ(counter.allocations(), 0u);   // operator new calls since start
//
// The count is process-wide (all threads), so keep other threads quiet while a counter is in use.
#ifndef HX_ALLOCATION_COUNTER_H
#define HX_ALLOCATION_COUNTER_H

#include <cstdint>

/// Scope that reports how many allocations happened since it was created (or since the last
/// restart()). Never fails.
class HxAllocationCounter {
 public:
  HxAllocationCounter() { restart(); }

  /// Starts counting again from now.
  void restart() {
    startAllocations_ = total();
    startBytes_ = totalBytes();
  }

  /// Number of operator new calls since the start.
  std::uint64_t allocations() const { return total() - startAllocations_; }

  /// Bytes requested through operator new since the start.
  std::uint64_t bytes() const { return totalBytes() - startBytes_; }

  /// Operator new calls since program start.
  static std::uint64_t total();

  /// Bytes requested through operator new since program start.
  static std::uint64_t totalBytes();

 private:
  std::uint64_t startAllocations_ = 0;
  std::uint64_t startBytes_ = 0;
};

#endif  // HX_ALLOCATION_COUNTER_H
