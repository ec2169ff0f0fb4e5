// Counts heap allocations made through the global operator new, for tests and
// benchmarks that pin down "this path does not allocate".
//
// Rule: include this header WITHOUT any macro in exactly one .cpp of an
// executable; that file then holds the replacement global operator new/delete
// (replacement functions may be defined only once per program). Any other .cpp
// of the same executable that wants the counter defines
// HX_ALLOCATION_COUNTER_NO_OPERATORS before including it. Never include it in
// a library.
//
// Usage:
//     HxAllocationCounter counter;            // starts counting here
//     writer.writeScalar(...);
//     EXPECT_EQ(counter.allocations(), 0u);   // operator new calls since start
//
// The count is process-wide (all threads), so keep other threads quiet while
// a counter is in use.
#ifndef HX_ALLOCATION_COUNTER_H
#define HX_ALLOCATION_COUNTER_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace HxAllocationCounterDetail {
// Number of successful operator new calls (all forms) since program start.
inline std::atomic<std::uint64_t> allocations{0};
// Bytes requested through those calls.
inline std::atomic<std::uint64_t> bytes{0};

inline void* allocate(std::size_t size) noexcept {
    void* p = std::malloc(size == 0 ? 1 : size);
    if (p) {
        allocations.fetch_add(1, std::memory_order_relaxed);
        bytes.fetch_add(size, std::memory_order_relaxed);
    }
    return p;
}

inline void* allocateAligned(std::size_t size, std::size_t alignment) noexcept {
    if (alignment < sizeof(void*)) alignment = sizeof(void*);
    void* p = nullptr;
    if (posix_memalign(&p, alignment, size == 0 ? 1 : size) != 0) return nullptr;
    allocations.fetch_add(1, std::memory_order_relaxed);
    bytes.fetch_add(size, std::memory_order_relaxed);
    return p;
}
}  // namespace HxAllocationCounterDetail

/// Scope that reports how many allocations happened since it was created (or
/// since the last restart()). Never fails.
class HxAllocationCounter {
public:
    HxAllocationCounter() { restart(); }

    /// Starts counting again from now.
    void restart() {
        m_startAllocations = HxAllocationCounterDetail::allocations.load(std::memory_order_relaxed);
        m_startBytes = HxAllocationCounterDetail::bytes.load(std::memory_order_relaxed);
    }

    /// Number of operator new calls since the start.
    std::uint64_t allocations() const {
        return HxAllocationCounterDetail::allocations.load(std::memory_order_relaxed) - m_startAllocations;
    }

    /// Bytes requested through operator new since the start.
    std::uint64_t bytes() const {
        return HxAllocationCounterDetail::bytes.load(std::memory_order_relaxed) - m_startBytes;
    }

    /// Total operator new calls since program start.
    static std::uint64_t total() {
        return HxAllocationCounterDetail::allocations.load(std::memory_order_relaxed);
    }

private:
    std::uint64_t m_startAllocations = 0;
    std::uint64_t m_startBytes = 0;
};

#ifndef HX_ALLOCATION_COUNTER_NO_OPERATORS
// Replacement global allocation functions: defined here, once per executable. They pair
// malloc/posix_memalign with free on purpose, which GCC flags once it inlines them.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(std::size_t size) {
    if (void* p = HxAllocationCounterDetail::allocate(size)) return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    if (void* p = HxAllocationCounterDetail::allocate(size)) return p;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return HxAllocationCounterDetail::allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return HxAllocationCounterDetail::allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    if (void* p = HxAllocationCounterDetail::allocateAligned(size, static_cast<std::size_t>(alignment))) return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    if (void* p = HxAllocationCounterDetail::allocateAligned(size, static_cast<std::size_t>(alignment))) return p;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return HxAllocationCounterDetail::allocateAligned(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return HxAllocationCounterDetail::allocateAligned(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept { std::free(p); }
#pragma GCC diagnostic pop
#endif  // HX_ALLOCATION_COUNTER_NO_OPERATORS

#endif  // HX_ALLOCATION_COUNTER_H
