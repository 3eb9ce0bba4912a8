#pragma once

#include "tarnkit/platform/objects/Object.h"

namespace tarnkit {

/// The platform's colour object: red, green, blue and alpha, each 0 to 1. Immutable; free to share
/// between threads.
class Color final : public Object {
  TARNKIT_CLASS
 public:
  static Ref<Color> colorWithRGBA(float red, float green, float blue, float alpha);
  Color(float red, float green, float blue, float alpha) noexcept
      : red_(red), green_(green), blue_(blue), alpha_(alpha) {}

  float redComponent() const noexcept { return red_; }
  float greenComponent() const noexcept { return green_; }
  float blueComponent() const noexcept { return blue_; }
  float alphaComponent() const noexcept { return alpha_; }

  /// By the float equality of all four components.
  bool isEqual(const Object& other) const override;
  std::uint64_t hash() const override;
  /// "RED GREEN BLUE ALPHA".
  String description() const override;

 private:
  float red_;
  float green_;
  float blue_;
  float alpha_;
};

}  // namespace tarnkit
