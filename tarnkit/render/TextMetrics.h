#pragma once

#include <string_view>

namespace tarnkit::detail {

/// A face of the fonts in which pictures are set (page/picture.css), at a size in canvas units. The
/// metrics are those of the widest of these fonts, so that what fits by the metrics fits in every
/// other.
struct Font {
  double size = 11;
  bool bold = false;
};

/// As much of a text as fits: whole user-perceived characters from its start. When it is shortened,
/// an ellipsis follows, for which there is room.
struct FittedText {
  std::string_view kept;
  bool shortened = false;
  /// Of what is shown, with the ellipsis.
  double width = 0;
};

/// At least the width of the text as it is shown. Characters of which the metrics know nothing
/// count as the widest of their script. Linear in the text.
double textWidth(std::string_view text, Font font);

/// Linear in what fits, not in the text.
FittedText fitText(std::string_view text, Font font, double width);

/// Whether the first character that has a direction runs from right to left.
bool isRightToLeft(std::string_view text);

/// What is shown in place of the code point: itself, a blank for white space of other kinds, U+FFFD
/// for what XML does not allow and for control characters.
char32_t shownCodePoint(char32_t codePoint) noexcept;

}  // namespace tarnkit::detail
