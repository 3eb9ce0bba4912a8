#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "tarnkit/model/HXGroup.h"
#include "tarnkit/patches/PMRPrimitive.h"

namespace tarnkit::tool {

using Json = nlohmann::json;

// Values out of JSON. Each takes exactly the values of its type (a boolean is no number, a number
// that does not fit is none) and throws CommandFailure for any other, with `name` as the name of
// the argument.

bool readBoolean(const Json& value, std::string_view name);
std::int32_t readInteger(const Json& value, std::string_view name);
std::uint64_t readUnsigned(const Json& value, std::string_view name);
/// A number, or "inf", "-inf", "nan".
float readFloat(const Json& value, std::string_view name);
std::string readText(const Json& value, std::string_view name);
/// The text, or nil for null.
String readTextOrNil(const Json& value, std::string_view name);
/// [x,y]
HXPoint readPoint(const Json& value, std::string_view name);
/// [r,g,b,a]
RGBA readColor(const Json& value, std::string_view name);
/// {"kind":K,"value":V}, or {"kind":"nil"}.
Ref<PMRPrimitive> readPrimitive(const Json& value, std::string_view name);

/// "a string", "an array", …
const char* kindOf(const Json& value);

}  // namespace tarnkit::tool
