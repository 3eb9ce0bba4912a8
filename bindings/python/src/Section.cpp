#include "bindings/python/src/Section.h"

#include <condition_variable>
#include <mutex>

#include "tarnkit/platform/system/Log.h"

namespace tarnkit::python {

namespace {

// Never destroyed: threads may wait while the process ends.
struct Turns {
  std::mutex mutex;
  std::condition_variable ended;
  std::uint64_t count = 0;  // of the ends, guarded by the mutex
  unsigned waiting = 0;     // guarded by the interpreter's lock
  std::vector<Ref<Object>> dropped;
};
Turns& turns() {
  static Turns* const made = new Turns;
  return *made;
}

}  // namespace

void Section::waitForTurn() {
  auto& waited = turns();
  ++waited.waiting;
  while (depth_ != 0) {
    std::uint64_t seen = 0;
    {
      const std::lock_guard lock(waited.mutex);
      seen = waited.count;
    }
    const py::gil_scoped_release released;
    std::unique_lock lock(waited.mutex);
    waited.ended.wait(lock, [&] { return waited.count != seen; });
  }
  --waited.waiting;
}

void Section::didEnd() {
  auto& waited = turns();
  if (!waited.dropped.empty()) std::vector<Ref<Object>>().swap(waited.dropped);
  if (waited.waiting == 0) return;
  {
    const std::lock_guard lock(waited.mutex);
    ++waited.count;
  }
  waited.ended.notify_all();
}

void Section::drop(Ref<Object> object) {
  if (isElsewhere()) turns().dropped.push_back(std::move(object));
}

Told::Told() : outer_(innermost_) { innermost_ = this; }

Told::~Told() {
  innermost_ = outer_;
  for (const auto& line : lines_) tell(line);
}

std::string Told::takeReason() {
  if (lines_.empty()) return "the model refuses it";
  std::string line = std::move(lines_.back());
  lines_.pop_back();
  // "WARNING: [HXGroup] The reason."
  const auto start = line.find("] ");
  if (line.starts_with("WARNING: [") && start != std::string::npos) line.erase(0, start + 2);
  if (line.ends_with('.')) line.pop_back();
  return line;
}

void Told::tell(const std::string& line) {
  if (innermost_) {
    innermost_->lines_.push_back(line);
    return;
  }
  py::error_scope unchanged;
  const auto text = py::reinterpret_steal<py::object>(
      PyUnicode_DecodeUTF8(line.data(), static_cast<Py_ssize_t>(line.size()), "backslashreplace"));
  try {
    py::module_::import("logging").attr("getLogger")("tarnkit").attr("warning")("%s", text);
  } catch (py::error_already_set& failure) {
    failure.discard_as_unraisable("tarnkit");
  }
}

void Told::beginLogging() {
  Log::setSink([](std::string_view line) {
    const py::gil_scoped_acquire acquired;  // an operation may have let go of it
    tell(std::string(line));
  });
  py::module_::import("atexit").attr("register")(py::cpp_function([] { Log::setSink({}); }));
}

}  // namespace tarnkit::python
