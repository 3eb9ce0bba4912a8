#include "tarnkit/platform/system/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "tarnkit/platform/system/Descriptor.h"
#include "tarnkit/platform/system/FileReplacement.h"
#include "tarnkit/platform/system/SignalHold.h"

namespace tarnkit {

using detail::Descriptor;

namespace {

constexpr int kMaximumLinks = 40;
constexpr const char* kTooLarge = "it is too large";

bool refuse(const std::string& path, const std::string& cause, std::string* error) {
  if (error) *error = path + ": " + cause;
  return false;
}

bool refuseForSystem(const std::string& path, int code, std::string* error) {
  return refuse(path, std::generic_category().message(code), error);
}

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

bool writeStraight(const std::string& path, ByteSpan bytes, std::string* error) {
  const detail::SignalHold hold(detail::SignalHold::Of::refusedWrites);
  Descriptor file(detail::retried([&] { return ::open(path.c_str(), O_WRONLY | O_CLOEXEC); }));
  if (file.isOpen() && detail::writeAll(file.number(), bytes) && file.close()) return true;
  return refuseForSystem(path, errno, error);
}

}  // namespace

bool File::read(const std::string& path, std::vector<std::uint8_t>& into, std::string* error,
                std::size_t limit) {
  into.clear();
  const Descriptor file(
      detail::retried([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); }));
  struct stat status {};
  if (!file.isOpen() || ::fstat(file.number(), &status) != 0) {
    return refuseForSystem(path, errno, error);
  }
  if (S_ISDIR(status.st_mode)) return refuseForSystem(path, EISDIR, error);
  if (S_ISREG(status.st_mode) && static_cast<std::uint64_t>(status.st_size) > limit) {
    return refuse(path, kTooLarge, error);
  }
  const auto size = S_ISREG(status.st_mode) ? static_cast<std::size_t>(status.st_size) : 0;
  std::string cause;
  return readStream(file.number(), into, &cause, limit, size) || refuse(path, cause, error);
}

bool File::readStream(int descriptor, std::vector<std::uint8_t>& into, std::string* error,
                      std::size_t limit, std::size_t expected) {
  into.clear();
  const auto fail = [&](std::string cause) {
    into = {};
    if (error) *error = std::move(cause);
    return false;
  };
  // The size is a hint only: a pipe has none, and a file may grow.
  constexpr std::size_t kPiece = 65536;
  std::size_t used = 0;
  std::size_t next = expected > 0 ? expected + 1 : kPiece;
  for (;;) {
    if (into.size() == used) into.resize(used + next);
    const auto done = detail::readSome(descriptor, into.data() + used, into.size() - used);
    if (done < 0) return fail(std::generic_category().message(errno));
    if (done == 0) break;
    used += static_cast<std::size_t>(done);
    if (used > limit) return fail(kTooLarge);
    next = std::max(kPiece, used / 2);
  }
  into.resize(used);
  return true;
}

bool File::writeStream(int descriptor, ByteSpan bytes, std::string* error) {
  if (detail::writeAll(descriptor, bytes)) return true;
  if (error) *error = std::generic_category().message(errno);
  return false;
}

bool File::write(const std::string& path, ByteSpan bytes, std::string* error) {
  // What a link of the system's own leads to (an open pipe, say) has no name to follow.
  struct stat direct {};
  if (::stat(path.c_str(), &direct) == 0 && !S_ISREG(direct.st_mode) && !S_ISDIR(direct.st_mode)) {
    return writeStraight(path, bytes, error);
  }
  const std::string target = targetOf(path);
  struct stat old {};
  const bool isThere = ::stat(target.c_str(), &old) == 0;
  if (!isThere && errno != ENOENT) return refuseForSystem(path, errno, error);
  if (isThere && S_ISDIR(old.st_mode)) return refuseForSystem(path, EISDIR, error);
  if (isThere && !S_ISREG(old.st_mode)) return writeStraight(target, bytes, error);
  // A rename would replace even a file that may not be written.
  if (isThere && ::access(target.c_str(), W_OK) != 0) return refuseForSystem(path, errno, error);

  return detail::replaceFile(target, bytes, isThere ? &old : nullptr) ||
         refuseForSystem(path, errno, error);
}

}  // namespace tarnkit
