#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tarnkit/platform/Data.h"

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

  /// Writes the file whole or not at all: the bytes go to a temporary file in the same folder, are
  /// flushed to disk and take the name. On any failure an old file stays as it was and the
  /// temporary file is removed. An old file's permissions are kept, and its owner where the system
  /// allows; of a symbolic link the file it points to is replaced. What is no regular file (a
  /// device, a pipe) is written straight to.
  static bool write(const std::string& path, ByteSpan bytes, std::string* error = nullptr);
};

}  // namespace tarnkit
