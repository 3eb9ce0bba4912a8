#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "tarnkit/platform/system/Status.h"

namespace tarnkit::tool {

/// The lines of standard input, read as they come. A line may be as long as memory allows; one for
/// which there is not enough is lost alone.
class InputLines {
 public:
  /// `beforeWaiting` is called when no more input waits to be read.
  explicit InputLines(std::function<void()> beforeWaiting)
      : beforeWaiting_(std::move(beforeWaiting)) {}

  /// Goes on to the next line; false at the end, or when reading fails.
  bool next();
  /// The line without its line feed; good until `next`.
  const std::string& line() const noexcept { return line_; }
  /// Whether the line was too long for the memory.
  bool isLost() const noexcept { return isLost_; }
  /// What ended the reading: ok at the end of the input.
  const Status& status() const noexcept { return status_; }

 private:
  bool fill();
  void append(std::string_view part);

  std::function<void()> beforeWaiting_;
  std::array<char, std::size_t{1} << 16> piece_;
  std::size_t at_ = 0;
  std::size_t end_ = 0;
  std::string line_;
  bool isLost_ = false;
  Status status_;
};

}  // namespace tarnkit::tool
