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
      : runtime_error(std::string(what) + ", " + std::string(where) + ", " + std::string(why)) {}
};

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
