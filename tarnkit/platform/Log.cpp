#include "tarnkit/platform/Log.h"

#include <fmt/format.h>

#include <cstdio>
#include <string>
#include <utility>

namespace tarnkit {

namespace {
Log::Sink& currentSink() {
  static Log::Sink sink;
  return sink;
}
}  // namespace

void Log::line(std::string_view text) {
  if (const auto& sink = currentSink()) {
    sink(text);
  } else {
    // One call a line, and a line that cannot be written is lost: whoever logs does not fail for
    // it.
    const std::string line = fmt::format("{}\n", text);
    std::fwrite(line.data(), 1, line.size(), stderr);
  }
}

void Log::warning(std::string_view className, std::string_view message) {
  line(fmt::format("WARNING: [{}] {}", className, message));
}

Log::Sink Log::setSink(Sink sink) { return std::exchange(currentSink(), std::move(sink)); }

}  // namespace tarnkit
