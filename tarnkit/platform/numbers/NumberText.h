#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnkit {

/// Numbers as text and text as numbers, never depending on the process's locale. Safe on any
/// thread.

/// The fewest digits that read back to the same value, laid out as "%g" does ("0.1", "300",
/// "1e+20"); "inf", "-inf", "nan".
std::string shortestText(float value);
std::string shortestText(double value);
/// C's "%g".
std::string percentG(double value);

/// The leading boolean of a text: true when, after white space, a sign and zeros, there stands one
/// of Y, y, T, t or a digit 1 to 9.
bool readBool(std::string_view text) noexcept;
/// The leading decimal integer of a text after white space; 0 when there is none; saturates.
std::int32_t readInt32(std::string_view text) noexcept;
/// The leading decimal floating-point number of a text after white space; 0 when there is none;
/// huge ones give infinity, tiny ones 0. "inf" and "nan" are not numbers here.
float readFloat(std::string_view text) noexcept;

}  // namespace tarnkit
