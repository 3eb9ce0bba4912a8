#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string_view>

namespace tarnkit::tool {

/// A script: the operations of an editing session as a JSON array, or as JSON lines (one operation
/// a line, empty lines aside). Which of the two it is, is told by its first character.
///
/// Operations are read one after the other, so a script takes no more memory than its longest
/// operation; an array is checked to its end first. Refers to the text, which must outlive it.
class Script {
 public:
  /// How deep an operation may nest its values.
  static constexpr int kMaximumDepth = 16;

  using Json = nlohmann::json;
  /// Receives the number (from 0) and the JSON of each operation.
  using Visit = std::function<void(std::size_t number, const Json& operation)>;

  explicit Script(std::string_view text);

  /// Throws CommandFailure for text that is no JSON, and whatever `visit` throws.
  void eachOperation(const Visit& visit) const;

 private:
  void eachElement(const Visit& visit) const;
  void eachLine(const Visit& visit) const;

  std::string_view text_;
};

}  // namespace tarnkit::tool
