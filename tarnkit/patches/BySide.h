#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>

#include "tarnkit/patches/Orientation.h"

namespace tarnkit {

/// Both sides, in the order in which everything is done for them.
inline constexpr std::int32_t kBothSides[] = {HXOrientationInput, HXOrientationOutput};

/// One of something for the inputs and one for the outputs: what a class would otherwise have as
/// twin members. Made as `{input, output}`.
template <class T>
struct BySide {
  T sides[2];

  /// Of an orientation that is one of the two.
  T& operator[](std::int32_t orientation) noexcept { return sides[index(orientation)]; }
  const T& operator[](std::int32_t orientation) const noexcept { return sides[index(orientation)]; }
  /// Null for an orientation that is neither, as archives may hold.
  T* find(std::int32_t orientation) noexcept {
    return isSide(orientation) ? &sides[index(orientation)] : nullptr;
  }
  const T* find(std::int32_t orientation) const noexcept {
    return isSide(orientation) ? &sides[index(orientation)] : nullptr;
  }

  T* begin() noexcept { return sides; }
  T* end() noexcept { return sides + 2; }
  const T* begin() const noexcept { return sides; }
  const T* end() const noexcept { return sides + 2; }

  static constexpr bool isSide(std::int32_t orientation) noexcept {
    return orientation == HXOrientationInput || orientation == HXOrientationOutput;
  }

 private:
  static constexpr std::size_t index(std::int32_t orientation) noexcept {
    assert(isSide(orientation));
    return static_cast<std::size_t>(orientation - HXOrientationInput);
  }
};

}  // namespace tarnkit
