#pragma once

#include <span>
#include <string_view>

namespace tarnkit {
class HXRParameter;
class HXRPort;
}  // namespace tarnkit

namespace tarnkit::tool {

/// What a port or a parameter carries, as a designer calls it: "Number", "Image", "Any value". The
/// kind of a primitive input is that of its default, and "Primitive" without one.
std::string_view kindOf(const HXRPort& port);
std::string_view kindOf(const HXRParameter& parameter);

/// Whether ports of the kind only fit their own kind (images, filters, gestures and the like), so
/// that a patch with such an output goes with one that has such an input.
bool isExclusiveKind(std::string_view kind);

/// The kinds with what they carry, for the legend of the index.
struct KindDescription {
  std::string_view kind;
  std::string_view text;
};
std::span<const KindDescription> kindDescriptions();

}  // namespace tarnkit::tool
