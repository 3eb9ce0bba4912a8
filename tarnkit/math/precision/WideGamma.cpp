#include "tarnkit/math/precision/WideGamma.h"

#include "tarnkit/math/precision/PrecisionTables.h"
#include "tarnkit/math/precision/WideCircular.h"
#include "tarnkit/math/precision/WideDecimal.h"
#include "tarnkit/math/precision/WideExponential.h"

namespace tarnkit::detail {

namespace {

// From here on the 26 terms of Stirling's series leave less than 2^-170.
constexpr double kStirlingStart = 32;

WideFloat gamma(WideFloat value) noexcept {
  const WideFloat one = WideFloat::of(1);
  WideFloat product = one;
  while (value.toDouble() < kStirlingStart) {
    product = product * value;
    value = value + one;
  }
  const WideFloat inverse = one / value;
  const WideFloat square = inverse * inverse;
  WideFloat series = kStirlingTerms[kStirlingCount - 1];
  for (int i = kStirlingCount - 2; i >= 0; --i) series = series * square + kStirlingTerms[i];
  const WideFloat logarithmOfGamma = (value - one.timesPowerOfTwo(-1)) * logarithm(value) - value +
                                     kWideHalfLnTwoPi + series * inverse;
  return exponential(logarithmOfGamma) / product;
}

// sin(πx)
WideFloat sineOfHalfTurns(const Decimal& value) noexcept {
  const Decimal nearest = value.rounded(0, DecimalRounding::halfToEven);
  const WideFloat rest = wideDifference(value, nearest);
  const WideFloat magnitude = rest.absolute();
  WideFloat sine;
  if (magnitude.toDouble() <= 0.25) {
    sine = sineCosine(magnitude * kWidePi).sine;
  } else {
    sine = sineCosine((WideFloat::of(1).timesPowerOfTwo(-1) - magnitude) * kWidePi).cosine;
  }
  const bool isOdd = (nearest.absolute().uint64Value() & 1) != 0;
  sine.negative = rest.negative != isOdd;
  return sine;
}

}  // namespace

WideFloat gammaOfOnePlus(const Decimal& value) noexcept {
  const Decimal minusHalf = Decimal::of(-5, -1);
  if (value >= minusHalf) return gamma(wideDifference(value, Decimal::of(-1)));
  // Γ(x + 1) Γ(-x) = π / sin(π (x + 1)) = -π / sin(πx)
  return (kWidePi / (sineOfHalfTurns(value) * gamma(wideOf(value.negated())))).negated();
}

}  // namespace tarnkit::detail
