// The counting global operator new/delete, in the same unit as the counter's queries so that a
// program using HxAllocationCounter always links them. Alone in their unit, no caller sees their
// bodies, which keeps GCC's -Wmismatched-new-delete (malloc paired with free) out of other code.
#include "tests/support/HxAllocationCounter.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::uint64_t> allocationCount{0};
std::atomic<std::uint64_t> allocationBytes{0};

void* allocate(std::size_t size) noexcept {
  void* p = std::malloc(size == 0 ? 1 : size);
  if (p) {
    allocationCount.fetch_add(1, std::memory_order_relaxed);
    allocationBytes.fetch_add(size, std::memory_order_relaxed);
  }
  return p;
}

void* allocateAligned(std::size_t size, std::align_val_t alignment) noexcept {
  std::size_t align = static_cast<std::size_t>(alignment);
  if (align < sizeof(void*)) align = sizeof(void*);
  void* p = nullptr;
  if (posix_memalign(&p, align, size == 0 ? 1 : size) != 0) return nullptr;
  allocationCount.fetch_add(1, std::memory_order_relaxed);
  allocationBytes.fetch_add(size, std::memory_order_relaxed);
  return p;
}

void* allocateOrThrow(std::size_t size) {
  if (void* p = allocate(size)) return p;
  throw std::bad_alloc();
}

void* allocateAlignedOrThrow(std::size_t size, std::align_val_t alignment) {
  if (void* p = allocateAligned(size, alignment)) return p;
  throw std::bad_alloc();
}

}  // namespace

std::uint64_t HxAllocationCounter::total() { return allocationCount.load(std::memory_order_relaxed); }

std::uint64_t HxAllocationCounter::totalBytes() { return allocationBytes.load(std::memory_order_relaxed); }

void* operator new(std::size_t size) { return allocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment) { return allocateAlignedOrThrow(size, alignment); }
void* operator new[](std::size_t size, std::align_val_t alignment) { return allocateAlignedOrThrow(size, alignment); }
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocateAligned(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocateAligned(size, alignment);
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
