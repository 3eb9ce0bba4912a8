#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tarnkit/patches/RGBA.h"

namespace tarnkit::detail {

/// Pieces of XML and HTML, appended to a growing text. All are safe on any thread and linear in
/// what they append.

/// Escaped for character data and for attribute values in double quotes; what must not stand in
/// XML is shown as U+FFFD.
void appendEscaped(std::string& out, std::string_view text);
/// As `appendNumber` writes the number.
std::int64_t hundredthsOf(double number) noexcept;
/// Rounded to hundredths, without needless digits. What is no number reads 0; beyond ten million it
/// is clamped.
void appendNumber(std::string& out, double number);
void appendNumber(std::string& out, std::size_t number);
void appendInteger(std::string& out, std::int64_t number);
/// The key as a part of an id: what is no letter, digit, "_" or "." is written as "-" and two
/// hexadecimal digits, so that different keys give different ids, and "--" can part two keys.
void appendIdPart(std::string& out, std::string_view key);
/// "#rrggbb"; components outside 0 to 1 are clamped, alpha is left out.
void appendColor(std::string& out, RGBA color);

}  // namespace tarnkit::detail
