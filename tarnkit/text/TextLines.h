#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tarnkit/patches/RGBA.h"

namespace tarnkit::detail {

/// Writes JSON in lines: a member or an element each, what is said of one thing together in one
/// line. Whoever writes a value of a line writes it into `out` or has one of these do it.
class TextLines {
 public:
  std::string& out() noexcept { return out_; }

  void open(char bracket);
  void close(char bracket);
  /// The beginning of a line for an element.
  void element();
  /// The beginning of a line for a member, with its key.
  void member(std::string_view key);

  void text(std::string_view text);
  void textOrNull(bool isNull, std::string_view text);
  void number(float value);
  void integer(std::int64_t value);
  void boolean(bool value) { out_ += value ? "true" : "false"; }
  void numbers(std::initializer_list<float> values);

 private:
  void line();

  std::string out_;
  std::size_t depth_ = 0;
  bool isFirst_ = true;
};

/// Between the parts of an object that stands in one line: `{"a": 1, "b": 2}`.
class InlineObject {
 public:
  explicit InlineObject(TextLines& lines) : lines_(lines) { lines.out() += '{'; }
  void member(std::string_view key);
  void end() { lines_.out() += '}'; }

 private:
  TextLines& lines_;
  bool isFirst_ = true;
};

}  // namespace tarnkit::detail
