#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

namespace tarnkit::tool {

/// Writes JSON text as it comes, value by value, and hands it on in pieces: neither the length nor
/// the depth of the text costs memory. Lives as long as one output; for one thread.
class JsonWriter {
 public:
  using Sink = std::function<void(std::string_view)>;
  explicit JsonWriter(Sink sink) : sink_(std::move(sink)) {}

  JsonWriter& beginObject();
  JsonWriter& endObject();
  JsonWriter& beginArray();
  JsonWriter& endArray();
  /// The key of the value that follows.
  JsonWriter& key(std::string_view key);

  JsonWriter& null();
  JsonWriter& value(bool value);
  JsonWriter& value(std::int32_t value) { return this->value(std::int64_t{value}); }
  JsonWriter& value(std::uint32_t value) { return this->value(std::uint64_t{value}); }
  JsonWriter& value(std::int64_t value);
  JsonWriter& value(std::uint64_t value);
  /// The fewest digits that read back to the same value; "inf", "-inf" and "nan" as strings.
  JsonWriter& value(float value);
  JsonWriter& value(double value);
  /// Bytes that are no UTF-8 are replaced by U+FFFD.
  JsonWriter& value(std::string_view text);
  JsonWriter& value(const char* text) { return value(std::string_view(text)); }
  JsonWriter& value(const std::string& text) { return value(std::string_view(text)); }
  JsonWriter& floats(std::initializer_list<float> values);

  /// Text of another kind, before a document.
  void text(std::string_view text) { text_ += text; }
  /// Ends a document: the text so far is followed by a line feed.
  void endLine();
  /// Hands on what is left.
  void flush();

 private:
  void separate();
  void raw(std::string_view text);
  void quoted(std::string_view text);
  void number(const std::string& text);

  Sink sink_;
  std::string text_;
  bool needsComma_ = false;
};

}  // namespace tarnkit::tool
