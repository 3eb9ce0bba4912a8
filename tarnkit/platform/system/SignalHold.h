#pragma once

#include <csignal>

namespace tarnkit::detail {

/// Keeps signals away from the calling thread for as long as it stands, and gives back the mask
/// that it found. A signal that came meanwhile is delivered at the end, except that of a write
/// which the system refused: the writer has its error, and the signal would end the process.
class SignalHold {
 public:
  enum class Of {
    refusedWrites,  // SIGXFSZ and SIGPIPE
    endings,        // those by which a user or the system ends a process, which it may clean up for
  };

  explicit SignalHold(Of what) noexcept;
  SignalHold(const SignalHold&) = delete;
  SignalHold& operator=(const SignalHold&) = delete;
  ~SignalHold();

  /// Whether a signal is held that will end the process as soon as this goes.
  bool endsProcess() const noexcept;

 private:
  Of what_;
  sigset_t held_;
  sigset_t before_;         // the mask
  sigset_t pendingBefore_;  // somebody else's
};

}  // namespace tarnkit::detail
