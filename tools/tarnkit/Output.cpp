#include "tools/tarnkit/Output.h"

#include <unistd.h>

#include "tarnkit/platform/system/File.h"
#include "tarnkit/platform/system/Log.h"
#include "tools/tarnkit/Command.h"

namespace tarnkit::tool {

namespace {

void writeToStandardOutput(std::string_view what, ByteSpan bytes) {
  std::string error;
  if (!File::writeStream(STDOUT_FILENO, bytes, &error)) {
    throw CommandFailure(what, "standard output", error);
  }
}

}  // namespace

void writeToStandardOutput(std::string_view text) {
  writeToStandardOutput("output", bytesOf(text));
}

std::vector<std::uint8_t> readFile(std::string_view what, const std::string& path) {
  std::vector<std::uint8_t> bytes;
  std::string error;
  if (path == kStandardStream) {
    if (!File::readStream(STDIN_FILENO, bytes, &error)) {
      throw CommandFailure(what, "standard input", error);
    }
    return bytes;
  }
  if (!File::read(path, bytes, &error)) failWithFile(what, path, error);
  return bytes;
}

void writeFile(std::string_view what, const std::string& path, ByteSpan bytes) {
  if (path == kStandardStream) return writeToStandardOutput(what, bytes);
  std::string error;
  if (!File::write(path, bytes, &error)) failWithFile(what, path, error);
}

void complain(std::string_view text) { Log::line("tarnkit: " + oneLine(text)); }

std::string oneLine(std::string_view text) { return Log::oneLine(text); }

void failWithFile(std::string_view what, const std::string& path, std::string_view error) {
  const std::string prefix = path + ": ";
  if (error.substr(0, prefix.size()) == prefix) error.remove_prefix(prefix.size());
  throw CommandFailure(what, path == kStandardStream ? "standard input" : path, error);
}

}  // namespace tarnkit::tool
