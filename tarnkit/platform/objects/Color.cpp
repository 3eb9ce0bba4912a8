#include "tarnkit/platform/objects/Color.h"

#include <fmt/format.h>

#include <bit>

#include "tarnkit/platform/text/String.h"

namespace tarnkit {

const Class Color::kClass{"NSColor", &Object::kClass};

Ref<Color> Color::colorWithRGBA(float red, float green, float blue, float alpha) {
  return make<Color>(red, green, blue, alpha);
}

bool Color::isEqual(const Object& other) const {
  const auto* color = as<Color>(&other);
  return color && red_ == color->red_ && green_ == color->green_ && blue_ == color->blue_ &&
         alpha_ == color->alpha_;
}

std::uint64_t Color::hash() const {
  std::uint64_t hash = 0;
  for (const float component : {red_, green_, blue_, alpha_}) {
    // Adding zero makes the two zeros, which are equal, one.
    hash = hash * 31 + std::bit_cast<std::uint32_t>(component + 0.0F);
  }
  return hash;
}

String Color::description() const {
  return String(fmt::format("{:g} {:g} {:g} {:g}", red_, green_, blue_, alpha_));
}

}  // namespace tarnkit
