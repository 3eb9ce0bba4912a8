#include "tarnkit/platform/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <utility>

namespace tarnkit {

namespace {

constexpr std::size_t kLargestTransfer = std::size_t{1} << 30;
constexpr int kMaximumAttempts = 100;
constexpr int kMaximumLinks = 40;

/// An open file that is closed with its owner.
class Descriptor {
 public:
  explicit Descriptor(int number) noexcept : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  int number() const noexcept { return number_; }
  /// Some systems tell only here that the bytes could not be written.
  bool close() noexcept { return ::close(std::exchange(number_, -1)) == 0; }

 private:
  int number_;
};

bool refuse(const std::string& path, const std::string& cause, std::string* error) {
  if (error) *error = path + ": " + cause;
  return false;
}

bool refuseForSystem(const std::string& path, int code, std::string* error) {
  return refuse(path, std::generic_category().message(code), error);
}

bool writeAll(int file, ByteSpan bytes) noexcept {
  while (!bytes.empty()) {
    const auto done = ::write(file, bytes.data(), std::min(bytes.size(), kLargestTransfer));
    if (done < 0 && errno == EINTR) continue;
    if (done < 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(done));
  }
  return true;
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

// A file that nobody else has, beside the one that it is to replace.
int openTemporary(const std::string& target, std::string& temporary) {
  static std::atomic<unsigned> counter{0};
  const auto slash = target.find_last_of('/');
  const std::string name = slash == std::string::npos ? target : target.substr(slash + 1);
  for (int i = 0; i < kMaximumAttempts; ++i) {
    temporary = folderOf(target) + "/." + name.substr(0, 200) + "." + std::to_string(::getpid()) +
                "-" + std::to_string(counter++) + ".tmp";
    const int file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file >= 0 || errno != EEXIST) return file;
  }
  return -1;
}

void syncFolder(const std::string& folder) noexcept {
  const Descriptor open(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (open.number() >= 0) ::fsync(open.number());
}

bool writeStraight(const std::string& path, ByteSpan bytes, std::string* error) {
  Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
  if (file.number() < 0 || !writeAll(file.number(), bytes) || !file.close()) {
    return refuseForSystem(path, errno, error);
  }
  return true;
}

bool fillTemporary(Descriptor& file, ByteSpan bytes, const struct stat* old) noexcept {
  if (old) {
    // Another owner can be kept by the superuser only; the file is then simply ours.
    if (::fchown(file.number(), old->st_uid, old->st_gid) != 0) errno = 0;
    if (::fchmod(file.number(), old->st_mode & 0777U) != 0) return false;
  }
  return writeAll(file.number(), bytes) && ::fsync(file.number()) == 0 && file.close();
}

}  // namespace

bool File::read(const std::string& path, std::vector<std::uint8_t>& into, std::string* error,
                std::size_t limit) {
  into.clear();
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status {};
  if (file.number() < 0 || ::fstat(file.number(), &status) != 0) {
    return refuseForSystem(path, errno, error);
  }
  if (S_ISDIR(status.st_mode)) return refuseForSystem(path, EISDIR, error);
  const auto refuseAndClear = [&](const std::string& cause) {
    into = {};
    return refuse(path, cause, error);
  };
  // The size is a hint only: a pipe has none, and a file may grow.
  constexpr std::size_t kPiece = 65536;
  std::size_t used = 0;
  std::size_t next = kPiece;
  if (S_ISREG(status.st_mode) && status.st_size > 0) {
    if (static_cast<std::uint64_t>(status.st_size) > limit)
      return refuseAndClear("it is too large");
    next = static_cast<std::size_t>(status.st_size) + 1;
  }
  for (;;) {
    if (into.size() == used) into.resize(used + next);
    const auto done =
        ::read(file.number(), into.data() + used, std::min(into.size() - used, kLargestTransfer));
    if (done < 0 && errno == EINTR) continue;
    if (done < 0) return refuseAndClear(std::generic_category().message(errno));
    if (done == 0) break;
    used += static_cast<std::size_t>(done);
    if (used > limit) return refuseAndClear("it is too large");
    next = std::max(kPiece, used / 2);
  }
  into.resize(used);
  return true;
}

bool File::write(const std::string& path, ByteSpan bytes, std::string* error) {
  const std::string target = targetOf(path);
  struct stat old {};
  const bool isThere = ::stat(target.c_str(), &old) == 0;
  if (!isThere && errno != ENOENT) return refuseForSystem(path, errno, error);
  if (isThere && S_ISDIR(old.st_mode)) return refuseForSystem(path, EISDIR, error);
  if (isThere && !S_ISREG(old.st_mode)) return writeStraight(target, bytes, error);
  // A rename would replace even a file that may not be written.
  if (isThere && ::access(target.c_str(), W_OK) != 0) return refuseForSystem(path, errno, error);

  std::string temporary;
  Descriptor file(openTemporary(target, temporary));
  if (file.number() < 0) return refuseForSystem(path, errno, error);
  if (!fillTemporary(file, bytes, isThere ? &old : nullptr) ||
      ::rename(temporary.c_str(), target.c_str()) != 0) {
    const int code = errno;
    ::unlink(temporary.c_str());
    return refuseForSystem(path, code, error);
  }
  syncFolder(folderOf(target));
  return true;
}

}  // namespace tarnkit
