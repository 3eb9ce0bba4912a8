#pragma once

#include <cstdint>

#include "tarnkit/platform/objects/Object.h"

namespace tarnkit {

/// A boxed number that remembers how it was made, because archives keep the width: a boolean is no
/// integer, a float is a 32-bit real. Immutable; free to share between threads.
class Number final : public Object {
  TARNKIT_CLASS
 public:
  enum class Kind : std::uint8_t { boolean, int32, int64, float32, float64 };

  /// The shared boxes of the two booleans.
  static Ref<Number> withBool(bool value);
  static Ref<Number> withInt(std::int32_t value);
  static Ref<Number> withInt64(std::int64_t value);
  static Ref<Number> withFloat(float value);
  static Ref<Number> withDouble(double value);

  Kind kind() const noexcept { return kind_; }
  bool isReal() const noexcept { return kind_ >= Kind::float32; }

  /// The value as each type, converted as C does; a real outside the integer's range saturates, NaN
  /// gives 0.
  bool boolValue() const noexcept;
  std::int32_t intValue() const noexcept;
  std::int64_t int64Value() const noexcept;
  float floatValue() const noexcept;
  double doubleValue() const noexcept;
  /// Decimal text; a real in the shortest form that reads back to the same value of its width.
  String stringValue() const;

  /// Equal values are equal whatever their kinds; NaN equals nothing.
  bool isEqual(const Object& other) const override;
  std::uint64_t hash() const override;
  String description() const override;
  CodingKind codingKind() const noexcept override { return CodingKind::number; }

  Number(Kind kind, std::int64_t value) noexcept : kind_(kind) { payload_.integer = value; }
  Number(Kind kind, double value) noexcept : kind_(kind) { payload_.real = value; }

 private:
  Kind kind_;
  union {
    std::int64_t integer;
    double real;
  } payload_;
};

}  // namespace tarnkit
