#include "tools/tarnkit/Output.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "tarnkit/platform/File.h"
#include "tarnkit/platform/Log.h"
#include "tools/tarnkit/Command.h"

namespace tarnkit::tool {

namespace {

[[noreturn]] void failWithSystem(std::string_view what, std::string_view where) {
  throw CommandFailure(what, where, std::generic_category().message(errno));
}

void writeToStandardOutput(std::string_view what, ByteSpan bytes) {
  while (!bytes.empty()) {
    const auto done = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (done < 0 && errno == EINTR) continue;
    if (done < 0) failWithSystem(what, "standard output");
    bytes = bytes.subspan(static_cast<std::size_t>(done));
  }
}

std::vector<std::uint8_t> readStandardInput(std::string_view what) {
  std::vector<std::uint8_t> bytes;
  std::array<std::uint8_t, 1 << 16> piece;
  for (;;) {
    const auto size = ::read(STDIN_FILENO, piece.data(), piece.size());
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) failWithSystem(what, "standard input");
    if (size == 0) return bytes;
    bytes.insert(bytes.end(), piece.begin(), piece.begin() + size);
    if (bytes.size() > File::kMaximumSize) {
      throw CommandFailure(what, "standard input", "it is longer than 2 GiB");
    }
  }
}

}  // namespace

void writeToStandardOutput(std::string_view text) {
  writeToStandardOutput("output", bytesOf(text));
}

std::vector<std::uint8_t> readFile(std::string_view what, const std::string& path) {
  if (path == kStandardStream) return readStandardInput(what);
  std::vector<std::uint8_t> bytes;
  std::string error;
  if (!File::read(path, bytes, &error)) failWithFile(what, path, error);
  return bytes;
}

void writeFile(std::string_view what, const std::string& path, ByteSpan bytes) {
  if (path == kStandardStream) return writeToStandardOutput(what, bytes);
  std::string error;
  if (!File::write(path, bytes, &error)) failWithFile(what, path, error);
}

void complain(std::string_view text) { Log::line("tarnkit: " + oneLine(text)); }

std::string oneLine(std::string_view text) {
  std::string line(text);
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  return line;
}

void failWithFile(std::string_view what, const std::string& path, std::string_view error) {
  const std::string prefix = path + ": ";
  if (error.substr(0, prefix.size()) == prefix) error.remove_prefix(prefix.size());
  throw CommandFailure(what, path == kStandardStream ? "standard input" : path, error);
}

}  // namespace tarnkit::tool
