#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tarnkit/platform/objects/Data.h"

namespace tarnkit {

/// Whole files. Nothing here throws for a failure of the system: it gives false, and one sentence
/// with path and cause. Safe on any thread.
class File {
 public:
  /// The most that `read` takes by default.
  static constexpr std::size_t kMaximumSize = std::size_t{1} << 31;

  /// Reads the file into `into`. A directory, a file that cannot be read, and one of more than
  /// `limit` bytes are failures; `into` is then empty.
  static bool read(const std::string& path, std::vector<std::uint8_t>& into,
                   std::string* error = nullptr, std::size_t limit = kMaximumSize);

  /// Writes the file whole or not at all: the bytes are flushed to disk beside the old file and
  /// then take its name. On any failure an old file stays as it was, and nothing is left beside it,
  /// not by SIGINT, SIGTERM or SIGHUP either; what a killed process may leave goes with the next
  /// write of the same file. A file that grows beyond what the system allows is a failure, not the
  /// end of the process.
  ///
  /// An old file's permissions are kept, and its owner and group where the system allows: the bits
  /// that lend their rights only then. Of a symbolic link the file it points to is replaced. What
  /// is no regular file (a device, a pipe) is written straight to.
  static bool write(const std::string& path, ByteSpan bytes, std::string* error = nullptr);

  /// The same for a stream that is open, whose name the caller knows: the reason is the cause
  /// alone. Interrupted calls are made again, and a stream that does not block is waited for.
  /// `expected` bytes, if any are, are made room for at once.
  static bool readStream(int descriptor, std::vector<std::uint8_t>& into,
                         std::string* error = nullptr, std::size_t limit = kMaximumSize,
                         std::size_t expected = 0);
  static bool writeStream(int descriptor, ByteSpan bytes, std::string* error = nullptr);
};

}  // namespace tarnkit
