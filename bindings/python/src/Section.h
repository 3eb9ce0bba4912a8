#pragma once

#include "bindings/python/src/Python.h"

namespace tarnkit::python {

/// Who is in the model. The model is for one thread, and Python has many: a call into the model is
/// a section, which one thread is in at a time, however often within itself. Other threads wait at
/// its beginning, without the interpreter's lock; those that do not ask the model run on.
///
/// Made and ended with the interpreter's lock held.
class Section {
 public:
  Section() {
    const auto thread = PyThread_get_thread_ident();
    if (depth_ != 0 && thread != owner_) waitForTurn();
    owner_ = thread;
    ++depth_;
  }
  ~Section() {
    if (--depth_ == 0) didEnd();
  }
  Section(const Section&) = delete;
  Section& operator=(const Section&) = delete;

  /// Whether another thread is in the model now.
  static bool isElsewhere() noexcept {
    return depth_ != 0 && PyThread_get_thread_ident() != owner_;
  }
  /// Lets go of an object at once, or, while another thread is in the model, when that one is done.
  static void drop(Ref<Object> object);

  /// Runs a long operation without the interpreter's lock. No other thread gets at the model
  /// meanwhile. What the library logs is told afterwards.
  template <class Operation>
  static auto withoutInterpreter(Operation operation);

 private:
  static void waitForTurn();
  static void didEnd();

  // Guarded by the interpreter's lock.
  static inline unsigned long owner_ = 0;
  static inline unsigned depth_ = 0;
};

/// Takes what the library logs while this lives, so that it can become the reason of an exception.
/// What nobody takes goes to Python's logger "tarnkit" at the end.
class Told {
 public:
  Told();
  ~Told();
  Told(const Told&) = delete;
  Told& operator=(const Told&) = delete;

  /// The last line without its beginning, taken out; "refused" when there is none.
  std::string takeReason();

  /// Makes the process's log Python's, until the interpreter ends.
  static void beginLogging();

 private:
  static void tell(const std::string& line);

  std::vector<std::string> lines_;
  Told* outer_;
  static inline Told* innermost_ = nullptr;
};

template <class Operation>
auto Section::withoutInterpreter(Operation operation) {
  const Section section;
  const Told told;
  const py::gil_scoped_release released;
  return operation();
}

}  // namespace tarnkit::python
