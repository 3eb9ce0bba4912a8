#pragma once

#include <array>

#include "tarnkit/platform/numbers/WideIntegers.h"

/// Powers of ten and division by them, for decimal arithmetic. Constant data.
namespace tarnkit::detail {

/// 10^38 has 127 bits.
inline constexpr int kLargestPowerOfTen = 38;
/// 10^19 has 64 bits.
inline constexpr int kLargestPowerOfTenInWord = 19;

struct PowerOfTen {
  UInt128 value;
  UInt128 divisor;  // the value with its top bit at the top
  UInt128 inverse;  // of the divisor, as `divideByInverse` wants it
  int shift;        // from the value to the divisor
};

consteval std::array<PowerOfTen, kLargestPowerOfTen + 1> makePowersOfTen() {
  std::array<PowerOfTen, kLargestPowerOfTen + 1> powers{};
  UInt128 value = 1;
  for (PowerOfTen& power : powers) {
    power.value = value;
    power.shift = 128 - bitWidth(value);
    power.divisor = value << power.shift;
    UInt128 rest = ~power.divisor;
    for (int bit = 0; bit < 128; ++bit) {
      const bool carries = (rest >> 127) != 0;
      rest = (rest << 1) | 1;
      power.inverse <<= 1;
      if (carries || rest >= power.divisor) {
        rest -= power.divisor;
        power.inverse |= 1;
      }
    }
    value *= 10;
  }
  return powers;
}

inline constexpr std::array<PowerOfTen, kLargestPowerOfTen + 1> kPowersOfTen = makePowersOfTen();

/// 10^exponent, exponent from 0 to 38.
constexpr UInt128 powerOfTen(int exponent) noexcept {
  return kPowersOfTen[static_cast<std::size_t>(exponent)].value;
}

/// The quotient by a power of ten, which must fit 128 bits, and the remainder times 2^shift, which
/// compares with the power's divisor as the remainder does with its value.
constexpr UInt128 divideByPower(const UInt256& dividend, const PowerOfTen& power,
                                UInt128& shiftedRemainder) noexcept {
  return divideByInverse(dividend << power.shift, power.divisor, power.inverse, shiftedRemainder);
}

/// The quotient by 10^exponent, which must fit 128 bits, and the remainder.
constexpr UInt128 divideByPowerOfTen(const UInt256& dividend, int exponent,
                                     UInt128& remainder) noexcept {
  const PowerOfTen& power = kPowersOfTen[static_cast<std::size_t>(exponent)];
  const UInt128 quotient = divideByPower(dividend, power, remainder);
  remainder >>= power.shift;
  return quotient;
}

/// 10^77 has 256 bits.
inline constexpr int kLargestWidePowerOfTen = 77;

consteval std::array<UInt256, kLargestWidePowerOfTen + 1> makeWidePowersOfTen() {
  std::array<UInt256, kLargestWidePowerOfTen + 1> powers{};
  UInt256 value{0, 1};
  for (UInt256& power : powers) {
    power = value;
    value = (value << 3) + (value << 1);
  }
  return powers;
}

inline constexpr std::array<UInt256, kLargestWidePowerOfTen + 1> kWidePowersOfTen =
    makeWidePowersOfTen();

/// 10^-exponent to 192 bits.
struct ReciprocalOfPower {
  // floor(2^(191 + width) / 10^exponent), which has 192 bits.
  std::uint64_t high;
  std::uint64_t middle;
  std::uint64_t low;
  int width;  // how many bits the power has
};

/// From the first power by which a number of 193 bits is divided to leave 38 digits.
inline constexpr int kLeastReciprocal = 20;

consteval std::array<ReciprocalOfPower, kLargestPowerOfTen + 1 - kLeastReciprocal>
makeReciprocals() {
  std::array<ReciprocalOfPower, kLargestPowerOfTen + 1 - kLeastReciprocal> reciprocals{};
  int exponent = kLeastReciprocal;
  for (ReciprocalOfPower& reciprocal : reciprocals) {
    const UInt128 power = kPowersOfTen[static_cast<std::size_t>(exponent++)].value;
    reciprocal.width = bitWidth(power);
    UInt256 quotient{0, 1};
    UInt128 rest = (UInt128{1} << reciprocal.width) - power;
    for (int bit = 1; bit < 192; ++bit) {
      rest <<= 1;
      quotient = quotient << 1;
      if (rest < power) continue;
      rest -= power;
      quotient.low |= 1;
    }
    reciprocal.high = lowWord(quotient.high);
    reciprocal.middle = highWord(quotient.low);
    reciprocal.low = lowWord(quotient.low);
  }
  return reciprocals;
}

inline constexpr auto kReciprocalsOfPowers = makeReciprocals();

/// floor(bits × log10(2)), exact for bits from 0 to 680.
constexpr int decimalDigitsOfBits(int bits) noexcept { return (bits * 1233) >> 12; }

/// How many decimal digits the value has; 0 has none.
constexpr int digitCount(UInt128 value) noexcept {
  if (value == 0) return 0;
  const int least = decimalDigitsOfBits(bitWidth(value) - 1) + 1;
  return least <= kLargestPowerOfTen && value >= powerOfTen(least) ? least + 1 : least;
}

/// The same of a value that is not 0.
constexpr int digitCount(const UInt256& value) noexcept {
  const int least = decimalDigitsOfBits(bitWidth(value) - 1) + 1;
  return least + (value < kWidePowersOfTen[static_cast<std::size_t>(least)] ? 0 : 1);
}

}  // namespace tarnkit::detail
