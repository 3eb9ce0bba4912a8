#include "tools/tarnkit/ValueReading.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "tools/tarnkit/Command.h"

namespace tarnkit::tool {

namespace {

[[noreturn]] void refuse(std::string_view name, const char* wanted, const Json& value) {
  throw CommandFailure(fmt::format("\"{}\" must be {}, not {}", name, wanted, kindOf(value)));
}

template <class Integer>
Integer readIntegerAs(const Json& value, std::string_view name, const char* wanted) {
  if (!value.is_number_integer()) refuse(name, wanted, value);
  if (value.is_number_unsigned()) {
    const auto number = value.get<std::uint64_t>();
    if (number <= static_cast<std::uint64_t>(std::numeric_limits<Integer>::max())) {
      return static_cast<Integer>(number);
    }
  } else {
    const auto number = value.get<std::int64_t>();
    if (std::numeric_limits<Integer>::is_signed &&
        number >= static_cast<std::int64_t>(std::numeric_limits<Integer>::min())) {
      return static_cast<Integer>(number);
    }
  }
  throw CommandFailure(
      fmt::format("\"{}\" must be {}: {} does not fit", name, wanted, value.dump()));
}

template <std::size_t Count>
std::array<float, Count> readFloats(const Json& value, std::string_view name, const char* wanted) {
  if (!value.is_array() || value.size() != Count) refuse(name, wanted, value);
  std::array<float, Count> floats{};
  for (std::size_t i = 0; i < Count; ++i) floats[i] = readFloat(value[i], name);
  return floats;
}

struct PrimitiveKind {
  std::string_view name;
  Ref<PMRPrimitive> (*read)(const Json& value);
};

constexpr std::string_view kValue = "value";

constexpr std::array<PrimitiveKind, 7> kPrimitiveKinds{{
    {"boolean",
     [](const Json& v) { return PMRPrimitive::primitiveWithBooleanValue(readBoolean(v, kValue)); }},
    {"index",
     [](const Json& v) { return PMRPrimitive::primitiveWithIndexValue(readInteger(v, kValue)); }},
    {"number",
     [](const Json& v) { return PMRPrimitive::primitiveWithNumberValue(readFloat(v, kValue)); }},
    {"radians",
     [](const Json& v) { return PMRPrimitive::primitiveWithRadiansValue(readFloat(v, kValue)); }},
    {"degrees",
     [](const Json& v) { return PMRPrimitive::primitiveWithDegreesValue(readFloat(v, kValue)); }},
    {"color",
     [](const Json& v) { return PMRPrimitive::primitiveWithColorValue(readColor(v, kValue)); }},
    {"string",
     [](const Json& v) {
       return PMRPrimitive::primitiveWithStringValue(String(readText(v, kValue)));
     }},
}};

}  // namespace

const char* kindOf(const Json& value) {
  switch (value.type()) {
    case Json::value_t::null:
      return "null";
    case Json::value_t::object:
      return "an object";
    case Json::value_t::array:
      return "an array";
    case Json::value_t::string:
      return "a string";
    case Json::value_t::boolean:
      return "a boolean";
    case Json::value_t::number_integer:
    case Json::value_t::number_unsigned:
      return "an integer";
    case Json::value_t::number_float:
      return "a number";
    default:
      return "nothing";
  }
}

bool readBoolean(const Json& value, std::string_view name) {
  if (!value.is_boolean()) refuse(name, "true or false", value);
  return value.get<bool>();
}

std::int32_t readInteger(const Json& value, std::string_view name) {
  return readIntegerAs<std::int32_t>(value, name, "a 32-bit integer");
}

std::uint64_t readUnsigned(const Json& value, std::string_view name) {
  return readIntegerAs<std::uint64_t>(value, name, "an integer from 0 on");
}

float readFloat(const Json& value, std::string_view name) {
  constexpr auto kInfinity = std::numeric_limits<float>::infinity();
  if (value.is_string()) {
    const auto& text = value.get_ref<const std::string&>();
    if (text == "inf") return kInfinity;
    if (text == "-inf") return -kInfinity;
    if (text == "nan") return std::numeric_limits<float>::quiet_NaN();
  }
  if (!value.is_number()) refuse(name, "a number", value);
  const auto wide = value.get<double>();
  const auto number = static_cast<float>(wide);
  if (std::isinf(number)) {
    throw CommandFailure(fmt::format("\"{}\": {} does not fit a 32-bit float", name, wide));
  }
  return number;
}

std::string readText(const Json& value, std::string_view name) {
  if (!value.is_string()) refuse(name, "a string", value);
  return value.get<std::string>();
}

String readTextOrNil(const Json& value, std::string_view name) {
  if (value.is_null()) return nullptr;
  if (!value.is_string()) refuse(name, "a string or null", value);
  return String(value.get_ref<const std::string&>());
}

HXPoint readPoint(const Json& value, std::string_view name) {
  const auto floats = readFloats<2>(value, name, "two numbers [x,y]");
  return {floats[0], floats[1]};
}

RGBA readColor(const Json& value, std::string_view name) {
  const auto floats = readFloats<4>(value, name, "four numbers [r,g,b,a]");
  return {floats[0], floats[1], floats[2], floats[3]};
}

Ref<PMRPrimitive> readPrimitive(const Json& value, std::string_view name) {
  if (!value.is_object()) refuse(name, "a primitive {\"kind\":…,\"value\":…}", value);
  const auto kind = value.find("kind");
  if (kind == value.end()) throw CommandFailure(fmt::format("\"{}\" has no \"kind\"", name));
  const auto kindName = readText(*kind, "kind");
  const auto payload = value.find(kValue);
  const bool isNil = kindName == "nil";
  for (const auto& field : value.items()) {
    if (field.key() == "kind" || (field.key() == kValue && !isNil)) continue;
    throw CommandFailure(fmt::format("\"{}\": a {} has no \"{}\"", name, kindName, field.key()));
  }
  if (isNil) return PMRPrimitive::primitiveWithNilValue();
  for (const auto& known : kPrimitiveKinds) {
    if (known.name != kindName) continue;
    if (payload == value.end()) throw CommandFailure(fmt::format("\"{}\" has no \"value\"", name));
    return known.read(*payload);
  }
  throw CommandFailure(fmt::format(
      "\"{}\": \"{}\" is no kind of primitive (nil, boolean, index, number, radians, degrees, "
      "color, string)",
      name, kindName));
}

}  // namespace tarnkit::tool
