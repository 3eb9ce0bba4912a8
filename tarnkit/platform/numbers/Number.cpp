#include "tarnkit/platform/numbers/Number.h"

#include <bit>
#include <cmath>
#include <limits>

#include "tarnkit/platform/numbers/NumberText.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

const Class Number::kClass{"NSNumber", &Object::kClass};

namespace {

template <class Integer>
Integer saturate(double value) noexcept {
  using Limits = std::numeric_limits<Integer>;
  if (std::isnan(value)) return 0;
  if (value <= static_cast<double>(Limits::min())) return Limits::min();
  if (value >= static_cast<double>(Limits::max())) return Limits::max();
  return static_cast<Integer>(value);
}

}  // namespace

Ref<Number> Number::withBool(bool value) {
  static const Ref<Number> no = make<Number>(Kind::boolean, std::int64_t{0});
  static const Ref<Number> yes = make<Number>(Kind::boolean, std::int64_t{1});
  return value ? yes : no;
}
Ref<Number> Number::withInt(std::int32_t value) {
  return make<Number>(Kind::int32, std::int64_t{value});
}
Ref<Number> Number::withInt64(std::int64_t value) { return make<Number>(Kind::int64, value); }
Ref<Number> Number::withFloat(float value) {
  return make<Number>(Kind::float32, static_cast<double>(value));
}
Ref<Number> Number::withDouble(double value) { return make<Number>(Kind::float64, value); }

bool Number::boolValue() const noexcept {
  return isReal() ? payload_.real != 0 : payload_.integer != 0;
}
std::int32_t Number::intValue() const noexcept {
  return isReal() ? saturate<std::int32_t>(payload_.real)
                  : static_cast<std::int32_t>(payload_.integer);
}
std::int64_t Number::int64Value() const noexcept {
  return isReal() ? saturate<std::int64_t>(payload_.real) : payload_.integer;
}
float Number::floatValue() const noexcept { return static_cast<float>(doubleValue()); }
double Number::doubleValue() const noexcept {
  return isReal() ? payload_.real : static_cast<double>(payload_.integer);
}

String Number::stringValue() const {
  switch (kind_) {
    case Kind::float32:
      return String(shortestText(static_cast<float>(payload_.real)));
    case Kind::float64:
      return String(shortestText(payload_.real));
    default:
      return String(std::to_string(payload_.integer));
  }
}

bool Number::isEqual(const Object& other) const {
  const auto* number = as<Number>(&other);
  if (!number) return false;
  if (isReal() || number->isReal()) return doubleValue() == number->doubleValue();
  return payload_.integer == number->payload_.integer;
}

std::uint64_t Number::hash() const {
  const double value = doubleValue();
  return std::bit_cast<std::uint64_t>(value == 0 ? 0.0 : value) * 0x9E3779B97F4A7C15ULL >> 16;
}

String Number::description() const { return stringValue(); }

}  // namespace tarnkit
