#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tarnkit/platform/text/ASCII.h"
#include "tarnkit/platform/text/String.h"
#include "tarnkit/platform/text/UTF8.h"

namespace tarnkit::detail {

/// Text helpers of the engine: UTF-8 reading, lower-casing, and numbers as they are written in
/// expressions. All free functions, none locale-dependent, all linear in their text; safe on any
/// thread.

/// Whether every byte is below 0x80 and none is 0.
bool isPlainText(std::string_view text) noexcept;
/// The text with every byte sequence that is not UTF-8 read as U+FFFD; `text` itself, and nothing
/// stored, when it is well-formed.
std::string_view wellFormed(std::string_view text, std::string& storage);
/// Reads the code point at `at` of well-formed text and moves `at` behind it.
char32_t nextCodePoint(std::string_view text, std::size_t& at) noexcept;
void appendCodePoint(std::string& text, char32_t codePoint);
/// White space and newlines of any script.
bool isBlank(char32_t codePoint) noexcept;
/// One code point in lower case, where that is one code point.
char32_t lowerCasePoint(char32_t codePoint) noexcept;

std::string lowerCase(std::string_view text);
/// The same string object when it is in lower case already.
String lowerCase(const String& text);

/// The value of "12", "1.5", ".5", "2e-3": digits, a point, digits, an exponent, at least one digit
/// in all. Rounded to the nearest double; too large gives infinity.
double readNumber(std::string_view text) noexcept;

}  // namespace tarnkit::detail
