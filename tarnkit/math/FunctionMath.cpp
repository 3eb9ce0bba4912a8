#include "tarnkit/math/FunctionMath.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

namespace tarnkit::detail::math {

namespace {

constexpr std::int64_t kIntegerBits = 64;

template <class Integer>
Integer saturate(double x) noexcept {
  using Limits = std::numeric_limits<Integer>;
  if (std::isnan(x)) return 0;
  if (x <= static_cast<double>(Limits::min())) return Limits::min();
  if (x >= static_cast<double>(Limits::max())) return Limits::max();
  return static_cast<Integer>(x);
}

// The factorials that a double can hold. The gamma function is off by some units in the last place
// here; products of pairs of doubles are not.
constexpr std::size_t kFactorials = 171;
std::array<double, kFactorials> factorials() noexcept {
  std::array<double, kFactorials> all{};
  double high = 1;
  double low = 0;
  for (std::size_t i = 0; i < kFactorials; ++i) {
    if (i > 0) {
      const auto factor = static_cast<double>(i);
      const double product = high * factor;
      const double error = std::fma(high, factor, -product) + low * factor;
      high = product + error;
      low = error - (high - product);
    }
    all[i] = high;
  }
  return all;
}

double fromInteger(std::int64_t value) noexcept { return static_cast<double>(value); }

}  // namespace

std::int64_t toInteger(double x) noexcept { return saturate<std::int64_t>(x); }
std::uint32_t toUnsigned32(double x) noexcept { return saturate<std::uint32_t>(x); }

double bitAnd(double x, double y) noexcept { return fromInteger(toInteger(x) & toInteger(y)); }
double bitOr(double x, double y) noexcept { return fromInteger(toInteger(x) | toInteger(y)); }
double bitXor(double x, double y) noexcept { return fromInteger(toInteger(x) ^ toInteger(y)); }
double bitNot(double x) noexcept { return fromInteger(~toInteger(x)); }

std::int64_t shiftLeft(std::int64_t value, std::int64_t count) noexcept {
  if (count < 0 || count >= kIntegerBits) return 0;
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(value) << count);
}

std::int64_t shiftRight(std::int64_t value, std::int64_t count) noexcept {
  if (count < 0 || count >= kIntegerBits) return value < 0 ? -1 : 0;
  return value >> count;
}

double shiftLeft(double x, double y) noexcept {
  return fromInteger(shiftLeft(toInteger(x), toInteger(y)));
}

double shiftRight(double x, double y) noexcept {
  return fromInteger(shiftRight(toInteger(x), toInteger(y)));
}

double factorial(double x) noexcept {
  static const auto exact = factorials();
  if (x >= 0 && x < static_cast<double>(kFactorials) && std::trunc(x) == x) {
    return exact[static_cast<std::size_t>(x)];
  }
  const double gamma = std::tgamma(x + 1);
  return std::trunc(x) == x ? std::round(gamma) : gamma;
}

double sum(const double* values, std::size_t count) noexcept {
  double total = values[0];
  for (std::size_t i = 1; i < count; ++i) total += values[i];
  return total;
}

double average(const double* values, std::size_t count) noexcept {
  return sum(values, count) / static_cast<double>(count);
}

double minimum(const double* values, std::size_t count) noexcept {
  double smallest = values[0];
  for (std::size_t i = 1; i < count; ++i) smallest = smaller(smallest, values[i]);
  return smallest;
}

double maximum(const double* values, std::size_t count) noexcept {
  double largest = values[0];
  for (std::size_t i = 1; i < count; ++i) largest = larger(largest, values[i]);
  return largest;
}

double median(const double* values, std::size_t count) {
  std::vector<double> sorted(values, values + count);
  const auto nan = std::find_if(sorted.begin(), sorted.end(), [](double x) { return x != x; });
  if (nan != sorted.end()) return *nan;
  std::sort(sorted.begin(), sorted.end());
  const std::size_t middle = count / 2;
  return count % 2 == 1 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
}

double standardDeviation(const double* values, std::size_t count) noexcept {
  const double center = average(values, count);
  double squares = 0;
  for (std::size_t i = 0; i < count; ++i) squares += (values[i] - center) * (values[i] - center);
  return std::sqrt(squares / static_cast<double>(count));
}

}  // namespace tarnkit::detail::math
