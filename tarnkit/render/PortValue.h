#pragma once

#include <cstdint>
#include <string>

#include "tarnkit/patches/PMRPrimitive.h"
#include "tarnkit/patches/RGBA.h"
#include "tarnkit/render/Label.h"

namespace tarnkit {
class HXPatchPort;
class HXPort;
class HXRPort;
}  // namespace tarnkit

namespace tarnkit::detail {

/// The value that an unconnected input shows beside its name.
struct PortValue {
  enum class Kind : std::uint8_t { none, boolean, color, text };
  Kind kind = Kind::none;
  bool boolean = false;
  /// Whether somebody set it; otherwise it is the default.
  bool isSet = false;
  RGBA color;
  /// As people read it, of every kind.
  Label text;
};

/// The patch port that the port is, or stands for; null when there is none, or only at the end of a
/// chain of more than 64 published ports.
const HXPatchPort* patchPortOf(const HXPort& port);

/// None for an output, a port without a value, and a value that is nil. `room` is for its text.
PortValue valueOfPort(const HXPort& port, double room);

/// The value as people read it: the label that the description maps it to, or "375", "45°", "on",
/// "#ff8800", the string itself.
std::string valueText(const PMRPrimitive& value, const HXRPort* description = nullptr);
std::string numberText(double number);
/// "#ff8800", and "#ff880080" when it is not opaque.
std::string colorText(RGBA color);

}  // namespace tarnkit::detail
