#pragma once

#include <cstddef>
#include <cstdint>

#include "tarnkit/platform/objects/BlockPool.h"

namespace tarnkit {

/// An allocator of the standard library's containers that takes memory from `BlockPool`: for short
/// runs that every object of a kind holds, where a general allocator's smallest block and its
/// header would be most of what they take. It has no state. Safe from any thread, as the pool is.
template <class T>
class PoolAllocator {
  static_assert(alignof(T) <= alignof(std::uint64_t));

 public:
  using value_type = T;
  PoolAllocator() noexcept = default;
  template <class Other>
  PoolAllocator(const PoolAllocator<Other>&) noexcept {}  // NOLINT(google-explicit-constructor)

  T* allocate(std::size_t count) { return static_cast<T*>(BlockPool::allocate(count * sizeof(T))); }
  void deallocate(T* run, std::size_t count) noexcept {
    BlockPool::release(run, count * sizeof(T));
  }
  friend bool operator==(const PoolAllocator&, const PoolAllocator&) noexcept { return true; }
};

}  // namespace tarnkit
