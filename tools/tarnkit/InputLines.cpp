#include "tools/tarnkit/InputLines.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <stdexcept>

namespace tarnkit::tool {

bool InputLines::next() {
  // The room of an uncommonly long line is not kept for the others.
  constexpr std::size_t kKept = std::size_t{1} << 20;
  if (line_.capacity() > kKept) line_ = std::string();
  line_.clear();
  isLost_ = false;
  for (bool isBegun = false;; isBegun = true) {
    if (at_ == end_ && !fill()) return isBegun && status_;
    const char* const from = piece_.data() + at_;
    const char* const end = piece_.data() + end_;
    const char* const feed = std::find(from, end, '\n');
    append({from, static_cast<std::size_t>(feed - from)});
    at_ = static_cast<std::size_t>(feed - piece_.data()) + (feed != end ? 1 : 0);
    if (feed != end) return true;
  }
}

void InputLines::append(std::string_view part) {
  if (isLost_) return;
  try {
    line_ += part;
    return;
  } catch (const std::bad_alloc&) {
    isLost_ = true;
  } catch (const std::length_error&) {
    isLost_ = true;
  }
  line_ = std::string();
}

bool InputLines::fill() {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  if (::poll(&input, 1, 0) == 0) beforeWaiting_();
  for (;;) {
    const auto size = ::read(STDIN_FILENO, piece_.data(), piece_.size());
    if (size < 0 && errno == EINTR) continue;
    if (size < 0 && errno == EAGAIN) {
      ::poll(&input, 1, -1);
      continue;
    }
    if (size < 0) status_ = Status::ofSystem(errno);
    if (size <= 0) return false;
    at_ = 0;
    end_ = static_cast<std::size_t>(size);
    return true;
  }
}

}  // namespace tarnkit::tool
