#pragma once

#include <charconv>

namespace tarnkit::detail {

/// `std::from_chars` for floating-point numbers, which not every standard library has.
#ifdef __cpp_lib_to_chars
template <class Real>
std::from_chars_result readReal(const char* first, const char* last, Real& value) noexcept {
  return std::from_chars(first, last, value);
}
#else
std::from_chars_result readReal(const char* first, const char* last, double& value) noexcept;
std::from_chars_result readReal(const char* first, const char* last, float& value) noexcept;
#endif

}  // namespace tarnkit::detail
