#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "tarnkit/platform/system/Result.h"

namespace tarnkit::tool {

/// The work of a command failed (exit status 1). The text is one line, "what, where, why", without
/// the program's name; `main` writes it to standard error.
class CommandFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  explicit CommandFailure(const Status& status) : runtime_error(status.message()) {}
  CommandFailure(std::string_view what, std::string_view where, std::string_view why)
      : runtime_error(std::string(what) + ", " + std::string(where) + ", " + std::string(why)),
        why_(why) {}

  /// The reason alone; the whole line where it was made of no parts.
  std::string why() const { return why_.empty() ? what() : why_; }

 private:
  std::string why_;
};

/// Ends a command with an exit status of its own; what there is to say has been said.
struct CommandStatus {
  int status;
};

/// Tells the reason and ends the command with exit status 2.
[[noreturn]] void endWithTrouble(std::string_view why);

/// For commands whose exit status 1 is an answer: does the work, which returns the status, and ends
/// the command with it; with 2, and the failure's line, when it failed.
template <class Work>
void endWithStatus(Work work) {
  int status = 0;
  try {
    status = work();
  } catch (const CommandFailure& failure) {
    endWithTrouble(failure.what());
  }
  if (status != 0) throw CommandStatus{status};
}

/// What the library made. Throws CommandFailure, with the path where there is one, when it failed.
template <class T>
T required(Result<T> result) {
  if (!result) throw CommandFailure(result.status());
  return *std::move(result);
}
inline void require(const Status& status) {
  if (!status) throw CommandFailure(status);
}

}  // namespace tarnkit::tool
