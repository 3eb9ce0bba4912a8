#include "tools/tarnkit/Progress.h"

#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <limits>
#include <string_view>

#include "tools/tarnkit/Output.h"

namespace tarnkit::tool {

namespace {

constexpr std::uint64_t kNoCount = std::numeric_limits<std::uint64_t>::max();
constexpr std::size_t kLongestText = 100;

// What the signal handler shows; written only while the timer is off.
char shownText[kLongestText + 64];
std::size_t shownLength = 0;
std::atomic<std::uint64_t> shownCount{kNoCount};
std::atomic<bool> wasShown{false};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

// Only what a signal handler may do.
void show(int) {
  const int error = errno;
  char* end = shownText + shownLength;
  const auto count = shownCount.load(std::memory_order_relaxed);
  if (count != kNoCount) {
    *end++ = ' ';
    end = std::to_chars(end, shownText + sizeof shownText, count).ptr;
  }
  wasShown.store(true, std::memory_order_relaxed);
  [[maybe_unused]] const auto done =
      ::write(STDERR_FILENO, shownText, static_cast<std::size_t>(end - shownText));
  errno = error;
}

void setTimer(time_t seconds) {
  const itimerval timer{{seconds, 0}, {seconds, 0}};
  ::setitimer(ITIMER_REAL, &timer, nullptr);
}

}  // namespace

Progress::Progress(const std::string& doing) : isShown_(::isatty(STDERR_FILENO) == 1) {
  if (!isShown_) return;
  const std::string text = "\rtarnkit: " + oneLine(doing);
  shownLength = std::min(text.size(), kLongestText);
  std::memcpy(shownText, text.data(), shownLength);
  shownCount = kNoCount;
  wasShown = false;
  struct sigaction action {};
  action.sa_handler = &show;
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGALRM, &action, nullptr);
  setTimer(1);
}

Progress::~Progress() {
  if (!isShown_) return;
  setTimer(0);
  std::signal(SIGALRM, SIG_DFL);
  constexpr std::string_view kEraseLine = "\r\x1b[K";
  if (wasShown) {
    [[maybe_unused]] const auto done = ::write(STDERR_FILENO, kEraseLine.data(), kEraseLine.size());
  }
}

void Progress::setCount(std::uint64_t count) noexcept {
  shownCount.store(count, std::memory_order_relaxed);
}

}  // namespace tarnkit::tool
