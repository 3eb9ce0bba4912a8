#include "tarnkit/patches/catalogue/utility/ScriptSignature.h"

#include <fmt/format.h>
#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <cstdint>
#include <limits>
#include <string>

#include "tarnkit/platform/system/Log.h"

namespace tarnkit::detail {

namespace {

bool endsLine(char16_t c) noexcept {
  return (c >= u'\n' && c <= u'\r') || c == u'\u0085' || c == u'\u2028' || c == u'\u2029';
}

/// The end of the line that `from` stands in, and its last closing parenthesis (-1: none).
struct Line {
  std::int32_t end = 0;
  std::int32_t lastParenthesis = -1;
};

Line lineAt(const icu::UnicodeString& text, std::int32_t from) {
  Line line{from, -1};
  for (; line.end < text.length() && !endsLine(text.charAt(line.end)); ++line.end) {
    if (text.charAt(line.end) == u')') line.lastParenthesis = line.end;
  }
  return line;
}

String toString(const icu::UnicodeString& text) {
  std::string utf8;
  text.toUTF8String(utf8);
  return String(utf8);
}

}  // namespace

// The whole pattern given to the engine would look through a line again for every "function" in it.
// So the engine finds the openings, and the line's last parenthesis is looked up once a line.
String scriptSignature(const String& script) {
  const auto view = script.view();
  if (view.size() > std::numeric_limits<std::int32_t>::max()) return {};  // more than ICU takes
  const auto text = icu::UnicodeString::fromUTF8(
      icu::StringPiece(view.data(), static_cast<std::int32_t>(view.size())));
  UErrorCode status = U_ZERO_ERROR;
  icu::RegexMatcher opening(u"function\\s+expression\\s*\\(", text, UREGEX_CASE_INSENSITIVE,
                            status);
  if (U_FAILURE(status)) {
    Log::line(fmt::format("Regex error: {}", u_errorName(status)));
    return {};
  }
  Line line;
  while (opening.find(status) && U_SUCCESS(status)) {
    const auto start = opening.end(status);
    if (start > line.end) line = lineAt(text, start);
    if (line.lastParenthesis > start) {
      return toString(text.tempSubStringBetween(start, line.lastParenthesis));
    }
  }
  return {};
}

}  // namespace tarnkit::detail
