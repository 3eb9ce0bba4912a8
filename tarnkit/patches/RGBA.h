#pragma once

namespace tarnkit {

/// A colour: red, green, blue and alpha, each 0 to 1, without premultiplication. Passed by value.
struct RGBA {
  float red = 0;
  float green = 0;
  float blue = 0;
  float alpha = 0;
  /// By float equality: a colour with a not-a-number component equals nothing.
  bool operator==(const RGBA&) const = default;
};

inline constexpr RGBA OIColorBlackRGBA{0, 0, 0, 1};
inline constexpr RGBA OIColorWhiteRGBA{1, 1, 1, 1};

}  // namespace tarnkit
