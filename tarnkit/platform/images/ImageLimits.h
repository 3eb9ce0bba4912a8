#pragma once

#include <cstddef>
#include <cstdint>

namespace tarnkit {

/// What a picture may be at most. A picture beyond one of them is refused as soon as its header
/// says so, before memory is taken for its pixels. A host that wants less gives its own limits.
struct ImageLimits {
  static constexpr std::uint32_t kMaximumWidth = 1U << 15;
  static constexpr std::uint32_t kMaximumHeight = 1U << 15;
  /// 67 million, a quarter of a gigabyte of pixels: more than the largest cameras of telephones
  /// give.
  static constexpr std::uint64_t kMaximumPixels = 1U << 26;
  static constexpr std::size_t kMaximumInputBytes = 1U << 28;

  std::uint32_t width = kMaximumWidth;
  std::uint32_t height = kMaximumHeight;
  std::uint64_t pixels = kMaximumPixels;
  /// Of the file that is read.
  std::size_t inputBytes = kMaximumInputBytes;
};

}  // namespace tarnkit
