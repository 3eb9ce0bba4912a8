#include "tarnkit/render/TextMetrics.h"

#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <memory>
#include <string_view>

#include "tarnkit/platform/text/UTF8.h"
#include "tarnkit/render/TextAdvances.h"

namespace tarnkit::detail {

namespace {

constexpr std::uint32_t kEllipsis = 0x2026;
// How much of a text is looked at for a place to cut, and for its direction.
constexpr std::size_t kLongestLook = 1024;

struct WideRange {
  std::uint32_t first;
  std::uint32_t last;
  double advance;
};
// Characters far wider than others of their kind.
constexpr WideRange kWide[] = {
    {0x2030, 0x2031, 1.9},  {0x27F0, 0x27FF, 1.5},   {0x2A0C, 0x2A0C, 1.7},
    {0x2E3A, 0x2E3B, 3.0},  {0x0BF3, 0x0BFA, 2.5},   {0xA9C1, 0xA9CF, 3.5},
    {0xFDF0, 0xFDFC, 4.0},  {0xFDFD, 0xFDFD, 11.0},  {0x12000, 0x1254F, 5.0},
    {0x16A0, 0x18FF, 1.7},  {0x1F000, 0x1FAFF, 1.4}, {0x1F100, 0x1F1FF, 1.6},
    {0x10300, 0x1FFFF, 1.7}};

double untabledAdvance(std::uint32_t codePoint) {
  const auto c = static_cast<UChar32>(codePoint);
  switch (u_charType(c)) {
    case U_NON_SPACING_MARK:
    case U_ENCLOSING_MARK:
    case U_FORMAT_CHAR:
      return 0;
    default:
      break;
  }
  for (const WideRange& range : kWide) {
    if (codePoint >= range.first && codePoint <= range.last) return range.advance;
  }
  const int width = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
  if (width == U_EA_WIDE || width == U_EA_FULLWIDTH) return 1.05;
  if (codePoint >= 0xFB00 && codePoint < 0xFF00) return 1.55;  // ligatures, presentation forms
  return codePoint >= 0x2000 && codePoint < 0x2070 ? 1.05 : 1.45;
}

double advance(std::uint32_t codePoint, bool bold) {
  const std::uint8_t tabled = tabledAdvance(codePoint, bold);
  return tabled != kNoAdvance ? tabled / 100.0 : untabledAdvance(codePoint);
}

// Where the last user-perceived character that ends at or before `limit` ends.
std::size_t characterEnd(std::string_view text, std::size_t limit) {
  UErrorCode status = U_ZERO_ERROR;
  thread_local const std::unique_ptr<icu::BreakIterator> iterator(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  if (!iterator) return 0;
  UText utext = UTEXT_INITIALIZER;
  utext_openUTF8(&utext, text.data(), static_cast<std::int64_t>(text.size()), &status);
  iterator->setText(&utext, status);
  std::size_t end = 0;
  if (U_SUCCESS(status)) {
    const auto at = static_cast<std::int32_t>(limit);
    const auto boundary = iterator->isBoundary(at) != 0 ? at : iterator->preceding(at);
    if (boundary > 0) end = static_cast<std::size_t>(boundary);
  }
  utext_close(&utext);
  return end;
}

}  // namespace

char32_t shownCodePoint(char32_t codePoint) noexcept {
  if (codePoint >= 0x20 && codePoint < 0x7F) return codePoint;
  if (codePoint == '\t' || codePoint == '\n' || codePoint == '\r' || codePoint == 0x85 ||
      codePoint == 0x2028 || codePoint == 0x2029) {
    return U' ';
  }
  if (codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0)) return 0xFFFD;
  if ((codePoint >= 0xD800 && codePoint < 0xE000) || (codePoint & 0xFFFE) == 0xFFFE ||
      codePoint > 0x10FFFF) {
    return 0xFFFD;
  }
  return codePoint;
}

double textWidth(std::string_view text, Font font) {
  double width = 0;
  for (std::size_t at = 0; at < text.size();) {
    const CodePoint point = codePointAt(text, at);
    width += advance(shownCodePoint(point.value), font.bold);
    at += point.size;
  }
  return width * font.size;
}

FittedText fitText(std::string_view text, Font font, double width) {
  const double room = width / font.size;
  const double ellipsis = advance(kEllipsis, font.bold);
  double used = 0;
  std::size_t cut = 0;  // behind the last code point that leaves room for an ellipsis
  double usedAtCut = 0;
  std::size_t at = 0;
  while (at < text.size()) {
    const CodePoint point = codePointAt(text, at);
    used += advance(shownCodePoint(point.value), font.bold);
    // A pile of marks takes no width and would be taken whole, however high it is.
    if (used > room || (at >= kLongestLook && at + point.size < text.size())) break;
    at += point.size;
    if (used + ellipsis <= room) {
      cut = at;
      usedAtCut = used;
    }
  }
  if (at >= text.size()) return {text, false, used * font.size};
  const std::string_view looked = text.substr(0, std::min(text.size(), cut + kLongestLook));
  const bool simple = isASCII(looked.substr(0, std::min(looked.size(), cut + 1)));
  const std::size_t end = simple ? cut : characterEnd(looked, cut);
  assert(end <= cut);
  if (end != cut) usedAtCut = textWidth(looked.substr(0, end), {1, font.bold});
  std::string_view kept = text.substr(0, end);
  while (!kept.empty() && kept.back() == ' ') kept.remove_suffix(1);
  return {kept, true, (usedAtCut + ellipsis) * font.size};
}

bool isRightToLeft(std::string_view text) {
  text = text.substr(0, kLongestLook);
  for (std::size_t at = 0; at < text.size();) {
    const CodePoint point = codePointAt(text, at);
    at += point.size;
    if (point.value < 0x80) {
      const std::uint32_t letter = point.value | 0x20;
      if (letter >= 'a' && letter <= 'z') return false;
      continue;
    }
    switch (u_charDirection(static_cast<UChar32>(point.value))) {
      case U_RIGHT_TO_LEFT:
      case U_RIGHT_TO_LEFT_ARABIC:
        return true;
      case U_LEFT_TO_RIGHT:
        return false;
      default:
        break;
    }
  }
  return false;
}

}  // namespace tarnkit::detail
