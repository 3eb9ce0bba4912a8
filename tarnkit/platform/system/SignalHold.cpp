#include "tarnkit/platform/system/SignalHold.h"

#include <cerrno>
#include <ctime>
#include <initializer_list>

namespace tarnkit::detail {

namespace {

constexpr int kRefusedWrites[] = {SIGXFSZ, SIGPIPE};
constexpr int kEndings[] = {SIGINT, SIGTERM, SIGHUP};

}  // namespace

SignalHold::SignalHold(Of what) noexcept : what_(what) {
  ::sigemptyset(&held_);
  if (what == Of::refusedWrites) {
    for (const int signal : kRefusedWrites) ::sigaddset(&held_, signal);
  } else {
    for (const int signal : kEndings) ::sigaddset(&held_, signal);
  }
  ::pthread_sigmask(SIG_BLOCK, &held_, &before_);
  ::sigpending(&pendingBefore_);
}

SignalHold::~SignalHold() {
  const int code = errno;
  if (what_ == Of::refusedWrites) {
    sigset_t pending;
    ::sigpending(&pending);
    for (const int signal : kRefusedWrites) {
      if (!::sigismember(&pending, signal) || ::sigismember(&pendingBefore_, signal)) continue;
      sigset_t one;
      ::sigemptyset(&one);
      ::sigaddset(&one, signal);
      const timespec atOnce{};
      while (::sigtimedwait(&one, nullptr, &atOnce) < 0 && errno == EINTR) {
      }
    }
  }
  ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  errno = code;
}

bool SignalHold::endsProcess() const noexcept {
  sigset_t pending;
  ::sigpending(&pending);
  for (const int signal : kEndings) {
    if (!::sigismember(&held_, signal) || !::sigismember(&pending, signal)) continue;
    struct sigaction action {};
    if (::sigismember(&before_, signal) || ::sigaction(signal, nullptr, &action) != 0) continue;
    if ((action.sa_flags & SA_SIGINFO) == 0 && action.sa_handler == SIG_DFL) return true;
  }
  return false;
}

}  // namespace tarnkit::detail
