#include "tarnkit/math/precision/PrecisionFunctions.h"
#include "tarnkit/math/precision/PrecisionTables.h"
#include "tarnkit/math/precision/WideCircular.h"
#include "tarnkit/math/precision/WideDecimal.h"

namespace tarnkit::detail {

namespace {

SineCosine sineCosineOf(const ReducedAngle& angle) noexcept {
  const SineCosine rest = sineCosine(angle.rest);
  switch (angle.quarters) {
    case 1:
      return {rest.cosine, rest.sine.negated()};
    case 2:
      return {rest.sine.negated(), rest.cosine.negated()};
    case 3:
      return {rest.cosine.negated(), rest.sine};
    default:
      return rest;
  }
}

// 1 - cos of the angle turned by some quarters, in full where the cosine is nearly 1.
WideFloat versine(const ReducedAngle& angle, int quarters) noexcept {
  const ReducedAngle turned{(angle.quarters + quarters) & 3, angle.rest};
  if (turned.quarters != 0) return WideFloat::of(1) - sineCosineOf(turned).cosine;
  if (turned.rest.isZero()) return turned.rest;
  const WideFloat sine = sineCosine(turned.rest.timesPowerOfTwo(-1)).sine;
  return (sine * sine).timesPowerOfTwo(1);
}

WideResult quotient(const WideFloat& numerator, const WideFloat& denominator) noexcept {
  if (denominator.isZero()) return std::nullopt;
  return numerator / denominator;
}

WideFloat halved(const WideFloat& value) noexcept {
  return value.isZero() ? value : value.timesPowerOfTwo(-1);
}

// sqrt(1 - x²); nothing beyond 1.
WideResult otherLeg(const Decimal& value) noexcept {
  const Decimal one = Decimal::of(1);
  const WideFloat below = wideDifference(one, value.absolute());
  if (below.negative) return std::nullopt;
  return squareRoot(below * (WideFloat::of(1) + wideOf(value.absolute())));
}

// sqrt(x² - 1); nothing below 1.
WideResult outerLeg(const Decimal& value) noexcept {
  const WideFloat above = wideDifference(value.absolute(), Decimal::of(1));
  if (above.negative) return std::nullopt;
  return squareRoot(above * (WideFloat::of(1) + wideOf(value.absolute())));
}

// The angle of (|y|, x), with the sign of y.
WideFloat signedAngle(const WideFloat& y, const WideFloat& x) noexcept {
  WideFloat angle = angleOf(y.absolute(), x);
  angle.negative = y.negative && !angle.isZero();
  return angle;
}

}  // namespace

WideResult wideOfAngle(Builtin function, const ReducedAngle& angle) noexcept {
  constexpr int kCosine = 0;
  constexpr int kMinusCosine = 2;
  constexpr int kSine = 3;
  constexpr int kMinusSine = 1;
  switch (function) {
    case Builtin::versin:
      return versine(angle, kCosine);
    case Builtin::vercosin:
      return versine(angle, kMinusCosine);
    case Builtin::coversin:
      return versine(angle, kSine);
    case Builtin::covercosin:
      return versine(angle, kMinusSine);
    case Builtin::haversin:
      return halved(versine(angle, kCosine));
    case Builtin::havercosin:
      return halved(versine(angle, kMinusCosine));
    case Builtin::hacoversin:
      return halved(versine(angle, kSine));
    case Builtin::hacovercosin:
      return halved(versine(angle, kMinusSine));
    default:
      break;
  }
  const SineCosine both = sineCosineOf(angle);
  switch (function) {
    case Builtin::sin:
      return both.sine;
    case Builtin::cos:
      return both.cosine;
    case Builtin::tan:
      return quotient(both.sine, both.cosine);
    case Builtin::csc:
      return quotient(WideFloat::of(1), both.sine);
    case Builtin::sec:
      return quotient(WideFloat::of(1), both.cosine);
    case Builtin::cotan:
      return quotient(both.cosine, both.sine);
    case Builtin::exsec:
      return quotient(versine(angle, kCosine), both.cosine);
    case Builtin::excsc:
      return quotient(versine(angle, kSine), both.sine);
    default:
      return std::nullopt;
  }
}

WideResult wideArc(Builtin function, const Decimal& value) noexcept {
  const WideFloat one = WideFloat::of(1);
  if (function == Builtin::atan) return signedAngle(wideOf(value), one);
  // π/2 - atan(x): from 0 to π, also for negative numbers.
  if (function == Builtin::acotan) return angleOf(one, wideOf(value));
  const bool isInner = function == Builtin::asin || function == Builtin::acos;
  const WideResult leg = isInner ? otherLeg(value) : outerLeg(value);
  if (!leg) return std::nullopt;
  WideFloat sign = one;
  sign.negative = value.isNegative();
  switch (function) {
    case Builtin::asin:
      return signedAngle(wideOf(value), *leg);
    case Builtin::acos:
      return angleOf(*leg, wideOf(value));
    case Builtin::acsc:
      return signedAngle(sign, *leg);
    case Builtin::asec:
      return angleOf(*leg, sign);
    default:
      return std::nullopt;
  }
}

}  // namespace tarnkit::detail
