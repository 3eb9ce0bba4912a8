#include "tarnkit/platform/system/Log.h"

#include <fmt/format.h>

#include <cstdio>
#include <string>
#include <utility>

#include "tarnkit/platform/text/UTF8.h"

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
  line(oneLine(fmt::format("WARNING: [{}] {}", className, message)));
}

std::string Log::oneLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const auto [character, size] = detail::codePointAt(text, at);
    if (detail::isControl(character)) {
      line += ' ';
    } else {
      line += text.substr(at, size);
    }
    at += size;
  }
  return line;
}

Log::Sink Log::setSink(Sink sink) { return std::exchange(currentSink(), std::move(sink)); }

}  // namespace tarnkit
