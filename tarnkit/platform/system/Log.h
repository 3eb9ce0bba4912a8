#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tarnkit {

/// The process's log: one line a call, given to one replaceable sink (standard error by default,
/// where a line that cannot be written is lost).
/// For one thread.
class Log {
 public:
  using Sink = std::function<void(std::string_view line)>;

  static void line(std::string_view text);
  /// "WARNING: [CLASS] MESSAGE" as one line: how every failure that is not raised is told.
  static void warning(std::string_view className, std::string_view message);
  /// The text with blanks for its control characters: names out of files may hold anything, and are
  /// shown within lines and on terminals.
  static std::string oneLine(std::string_view text);
  /// Replaces the sink and returns the earlier one; an empty function restores standard error.
  static Sink setSink(Sink sink);
};

}  // namespace tarnkit
