#include "tarnkit/platform/text/JSONWriter.h"

#include <fmt/format.h>

#include <cassert>
#include <iterator>

#include "tarnkit/platform/numbers/NumberText.h"
#include "tarnkit/platform/text/UTF8.h"

namespace tarnkit {

namespace {

constexpr std::size_t kPiece = std::size_t{1} << 16;

// Whether the ASCII character stands for itself.
bool isPlain(char c, bool inScript) noexcept {
  if (c < 0x20 || c == 0x7F || c == '"' || c == '\\') return false;
  return !inScript || (c != '<' && c != '>' && c != '&');
}

void appendCharacter(std::string& out, std::uint32_t character) {
  if (character == '"' || character == '\\') {
    out += '\\';
    out += static_cast<char>(character);
  } else if (character == '\n') {
    out += "\\n";
  } else {
    fmt::format_to(std::back_inserter(out), "\\u{:04x}", character);
  }
}

// Where a piece of the text may end without parting a character: a malformed run may be parted.
std::size_t endOfPiece(std::string_view text, std::size_t at) noexcept {
  constexpr std::size_t kLongestCharacter = 4;
  if (text.size() - at <= kPiece) return text.size();
  const auto piece = detail::beginningOf(text.substr(at), kPiece);
  return at + (piece.size() + kLongestCharacter > kPiece ? piece.size() : kPiece);
}

}  // namespace

void JSONWriter::appendEscaped(std::string& out, std::string_view text, Escapes escapes) {
  const bool inScript = escapes == Escapes::script;
  std::size_t plain = 0;  // where what stands for itself begins
  for (std::size_t at = 0; at < text.size();) {
    const bool isASCII = static_cast<unsigned char>(text[at]) < 0x80;
    if (isASCII && isPlain(text[at], inScript)) {
      ++at;
      continue;
    }
    const auto [character, size] = detail::codePointAt(text, at);
    const bool isMalformed = !isASCII && size == 1;
    if (isASCII || isMalformed || detail::isControl(character)) {
      out.append(text, plain, at - plain);
      plain = at + size;
      if (isMalformed) {
        out += "\uFFFD";
      } else {
        appendCharacter(out, character);
      }
    }
    at += size;
  }
  out.append(text, plain);
}

void JSONWriter::appendQuoted(std::string& out, std::string_view text, Escapes escapes) {
  out += '"';
  appendEscaped(out, text, escapes);
  out += '"';
}

JSONWriter& JSONWriter::begin(char bracket) {
  assert(isValueDue());
  separate();
  out_ += bracket;
  open_ += bracket;
  needsComma_ = false;
  return *this;
}

JSONWriter& JSONWriter::end(char bracket) {
  assert(isRefused_ || (!open_.empty() && !afterKey_ && (open_.back() == '{') == (bracket == '}')));
  handOnWhenLong();
  open_.pop_back();
  out_ += bracket;
  needsComma_ = true;
  return *this;
}

JSONWriter& JSONWriter::key(std::string_view key) {
  assert(isRefused_ || (!open_.empty() && open_.back() == '{' && !afterKey_));
  separate();
  appendQuoted(out_, key, escapes_);
  out_ += ':';
  needsComma_ = false;
  afterKey_ = true;
  return *this;
}

JSONWriter& JSONWriter::token(std::string_view token) {
  assert(isValueDue());
  separate();
  out_ += token;
  needsComma_ = true;
  return *this;
}

JSONWriter& JSONWriter::value(std::int64_t value) {
  const fmt::format_int digits(value);
  return token({digits.data(), digits.size()});
}

JSONWriter& JSONWriter::value(std::uint64_t value) {
  const fmt::format_int digits(value);
  return token({digits.data(), digits.size()});
}

// What ends otherwise than in a digit ("inf", "nan") is no number of JSON.
JSONWriter& JSONWriter::real(const std::string& text) {
  // Most readers take "-0" for an integer, which has no sign.
  if (text == "-0") return token("-0.0");
  const char last = text.back();
  return last >= '0' && last <= '9' ? token(text) : value(text);
}

JSONWriter& JSONWriter::value(float value) { return real(shortestText(value)); }
JSONWriter& JSONWriter::value(double value) { return real(shortestText(value)); }

JSONWriter& JSONWriter::value(std::string_view text) {
  assert(isValueDue());
  separate();
  out_ += '"';
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = endOfPiece(text, at);
    appendEscaped(out_, text.substr(at, end - at), escapes_);
    handOnWhenLong();
    at = end;
  }
  out_ += '"';
  needsComma_ = true;
  return *this;
}

JSONWriter& JSONWriter::floats(std::initializer_list<float> values) {
  beginArray();
  for (const float component : values) value(component);
  return endArray();
}

void JSONWriter::text(std::string_view text) {
  assert(isRefused_ || open_.empty());
  out_ += text;
}

void JSONWriter::endLine() {
  assert(isRefused_ || open_.empty());
  out_ += '\n';
  needsComma_ = false;
  handOnWhenLong();
}

void JSONWriter::flush() {
  if (!sink_ || out_.empty()) return;
  isRefused_ = true;  // until the sink has taken it
  sink_(out_);
  isRefused_ = false;
  out_.clear();
}

void JSONWriter::separate() {
  handOnWhenLong();
  if (needsComma_) out_ += ',';
  afterKey_ = false;
}

void JSONWriter::handOnWhenLong() {
  if (sink_ && out_.size() >= kPiece) flush();
}

}  // namespace tarnkit
