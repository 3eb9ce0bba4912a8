#include <algorithm>
#include <cmath>

#include "tarnkit/platform/numbers/Decimal.h"
#include "tarnkit/platform/numbers/PowersOfTen.h"

namespace tarnkit {

using detail::UInt128;
using detail::UInt256;

namespace {

/// The whole part of the root of a value whose top two bits are not both clear; `rest` becomes what
/// the square lacks, one bit of which may stand in `carry`.
std::uint64_t rootOf128(UInt128 value, std::uint64_t& rest, bool& carry) noexcept {
  constexpr double kTwoTo64 = 18446744073709551616.0;
  const double estimate = std::sqrt(static_cast<double>(detail::highWord(value))) * 4294967296.0;
  std::uint64_t root =
      estimate >= kTwoTo64 ? ~std::uint64_t{0} : static_cast<std::uint64_t>(estimate);
  // One step of Newton's takes the estimate's 50 bits to all of them but the last one or two.
  const auto whole = static_cast<double>(root);
  const UInt128 square = UInt128{root} * root;
  const bool isLow = square <= value;
  const UInt128 gap = isLow ? value - square : square - value;
  const auto step = static_cast<std::uint64_t>(static_cast<double>(gap) / (2 * whole));
  root = isLow ? (root + step < root ? ~std::uint64_t{0} : root + step) : root - step;
  while (UInt128{root} * root > value) --root;
  while (value - UInt128{root} * root > UInt128{root} * 2) ++root;
  const UInt128 lacking = value - UInt128{root} * root;
  rest = detail::lowWord(lacking);
  carry = detail::highWord(lacking) != 0;
  return root;
}

/// The whole part of the root of a value whose top two bits are not both clear.
UInt128 rootOf256(const UInt256& value) noexcept {
  std::uint64_t rest;
  bool carry;
  const std::uint64_t high = rootOf128(value.high, rest, carry);
  // (rest, next word) / (2 high): the next word of the root, one too large at most.
  const UInt128 half = (detail::joinWords(rest, detail::highWord(value.low)) >> 1) |
                       (carry ? UInt128{1} << 127 : UInt128{0});
  const UInt128 next = half / high;
  UInt128 root = (UInt128{high} << 64) + next;
  if (detail::highWord(next) != 0) root = (UInt128{high} << 64) | ~std::uint64_t{0};
  while (value < detail::multiplyWide(root, root)) --root;
  return root;
}

}  // namespace

Decimal Decimal::squareRoot() const noexcept {
  if (isNaN_ || negative_) return notANumber();
  if (mantissa_ == 0) return *this;
  // 75 or 76 digits, so that the root has 38, and an even exponent.
  int power = 2 * kDigits - detail::digitCount(mantissa_);
  if (((exponent_ - power) & 1) != 0) --power;
  const int first = std::max(power - kDigits, 0);
  const UInt256 value = detail::multiplyWide(mantissa_ * detail::powerOfTen(first),
                                             detail::powerOfTen(power - first));
  const int shift = (256 - bitWidth(value)) & ~1;
  const UInt256 normalized = shift < 128 ? value << shift : UInt256{value.low << (shift - 128), 0};
  const UInt128 root = rootOf256(normalized) >> (shift / 2);
  const UInt256 lacking = value - detail::multiplyWide(root, root);
  const int exponent = (exponent_ - power) / 2;
  if (lacking == UInt256{}) return Decimal(false, root, exponent).compact();
  // (root + 1/2)^2 is root^2 + root + 1/4: a whole number is never equal to it.
  return fitted(false, root + (UInt256{0, root} < lacking ? 1U : 0U), exponent);
}

}  // namespace tarnkit
