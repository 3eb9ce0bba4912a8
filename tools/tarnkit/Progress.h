#pragma once

#include <cstdint>
#include <string>

namespace tarnkit::tool {

/// Tells on standard error, when that is a terminal, what is being done, once it takes longer than
/// a second and then every second; the line is gone when the work is done.
///
/// A timer of the process tells it, so that work inside the library shows too, without a thread.
/// One at a time; costs one store for each count.
class Progress {
 public:
  explicit Progress(const std::string& doing);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Shown behind the text.
  void setCount(std::uint64_t count) noexcept;

 private:
  bool isShown_;
};

}  // namespace tarnkit::tool
