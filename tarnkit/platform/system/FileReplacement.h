#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/system/File.h"
#include "tarnkit/platform/system/Status.h"

struct stat;

namespace tarnkit::detail {

/// How a file's new contents are kept until they are whole.
enum class Naming {
  whenWhole,     // without a name where the system offers that: whatever happens, nothing is left
  fromTheStart,  // as a temporary file beside the old one
};

/// Puts new contents in the place of a file, or of none when `old` is null, so that at any moment
/// one or the other stands there whole. They are flushed to disk first. A failure leaves the old
/// file and nothing else; it names no path, since `target` may not be the name that the caller was
/// given.
///
/// A temporary file is removed when SIGINT, SIGTERM or SIGHUP reaches the writing thread and ends
/// the process meanwhile (where other threads take signals, it stays for the next write). One whose
/// writer was killed goes with the next replacement of the same file: a writer holds a lock on its
/// own, so that none in use is mistaken for a stale one.
Status replaceFile(const std::string& target, File::Contents contents, const struct stat* old,
                   Naming naming = Naming::whenWhole);

/// All of the bytes to an open file or stream, waiting where it does not block; false with `errno`.
bool writeAll(int file, ByteSpan bytes) noexcept;

/// Up to `count` bytes as `read` does, waiting where the file does not block; -1 with `errno`.
std::ptrdiff_t readSome(int file, std::uint8_t* into, std::size_t count) noexcept;

}  // namespace tarnkit::detail
