#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

namespace tarnkit {

/// Writes JSON as it comes, value by value, without white space. Commas are its own affair; that
/// keys stand in objects only, one before each value, and that what was begun is ended, is the
/// caller's (asserted). Linear in what it writes, a byte a level of depth. Lives as long as one
/// output; for one thread.
///
/// Texts are escaped by one rule, since files are shown on terminals: `"`, `\`, the control
/// characters of both sets (up to U+001F, U+007F to U+009F), what turns the direction of the text
/// around it (U+061C, U+200E, U+200F, U+202A to U+202E, U+2066 to U+2069) and the separators U+2028
/// and U+2029 are, "\n" by its short form and the others as \uxxxx; every byte that belongs to no
/// well-formed UTF-8 is written as U+FFFD; all else stands for itself.
class JSONWriter {
 public:
  enum class Escapes : std::uint8_t {
    plain,
    /// `<`, `>` and `&` too, so that the text may stand in a <script> element whatever it holds.
    script,
  };
  using Sink = std::function<void(std::string_view)>;

  /// Appends to the text, which must outlive the writer.
  explicit JSONWriter(std::string& out, Escapes escapes = Escapes::plain)
      : out_(out), escapes_(escapes) {}
  /// Hands the text on in pieces of about 64 KiB, so that its length costs no memory. What is left
  /// at the end is handed on by `flush`. What the sink throws goes to whoever writes.
  explicit JSONWriter(Sink sink, Escapes escapes = Escapes::plain)
      : sink_(std::move(sink)), out_(piece_), escapes_(escapes) {}
  JSONWriter(const JSONWriter&) = delete;
  JSONWriter& operator=(const JSONWriter&) = delete;

  JSONWriter& beginObject() { return begin('{'); }
  JSONWriter& endObject() { return end('}'); }
  JSONWriter& beginArray() { return begin('['); }
  JSONWriter& endArray() { return end(']'); }
  /// The key of the value that follows.
  JSONWriter& key(std::string_view key);

  JSONWriter& null() { return token("null"); }
  JSONWriter& value(bool value) { return token(value ? "true" : "false"); }
  JSONWriter& value(std::int32_t value) { return this->value(std::int64_t{value}); }
  JSONWriter& value(std::uint32_t value) { return this->value(std::uint64_t{value}); }
  JSONWriter& value(std::int64_t value);
  JSONWriter& value(std::uint64_t value);
  /// The fewest digits that read back to the same value; the strings "inf", "-inf" and "nan" for
  /// what is no number of JSON; "-0.0" for a zero below zero.
  JSONWriter& value(float value);
  JSONWriter& value(double value);
  JSONWriter& value(std::string_view text);
  JSONWriter& value(const char* text) { return value(std::string_view(text)); }
  JSONWriter& value(const std::string& text) { return value(std::string_view(text)); }
  JSONWriter& floats(std::initializer_list<float> values);
  /// A number whose digits somebody else has written.
  JSONWriter& number(std::string_view digits) { return token(digits); }

  /// Text of another kind, before a document.
  void text(std::string_view text);
  /// Ends a document: the text so far is followed by a line feed.
  void endLine();
  void flush();

  /// The text alone, without and with its quotation marks.
  static void appendEscaped(std::string& out, std::string_view text,
                            Escapes escapes = Escapes::plain);
  static void appendQuoted(std::string& out, std::string_view text,
                           Escapes escapes = Escapes::plain);

 private:
  JSONWriter& begin(char bracket);
  JSONWriter& end(char bracket);
  JSONWriter& token(std::string_view token);
  JSONWriter& real(const std::string& text);
  bool isValueDue() const noexcept {
    return open_.empty() || open_.back() == '[' || afterKey_ || isRefused_;
  }
  void separate();
  void handOnWhenLong();

  Sink sink_;
  std::string piece_;
  std::string& out_;
  std::string open_;  // the brackets of what was begun and not ended
  Escapes escapes_;
  bool needsComma_ = false;
  bool afterKey_ = false;
  bool isRefused_ = false;  // the sink has thrown, and nobody knows what was begun and not ended
};

}  // namespace tarnkit
