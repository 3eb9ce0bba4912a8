#include "tarnkit/math/precision/WideCircular.h"

#include "tarnkit/math/precision/PrecisionTables.h"

namespace tarnkit::detail {

namespace {

constexpr int kSineTerms = 17;
constexpr int kCosineTerms = 16;
constexpr int kStepBits = 7;
constexpr double kArcSteps = 64;
constexpr int kArcTerms = 13;

// atan of up to 2^-6.9.
WideFloat smallArcTangent(const WideFloat& tangent) noexcept {
  const WideFraction square = fractionOf(tangent * tangent);
  const WideFraction rest = square * seriesOf(kInverseOdds, 1, kArcTerms, 1, square, true);
  return tangent - tangent * WideFloat::of(rest);
}

// atan(numerator / denominator), of a quotient from 0 to 1.
WideFloat arcTangent(const WideFloat& numerator, const WideFloat& denominator) noexcept {
  if (numerator.isZero()) return numerator;
  const int far = denominator.exponent - numerator.exponent;
  constexpr int kFar = 9;
  if (far > kFar) return smallArcTangent(numerator / denominator);
  const WideFloat top = numerator.timesPowerOfTwo(-denominator.exponent);
  const WideFloat bottom = denominator.timesPowerOfTwo(-denominator.exponent);
  const int step = static_cast<int>(kArcSteps * top.toDouble() / bottom.toDouble() + 0.5);
  if (step == 0) return smallArcTangent(top / bottom);
  const WideFloat tangent = WideFloat::of(step).timesPowerOfTwo(-6);
  const WideFloat rest = (top - tangent * bottom) / (bottom + tangent * top);
  return kArcTangents[step] + smallArcTangent(rest);
}

}  // namespace

SineCosine sineCosine(const WideFloat& angle) noexcept {
  WideFraction part = fractionOf(angle);
  const auto step = ((part.words[2] >> (63 - kStepBits)) + 1) >> 1;
  const WideFraction tabled{{0, 0, step << (64 - kStepBits)}};
  const bool isBelow = part.words[2] < tabled.words[2];
  part = isBelow ? tabled - part : part - tabled;
  const WideFraction square = part * part;
  const WideFraction sineRest =
      square * seriesOf(kInverseFactorials, 3, kSineTerms, 2, square, true);
  const WideFraction cosineRest =
      square * seriesOf(kInverseFactorials, 2, kCosineTerms, 2, square, true);
  if (step == 0) {
    return {angle - angle * WideFloat::of(sineRest), WideFloat::of(1) - WideFloat::of(cosineRest)};
  }
  const WideFraction partSine = part - part * sineRest;
  const WideFraction& sine = kSines[step];
  const WideFraction& cosine = kCosines[step];
  const WideFraction sineLeft = sine - sine * cosineRest;
  const WideFraction cosineLeft = cosine - cosine * cosineRest;
  const WideFraction sineMore = cosine * partSine;
  const WideFraction cosineMore = sine * partSine;
  return {WideFloat::of(isBelow ? sineLeft - sineMore : sineLeft + sineMore, angle.negative),
          WideFloat::of(isBelow ? cosineLeft + cosineMore : cosineLeft - cosineMore)};
}

WideFloat angleOf(const WideFloat& y, const WideFloat& x) noexcept {
  const WideFloat magnitude = x.absolute();
  WideFloat angle;
  if (isLess(magnitude, y)) {
    const WideFloat rest = arcTangent(magnitude, y);
    return x.negative ? kWideHalfPi + rest : kWideHalfPi - rest;
  }
  angle = arcTangent(y, magnitude);
  return x.negative ? kWidePi - angle : angle;
}

}  // namespace tarnkit::detail
