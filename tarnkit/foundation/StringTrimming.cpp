#include "tarnkit/foundation/StringTrimming.h"

#include <algorithm>
#include <string_view>

#include "tarnkit/platform/text/CharacterSet.h"
#include "tarnkit/platform/text/UTF8.h"

namespace tarnkit {

namespace {

/// The code point that ends the text, which must not be empty; a byte that ends no well-formed
/// sequence is taken alone, as it is when reading forward.
detail::CodePoint lastCodePoint(std::string_view text) noexcept {
  for (std::size_t size = std::min<std::size_t>(text.size(), 4); size > 1; --size) {
    const auto point = detail::codePointAt(text, text.size() - size);
    if (point.size == size) return point;
  }
  return detail::codePointAt(text, text.size() - 1);
}

String withText(const String& string, std::string_view text) {
  return text.size() == string.size() ? string : String(text);
}

}  // namespace

String stringByTrimmingLeadingCharactersInSet(const String& string, const CharacterSet& set) {
  std::string_view text = string.view();
  while (!text.empty()) {
    const auto point = detail::codePointAt(text, 0);
    if (!set.contains(point.value)) break;
    text.remove_prefix(point.size);
  }
  return withText(string, text);
}

String stringByTrimmingTrailingCharactersInSet(const String& string, const CharacterSet& set) {
  std::string_view text = string.view();
  while (!text.empty()) {
    const auto point = lastCodePoint(text);
    if (!set.contains(point.value)) break;
    text.remove_suffix(point.size);
  }
  return withText(string, text);
}

}  // namespace tarnkit
