#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/objects/FunctionRef.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit {

/// Whole files. A failure of the system comes back with the path and the system's own words. Safe
/// on any thread.
class File {
 public:
  /// The most that `read` takes by default.
  static constexpr std::size_t kMaximumSize = std::size_t{1} << 31;

  /// What stands in the file. A directory, a file that cannot be read, and one of more than `limit`
  /// bytes are failures.
  static Result<std::vector<std::uint8_t>> read(const std::string& path,
                                                std::size_t limit = kMaximumSize);

  /// Writes the file whole or not at all: the bytes are flushed to disk beside the old file and
  /// then take its name. On any failure an old file stays as it was, and nothing is left beside it,
  /// not by SIGINT, SIGTERM or SIGHUP either; what a killed process may leave goes with the next
  /// write of the same file. A file that grows beyond what the system allows is a failure, not the
  /// end of the process.
  ///
  /// An old file's permissions are kept, and its owner and group where the system allows: the bits
  /// that lend their rights only then. Of a symbolic link the file it points to is replaced. What
  /// is no regular file (a device, a pipe) is written straight to.
  static Status write(const std::string& path, ByteSpan bytes);

  /// Takes the next bytes of a file; false once they cannot be written, and nothing more is wanted.
  using Piece = FunctionRef<bool(ByteSpan)>;
  /// Hands over a file from its beginning to its end, and tells whether all was taken. Asked again
  /// where the file has to be written a second time.
  using Contents = FunctionRef<bool(Piece)>;
  /// The same for a file that never stands in memory as a whole.
  static Status write(const std::string& path, Contents contents);

  /// The same for a stream that is open, whose name the caller knows: a failure has no path.
  /// Interrupted calls are made again, and a stream that does not block is waited for. `expected`
  /// bytes, if any are, are made room for at once.
  static Result<std::vector<std::uint8_t>> readStream(int descriptor,
                                                      std::size_t limit = kMaximumSize,
                                                      std::size_t expected = 0);
  static Status writeStream(int descriptor, ByteSpan bytes);

  /// The directory in which the file of that path stands; "." where the path names none.
  static std::string directoryOf(const std::string& path);
  /// Makes the directory, and those above it, where they are missing.
  static Status makeDirectory(const std::string& path);
};

}  // namespace tarnkit
