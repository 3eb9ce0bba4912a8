#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace tarnkit::tool {

/// The work of a command failed (exit status 1). The text is one line, "what, where, why", without
/// the program's name; `main` writes it to standard error.
class CommandFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  CommandFailure(std::string_view what, std::string_view where, std::string_view why)
      : runtime_error(std::string(what) + ", " + std::string(where) + ", " + std::string(why)) {}
};

}  // namespace tarnkit::tool
