#pragma once

#include <string>

#include "tarnkit/patches/PMRPrimitive.h"

namespace tarnkit {
class HXRParameter;
class HXRPrimitiveInputPort;
}  // namespace tarnkit

namespace tarnkit::tool {

// Values as they stand in the cells of the reference's tables.

/// A colour as a swatch with its hexadecimal notation, a text in code, the rest as people write it;
/// "none" for null and for nil.
std::string valueHtml(const PMRPrimitive* value);
/// The default of an input, by its label when it is one of named choices.
std::string defaultHtml(const HXRPrimitiveInputPort& port);
/// The named choices as a list; "" when there are none.
std::string choicesHtml(const HXRPrimitiveInputPort& port);
/// The default of a parameter.
std::string defaultHtml(const HXRParameter& parameter);
/// "1 to 100"; "" for a parameter without bounds.
std::string boundsText(const HXRParameter& parameter);
/// "#555C68", with the alpha component behind it unless the colour is opaque.
std::string hexText(RGBA color);

}  // namespace tarnkit::tool
