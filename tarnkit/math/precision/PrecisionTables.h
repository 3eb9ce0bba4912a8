#pragma once

#include <cstdint>

#include "tarnkit/math/precision/WideFloat.h"

/// The constants and tables behind the functions of decimals; scripts/make_precision_tables.py
/// makes their source. Constant data.
namespace tarnkit::detail {

extern const WideFloat kWidePi;
extern const WideFloat kWideHalfPi;
extern const WideFloat kWideLn2;
extern const WideFloat kWideInverseLn2;
extern const WideFloat kWideInverseLn10;
/// π / 180 and 180 / π.
extern const WideFloat kWideDegree;
extern const WideFloat kWideRadian;
/// ln(2π) / 2
extern const WideFloat kWideHalfLnTwoPi;

/// Lowest word first: 256 bits behind the point, and the whole part in a fifth word.
extern const std::uint64_t kLn2Words[5];
extern const std::uint64_t kHalfPiWords[5];
/// 1024 bits behind the point.
extern const std::uint64_t kTwoOverPiWords[16];

/// 10^(19 k), k from -7 to 10.
inline constexpr int kPowersOfTenTo19Count = 18;
inline constexpr int kPowersOfTenTo19Zero = 7;
extern const WideFloat kPowersOfTenTo19[kPowersOfTenTo19Count];

/// 1/n!, from n = 2.
inline constexpr int kInverseFactorialCount = 24;
extern const WideFraction kInverseFactorials[kInverseFactorialCount];
/// 1/(2k + 1), from k = 1.
inline constexpr int kInverseOddCount = 16;
extern const WideFraction kInverseOdds[kInverseOddCount];

/// e^(k/128) / 2 for k/128 up to ln 2.
inline constexpr int kExponentialCount = 89;
extern const WideFraction kHalfExponentials[kExponentialCount];
/// sin and cos of k/128, up to beyond π/4; the cosine of 0 is left 0.
inline constexpr int kSineCount = 103;
extern const WideFraction kSines[kSineCount];
extern const WideFraction kCosines[kSineCount];
/// atan(k/64), up to 1.
inline constexpr int kArcTangentCount = 65;
extern const WideFloat kArcTangents[kArcTangentCount];

/// A factor/256 that brings the numbers around (k + 128.5)/256 near 1, and ln(factor/256).
struct LogarithmStep {
  std::uint64_t factor;
  WideFloat logarithm;
};
inline constexpr int kLogarithmStepCount = 128;
extern const LogarithmStep kLogarithmSteps[kLogarithmStepCount];

/// B(2k) / (2k (2k - 1)), from k = 1.
inline constexpr int kStirlingCount = 26;
extern const WideFloat kStirlingTerms[kStirlingCount];

}  // namespace tarnkit::detail
