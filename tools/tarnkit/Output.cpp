#include "tools/tarnkit/Output.h"

#include <unistd.h>

#include <utility>

#include "tarnkit/platform/system/File.h"
#include "tarnkit/platform/system/Log.h"
#include "tools/tarnkit/Command.h"

namespace tarnkit::tool {

namespace {

void writeToStandardOutput(std::string_view what, ByteSpan bytes) {
  const auto status = File::writeStream(STDOUT_FILENO, bytes);
  if (!status) throw CommandFailure(what, "standard output", status.sentence());
}

}  // namespace

void writeToStandardOutput(std::string_view text) {
  writeToStandardOutput("output", bytesOf(text));
}

std::vector<std::uint8_t> readFile(std::string_view what, const std::string& path) {
  static bool isStreamRead = false;
  if (path == kStandardStream && std::exchange(isStreamRead, true)) {
    failWithFile(what, path, "it is named twice, and can be read once only");
  }
  auto bytes = path == kStandardStream ? File::readStream(STDIN_FILENO) : File::read(path);
  if (!bytes) failWithFile(what, path, bytes.status());
  return *std::move(bytes);
}

void writeFile(std::string_view what, const std::string& path, ByteSpan bytes) {
  if (path == kStandardStream) return writeToStandardOutput(what, bytes);
  const auto status = File::write(path, bytes);
  if (!status) failWithFile(what, path, status);
}

void writeFileInPieces(std::string_view what, const std::string& path,
                       FunctionRef<void(OutputPieces)> write) {
  if (path == kStandardStream) {
    write([&](std::string_view piece) { writeToStandardOutput(what, bytesOf(piece)); });
    return;
  }
  // Once a piece is refused the rest is made for nothing.
  const auto status = File::write(path, [&](File::Piece take) {
    bool isTaken = true;
    write([&](std::string_view piece) { isTaken = isTaken && take(bytesOf(piece)); });
    return isTaken;
  });
  if (!status) failWithFile(what, path, status);
}

void complain(std::string_view text) { Log::line("tarnkit: " + oneLine(text)); }

void endWithTrouble(std::string_view why) {
  complain(why);
  throw CommandStatus{2};
}

std::string oneLine(std::string_view text) { return Log::oneLine(text); }

void failWithFile(std::string_view what, const std::string& path, std::string_view why) {
  throw CommandFailure(what, path == kStandardStream ? "standard input" : path, why);
}

void failWithFile(std::string_view what, const std::string& path, const Status& status) {
  failWithFile(what, path, status.path() == path ? status.sentence() : status.message());
}

}  // namespace tarnkit::tool
