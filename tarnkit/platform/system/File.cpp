#include "tarnkit/platform/system/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "tarnkit/platform/system/Descriptor.h"
#include "tarnkit/platform/system/FileReplacement.h"
#include "tarnkit/platform/system/SignalHold.h"

namespace tarnkit {

using detail::Descriptor;

namespace {

constexpr int kMaximumLinks = 40;
Status tooLarge() { return Status::failure(StatusCode::tooLarge, "it is too large"); }

std::string folderOf(const std::string& path) {
  const auto slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// The path with symbolic links at its end followed, so that the link stays and its file is
// replaced.
std::string targetOf(std::string path) {
  for (int i = 0; i < kMaximumLinks; ++i) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) break;
    std::string link(4096, '\0');
    const auto size = ::readlink(path.c_str(), link.data(), link.size());
    if (size <= 0) break;
    link.resize(static_cast<std::size_t>(size));
    path = link.front() == '/' ? link : folderOf(path) + "/" + link;
  }
  return path;
}

Status writeStraight(const std::string& path, File::Contents contents) {
  const detail::SignalHold hold(detail::SignalHold::Of::refusedWrites);
  Descriptor file(detail::retried([&] { return ::open(path.c_str(), O_WRONLY | O_CLOEXEC); }));
  const auto write = [&](ByteSpan bytes) { return detail::writeAll(file.number(), bytes); };
  if (file.isOpen() && contents(write) && file.close()) return {};
  return Status::ofSystem(errno, path);
}

}  // namespace

Result<std::vector<std::uint8_t>> File::read(const std::string& path, std::size_t limit) {
  const Descriptor file(
      detail::retried([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); }));
  struct stat status {};
  if (!file.isOpen() || ::fstat(file.number(), &status) != 0) return Status::ofSystem(errno, path);
  if (S_ISDIR(status.st_mode)) return Status::ofSystem(EISDIR, path);
  const bool isRegular = S_ISREG(status.st_mode);
  if (isRegular && static_cast<std::uint64_t>(status.st_size) > limit) return tooLarge().at(path);
  const auto size = isRegular ? static_cast<std::size_t>(status.st_size) : 0;
  return readStream(file.number(), limit, size).at(path);
}

Result<std::vector<std::uint8_t>> File::readStream(int descriptor, std::size_t limit,
                                                   std::size_t expected) {
  // The size is a hint only: a pipe has none, and a file may grow.
  constexpr std::size_t kPiece = 65536;
  std::vector<std::uint8_t> bytes;
  std::size_t used = 0;
  std::size_t next = expected > 0 ? expected + 1 : kPiece;
  for (;;) {
    if (bytes.size() == used) bytes.resize(used + next);
    const auto done = detail::readSome(descriptor, bytes.data() + used, bytes.size() - used);
    if (done < 0) return Status::ofSystem(errno);
    if (done == 0) break;
    used += static_cast<std::size_t>(done);
    if (used > limit) return tooLarge();
    next = std::max(kPiece, used / 2);
  }
  bytes.resize(used);
  return bytes;
}

Status File::writeStream(int descriptor, ByteSpan bytes) {
  return detail::writeAll(descriptor, bytes) ? Status() : Status::ofSystem(errno);
}

Status File::write(const std::string& path, ByteSpan bytes) {
  return write(path, [&](Piece write) { return write(bytes); });
}

Status File::write(const std::string& path, Contents contents) {
  // What a link of the system's own leads to (an open pipe, say) has no name to follow.
  struct stat direct {};
  if (::stat(path.c_str(), &direct) == 0 && !S_ISREG(direct.st_mode) && !S_ISDIR(direct.st_mode)) {
    return writeStraight(path, contents);
  }
  const std::string target = targetOf(path);
  struct stat old {};
  const bool isThere = ::stat(target.c_str(), &old) == 0;
  if (!isThere && errno != ENOENT) return Status::ofSystem(errno, path);
  if (isThere && S_ISDIR(old.st_mode)) return Status::ofSystem(EISDIR, path);
  if (isThere && !S_ISREG(old.st_mode)) return writeStraight(target, contents);
  // A rename would replace even a file that may not be written.
  if (isThere && ::access(target.c_str(), W_OK) != 0) return Status::ofSystem(errno, path);
  return detail::replaceFile(target, contents, isThere ? &old : nullptr).at(path);
}

std::string File::directoryOf(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

Status File::makeDirectory(const std::string& path) {
  std::error_code failure;
  std::filesystem::create_directories(path, failure);
  // A path that ends in "/" counts as not created when it is there already.
  std::error_code unknown;
  if (std::filesystem::is_directory(path, unknown)) return {};
  // What stands there and is none is told in either way, as the standard library likes.
  const bool isOther = !failure || failure == std::errc::file_exists;
  return Status::ofSystem(isOther ? ENOTDIR : failure.value(), path);
}

}  // namespace tarnkit
