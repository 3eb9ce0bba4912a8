#pragma once

#include <cstddef>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace tarnkit::tool {

/// One step of a script, good while it is visited.
struct ScriptStep {
  /// From 0.
  std::size_t number;
  /// Null for a line that cannot be read.
  const nlohmann::json* operation;
  /// Why not: "line 3, …".
  std::string trouble;
};

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
  /// Receives the steps; answers whether to go on.
  using Visit = std::function<bool(const ScriptStep& step)>;

  explicit Script(std::string_view text);

  /// Throws CommandFailure for an array that is no JSON, and whatever `visit` throws.
  void eachStep(const Visit& visit) const;

  /// Whether a script that begins with the text is an array; a text without anything is none.
  static bool isArray(std::string_view beginning);

 private:
  void eachElement(const Visit& visit) const;

  std::string_view text_;
};

/// The steps of a script of JSON lines that come one by one.
class ScriptLines {
 public:
  explicit ScriptLines(const Script::Visit& visit) : visit_(visit) {}

  /// Visits the step that the line holds, if it holds one; answers whether to go on.
  bool take(std::string_view line);
  /// The same for a line that could not be read at all.
  bool takeUnreadable(std::string_view why);

 private:
  const Script::Visit& visit_;
  std::size_t number_ = 0;
  std::size_t lineNumber_ = 0;
};

}  // namespace tarnkit::tool
