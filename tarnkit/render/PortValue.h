#pragma once

#include <cstdint>
#include <string>

#include "tarnkit/patches/RGBA.h"
#include "tarnkit/render/Label.h"

namespace tarnkit {
class HXPort;
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

/// None for an output, a port without a value, a value that is nil, and a port that publishes one
/// through more than 64 groups. The text is the label that the port's description maps the value
/// to, or "375", "45°", "on", "#ff8800", the string itself; `room` is for it.
PortValue valueOfPort(const HXPort& port, double room);

/// "0.1", "∞", "no number".
std::string numberText(float number);
/// "#ff8800", and "#ff880080" when it is not opaque.
std::string colorText(RGBA color);

}  // namespace tarnkit::detail
