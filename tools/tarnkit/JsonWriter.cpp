#include "tools/tarnkit/JsonWriter.h"

#include <fmt/format.h>

#include <iterator>

#include "tarnkit/platform/NumberText.h"
#include "tarnkit/platform/UTF8.h"

namespace tarnkit::tool {

namespace {

constexpr std::size_t kPiece = std::size_t{1} << 16;
constexpr std::uint32_t kReplacement = 0xFFFD;

}  // namespace

void JsonWriter::separate() {
  if (text_.size() >= kPiece) flush();
  if (needsComma_) text_ += ',';
}

void JsonWriter::raw(std::string_view text) {
  separate();
  text_ += text;
  needsComma_ = true;
}

JsonWriter& JsonWriter::beginObject() {
  raw("{");
  needsComma_ = false;
  return *this;
}

JsonWriter& JsonWriter::endObject() {
  text_ += '}';
  needsComma_ = true;
  return *this;
}

JsonWriter& JsonWriter::beginArray() {
  raw("[");
  needsComma_ = false;
  return *this;
}

JsonWriter& JsonWriter::endArray() {
  text_ += ']';
  needsComma_ = true;
  return *this;
}

JsonWriter& JsonWriter::key(std::string_view key) {
  separate();
  quoted(key);
  text_ += ':';
  needsComma_ = false;
  return *this;
}

JsonWriter& JsonWriter::null() {
  raw("null");
  return *this;
}

JsonWriter& JsonWriter::value(bool value) {
  raw(value ? "true" : "false");
  return *this;
}

JsonWriter& JsonWriter::value(std::int64_t value) {
  raw(fmt::format_int(value).c_str());
  return *this;
}

JsonWriter& JsonWriter::value(std::uint64_t value) {
  raw(fmt::format_int(value).c_str());
  return *this;
}

// What ends otherwise ("inf", "nan") is no number of JSON.
void JsonWriter::number(const std::string& text) {
  const char last = text.back();
  if (text == "-0") {
    raw("-0.0");  // most readers take the other for an integer, which has no sign
  } else if (last >= '0' && last <= '9') {
    raw(text);
  } else {
    value(std::string_view(text));
  }
}

JsonWriter& JsonWriter::value(float value) {
  number(shortestText(value));
  return *this;
}

JsonWriter& JsonWriter::value(double value) {
  number(shortestText(value));
  return *this;
}

JsonWriter& JsonWriter::value(std::string_view text) {
  separate();
  quoted(text);
  needsComma_ = true;
  return *this;
}

JsonWriter& JsonWriter::floats(std::initializer_list<float> values) {
  beginArray();
  for (const float component : values) value(component);
  return endArray();
}

void JsonWriter::quoted(std::string_view text) {
  text_ += '"';
  for (std::size_t at = 0; at < text.size();) {
    const auto [codePoint, size] = detail::codePointAt(text, at);
    if (codePoint == '"' || codePoint == '\\') {
      text_ += '\\';
      text_ += static_cast<char>(codePoint);
    } else if (codePoint == '\n') {
      text_ += "\\n";
    } else if (codePoint < 0x20 || codePoint == 0x7F) {
      fmt::format_to(std::back_inserter(text_), "\\u{:04x}", codePoint);
    } else if (codePoint == kReplacement && size == 1) {
      text_ += "\xEF\xBF\xBD";
    } else {
      text_ += text.substr(at, size);
    }
    at += size;
  }
  text_ += '"';
}

void JsonWriter::endLine() {
  text_ += '\n';
  needsComma_ = false;
  if (text_.size() >= kPiece) flush();
}

void JsonWriter::flush() {
  if (!text_.empty()) sink_(text_);
  text_.clear();
}

}  // namespace tarnkit::tool
