#include "tarnkit/text/TextLines.h"

#include <fmt/format.h>

#include <bit>
#include <cmath>

#include "tarnkit/platform/numbers/NumberText.h"
#include "tarnkit/platform/text/JSONWriter.h"

namespace tarnkit::detail {

void TextLines::line() {
  if (depth_ == 0) return;
  out_ += isFirst_ ? "\n" : ",\n";
  out_.append(2 * depth_, ' ');
  isFirst_ = false;
}

void TextLines::open(char bracket) {
  out_ += bracket;
  ++depth_;
  isFirst_ = true;
}

void TextLines::close(char bracket) {
  --depth_;
  if (!isFirst_) {
    out_ += '\n';
    out_.append(2 * depth_, ' ');
  }
  out_ += bracket;
  isFirst_ = false;
}

void TextLines::element() { line(); }

void TextLines::member(std::string_view key) {
  line();
  text(key);
  out_ += ": ";
}

void TextLines::text(std::string_view text) { JSONWriter::appendQuoted(out_, text); }

void TextLines::textOrNull(bool isNull, std::string_view text) {
  if (isNull) {
    out_ += "null";
  } else {
    this->text(text);
  }
}

// What is no number of JSON is a text. Of the many values that are no number the usual one is
// "nan", the others have their bits behind that.
void TextLines::number(float value) {
  if (std::isnan(value)) {
    const auto bits = std::bit_cast<std::uint32_t>(value);
    out_ += bits == 0x7FC00000U ? "\"nan\"" : fmt::format("\"nan:{:08x}\"", bits);
  } else if (std::isinf(value)) {
    out_ += value < 0 ? "\"-inf\"" : "\"inf\"";
  } else {
    const std::string digits = shortestText(value);
    out_ += digits == "-0" ? "-0.0" : digits;
  }
}

void TextLines::integer(std::int64_t value) {
  const fmt::format_int digits(value);
  out_.append(digits.data(), digits.size());
}

void TextLines::numbers(std::initializer_list<float> values) {
  char separator = '[';
  for (const float value : values) {
    out_ += separator;
    if (separator == ',') out_ += ' ';
    number(value);
    separator = ',';
  }
  out_ += ']';
}

void InlineObject::member(std::string_view key) {
  if (!isFirst_) lines_.out() += ", ";
  isFirst_ = false;
  lines_.text(key);
  lines_.out() += ": ";
}

}  // namespace tarnkit::detail
