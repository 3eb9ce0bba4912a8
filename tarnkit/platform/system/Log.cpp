#include "tarnkit/platform/system/Log.h"

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
  line(oneLine(fmt::format("WARNING: [{}] {}", className, message)));
}

std::string Log::oneLine(std::string_view text) {
  // The second set of control characters is two bytes each.
  constexpr unsigned char kHigh = 0xC2;
  std::string line;
  line.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    const bool isHigh = byte == kHigh && next >= 0x80 && next < 0xA0;
    if (isHigh) ++i;
    line += isHigh || byte < 0x20 || byte == 0x7F ? ' ' : static_cast<char>(byte);
  }
  return line;
}

Log::Sink Log::setSink(Sink sink) { return std::exchange(currentSink(), std::move(sink)); }

}  // namespace tarnkit
