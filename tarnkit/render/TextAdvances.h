#pragma once

#include <cstdint>

namespace tarnkit::detail {

/// What `tabledAdvance` answers where the table has nothing.
inline constexpr std::uint8_t kNoAdvance = 255;

/// How far a character moves the pen, in hundredths of the font's size, rounded up: the widths of
/// DejaVu Sans, the widest font of the pictures' font stack, for Latin, Greek, Cyrillic, Hebrew and
/// Arabic (there the isolated forms, which are the widest). Constant time, any thread.
std::uint8_t tabledAdvance(std::uint32_t codePoint, bool bold) noexcept;

}  // namespace tarnkit::detail
