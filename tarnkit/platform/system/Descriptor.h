#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace tarnkit::detail {

/// An open file, or none, that is closed with its owner.
class Descriptor {
 public:
  explicit Descriptor(int number) noexcept : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() {
    const int code = errno;
    if (number_ >= 0) ::close(number_);
    errno = code;
  }
  bool isOpen() const noexcept { return number_ >= 0; }
  int number() const noexcept { return number_; }
  /// Some systems tell only here that the bytes could not be written. After an interrupt the file
  /// is closed all the same.
  bool close() noexcept { return ::close(std::exchange(number_, -1)) == 0 || errno == EINTR; }

 private:
  int number_;
};

/// What a call of the system answers that is made again whenever a signal interrupts it.
template <class Call>
auto retried(Call call) noexcept {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

}  // namespace tarnkit::detail
