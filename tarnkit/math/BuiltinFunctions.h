#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tarnkit::detail {

/// The built-in functions. The order is that of the table in `BuiltinFunctions.cpp`.
enum class Builtin : std::uint8_t {
  none,
  add,
  subtract,
  multiply,
  divide,
  mod,
  pow,
  nthroot,
  bitAnd,
  bitOr,
  bitXor,
  rshift,
  lshift,
  logicalAnd,
  logicalOr,
  equal,
  notEqual,
  less,
  greater,
  lessOrEqual,
  greaterOrEqual,
  negate,
  factorial,
  bitNot,
  logicalNot,
  sqrt,
  log,
  ln,
  log2,
  exp,
  ceil,
  floor,
  abs,
  percent,
  sin,
  cos,
  tan,
  csc,
  sec,
  cotan,
  versin,
  vercosin,
  coversin,
  covercosin,
  haversin,
  havercosin,
  hacoversin,
  hacovercosin,
  exsec,
  excsc,
  crd,
  asin,
  acos,
  atan,
  acsc,
  asec,
  acotan,
  sinh,
  cosh,
  tanh,
  asinh,
  acosh,
  atanh,
  csch,
  sech,
  cotanh,
  acsch,
  asech,
  acotanh,
  dtor,
  rtod,
  average,
  sum,
  count,
  min,
  max,
  median,
  stddev,
  random,
  phi,
  pi,
  pi_2,
  pi_4,
  tau,
  sqrt2,
  e,
  log2e,
  log10e,
  ln2,
  ln10,
};

/// What a built-in's computation looks like.
enum class BuiltinShape : std::uint8_t {
  constant,
  unary,
  binary,
  list,
  /// Needs more than its arguments' values: count (which does not evaluate them), random, percent.
  special,
};

/// How the angle mode bears on a built-in: its argument is an angle, or its result is one.
enum class BuiltinAngle : std::uint8_t { none, argument, result };

/// One row of the table of built-in functions; constant data, read from any thread.
struct BuiltinFunction {
  static constexpr std::uint32_t kAnyCount = 0xFFFFFFFFU;

  std::string_view name;
  Builtin id;
  BuiltinShape shape;
  BuiltinAngle angle;
  std::uint32_t minimumArguments;
  std::uint32_t maximumArguments;  // kAnyCount: no maximum
  union {
    double value;
    double (*unary)(double);
    double (*binary)(double, double);
    double (*list)(const double*, std::size_t);
  };

  bool takes(std::uint32_t arguments) const noexcept {
    return arguments >= minimumArguments && arguments <= maximumArguments;
  }
};

/// The row of a built-in; `id` is not `none`.
const BuiltinFunction& builtinFunction(Builtin id) noexcept;
/// Whether a call computes from the values of its arguments alone (and, for a percentage, from its
/// place): a built-in other than `count` and `random`, with a fitting number of arguments.
inline bool isPlainCall(Builtin id, std::uint32_t arguments) noexcept {
  if (id >= Builtin::add && id <= Builtin::greaterOrEqual) return arguments == 2;
  if (id >= Builtin::negate && id <= Builtin::rtod) return arguments == 1;
  return id > Builtin::rtod && id != Builtin::count && id != Builtin::random &&
         builtinFunction(id).takes(arguments);
}
/// The built-in of a name in any case; `none` when there is none. Costs a hash of the name.
Builtin builtinNamed(std::string_view name) noexcept;
/// How many built-ins there are, `none` not counted.
std::size_t builtinCount() noexcept;

}  // namespace tarnkit::detail
