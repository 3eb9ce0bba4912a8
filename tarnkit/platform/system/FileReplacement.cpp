#include "tarnkit/platform/system/FileReplacement.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "tarnkit/platform/system/Descriptor.h"
#include "tarnkit/platform/system/SignalHold.h"

namespace tarnkit::detail {

namespace {

constexpr std::size_t kLargestTransfer = std::size_t{1} << 30;
// Between two pieces a writer looks whether the process is to end.
constexpr std::size_t kPiece = std::size_t{1} << 20;
constexpr int kMaximumNames = 100;
// How many names are always looked at for stale files, and further while there are some; writers at
// the same time are few.
constexpr int kSweptNames = 3;
constexpr mode_t kPermissions = 0777;
constexpr mode_t kNewFile = 0666;

std::string folderOf(const std::string& path) {
  const auto slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string temporaryName(const std::string& target, int number) {
  constexpr std::size_t kLongestStem = 200;
  const auto slash = target.find_last_of('/');
  const std::string name = slash == std::string::npos ? target : target.substr(slash + 1);
  return folderOf(target) + "/." + name.substr(0, kLongestStem) + "." + std::to_string(number) +
         ".tmp";
}

void waitFor(int file, short events) noexcept {
  struct pollfd wait {
    file, events, 0
  };
  retried([&] { return ::poll(&wait, 1, -1); });
}

bool wouldBlock() noexcept { return errno == EAGAIN || errno == EWOULDBLOCK; }

void syncFolder(const std::string& folder) noexcept {
  const Descriptor open(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (open.isOpen()) ::fsync(open.number());
}

// The old file's owner and permissions. Another owner can be kept by the superuser only; the file
// is then simply ours, and a bit that lends its owner's or group's rights is dropped with them.
// Writing clears such bits, so they come last.
bool writeAs(int file, File::Contents contents, const struct stat* old, const SignalHold* hold) {
  mode_t lent = 0;
  if (old) {
    if (::fchown(file, old->st_uid, old->st_gid) != 0) errno = 0;
    struct stat now {};
    if (::fstat(file, &now) != 0 || ::fchmod(file, old->st_mode & kPermissions) != 0) return false;
    if (now.st_uid == old->st_uid) lent |= old->st_mode & S_ISUID;
    if (now.st_gid == old->st_gid) lent |= old->st_mode & S_ISGID;
    lent |= old->st_mode & S_ISVTX;
  }
  std::size_t sinceLooked = 0;
  const auto write = [&](ByteSpan bytes) {
    while (!bytes.empty()) {
      if (hold && sinceLooked >= kPiece) {
        sinceLooked = 0;
        if (hold->endsProcess()) {
          errno = EINTR;
          return false;
        }
      }
      const auto piece = bytes.first(std::min(bytes.size(), kPiece));
      if (!writeAll(file, piece)) return false;
      sinceLooked += piece.size();
      bytes = bytes.subspan(piece.size());
    }
    return true;
  };
  if (!contents(write)) return false;
  // A system that refuses them has its reasons; the contents are what counts.
  if (lent != 0) static_cast<void>(::fchmod(file, (old->st_mode & kPermissions) | lent));
  return retried([&] { return ::fsync(file); }) == 0;
}

// Some systems tell only at closing that the bytes could not be written, but the lock must hold
// until the file has its name: another descriptor of it stays open.
bool closeKeepingLock(const Descriptor& file) noexcept {
  Descriptor second(::fcntl(file.number(), F_DUPFD_CLOEXEC, 0));
  return second.isOpen() && second.close();
}

// --- Temporary files
// ------------------------------------------------------------------------------

bool isSameFile(const struct stat& one, const struct stat& other) noexcept {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// Removes a temporary file whose writer is gone. False when there is none, or its writer lives.
bool removeStale(const std::string& temporary) noexcept {
  const Descriptor file(::open(temporary.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!file.isOpen() || ::flock(file.number(), LOCK_EX | LOCK_NB) != 0) return false;
  // Whoever finished just now gave the file its final name before the lock went.
  struct stat locked {};
  struct stat named {};
  return ::fstat(file.number(), &locked) == 0 && ::lstat(temporary.c_str(), &named) == 0 &&
         S_ISREG(named.st_mode) && isSameFile(locked, named) && ::unlink(temporary.c_str()) == 0;
}

void sweep(const std::string& target) noexcept {
  bool wasStale = false;
  for (int i = 0; i < kMaximumNames && (i < kSweptNames || wasStale); ++i) {
    wasStale = removeStale(temporaryName(target, i));
  }
}

// Where files cannot be locked, none is ever taken for stale.
bool lock(const Descriptor& file) noexcept {
  return ::flock(file.number(), LOCK_EX | LOCK_NB) == 0 || !wouldBlock();
}

bool isNamed(const Descriptor& file) noexcept {
  struct stat status {};
  return ::fstat(file.number(), &status) == 0 && status.st_nlink != 0;
}

// A file that nobody else has, beside the one that it is to replace.
Descriptor openTemporary(const std::string& target, std::string& temporary) {
  for (int i = 0; i < kMaximumNames; ++i) {
    temporary = temporaryName(target, i);
    Descriptor file(retried([&] {
      return ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kNewFile);
    }));
    if (!file.isOpen() && errno != EEXIST) return file;
    // Until it was locked, somebody may have taken it for stale.
    if (file.isOpen() && lock(file) && isNamed(file)) return file;
  }
  errno = EEXIST;
  return Descriptor(-1);
}

bool replaceByTemporary(const std::string& target, File::Contents contents,
                        const struct stat* old) {
  const SignalHold hold(SignalHold::Of::endings);
  std::string temporary;
  const Descriptor file = openTemporary(target, temporary);
  if (!file.isOpen()) return false;
  if (writeAs(file.number(), contents, old, &hold) && closeKeepingLock(file) &&
      ::rename(temporary.c_str(), target.c_str()) == 0) {
    return true;
  }
  const int code = errno;
  ::unlink(temporary.c_str());
  errno = code;
  return false;
}

// --- Files without a name
// -------------------------------------------------------------------------

enum class Outcome { done, failed, notOffered };

#ifdef O_TMPFILE

bool giveName(const Descriptor& file, const std::string& name) noexcept {
  const std::string self = "/proc/self/fd/" + std::to_string(file.number());
  return ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

// A name can be given only where none is, so in the place of an old file there is a temporary one
// for a moment.
Outcome takePlace(const Descriptor& file, const std::string& target, bool isThere) {
  const SignalHold hold(SignalHold::Of::endings);
  if (!isThere && giveName(file, target)) return Outcome::done;
  for (int i = 0; i < kMaximumNames; ++i) {
    const std::string temporary = temporaryName(target, i);
    if (!giveName(file, temporary)) {
      if (errno == EEXIST) continue;
      break;
    }
    if (::rename(temporary.c_str(), target.c_str()) == 0) return Outcome::done;
    const int code = errno;
    ::unlink(temporary.c_str());
    errno = code;
    return Outcome::failed;
  }
  return Outcome::notOffered;
}

Outcome replaceUnnamed(const std::string& target, File::Contents contents, const struct stat* old) {
  const Descriptor file(retried([&] {
    return ::open(folderOf(target).c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, kNewFile);
  }));
  if (!file.isOpen() || !lock(file)) return Outcome::notOffered;
  if (!writeAs(file.number(), contents, old, nullptr) || !closeKeepingLock(file)) {
    return Outcome::failed;
  }
  return takePlace(file, target, old != nullptr);
}

#else

Outcome replaceUnnamed(const std::string&, File::Contents, const struct stat*) {
  return Outcome::notOffered;
}

#endif

}  // namespace

Status replaceFile(const std::string& target, File::Contents contents, const struct stat* old,
                   Naming naming) {
  const SignalHold hold(SignalHold::Of::refusedWrites);
  sweep(target);
  auto outcome = Outcome::notOffered;
  if (naming == Naming::whenWhole) outcome = replaceUnnamed(target, contents, old);
  if (outcome == Outcome::notOffered && replaceByTemporary(target, contents, old)) {
    outcome = Outcome::done;
  }
  if (outcome != Outcome::done) return Status::ofSystem(errno);
  syncFolder(folderOf(target));
  return {};
}

bool writeAll(int file, ByteSpan bytes) noexcept {
  while (!bytes.empty()) {
    const auto done = ::write(file, bytes.data(), std::min(bytes.size(), kLargestTransfer));
    if (done >= 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(done));
    } else if (wouldBlock()) {
      waitFor(file, POLLOUT);
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

std::ptrdiff_t readSome(int file, std::uint8_t* into, std::size_t count) noexcept {
  for (;;) {
    const auto done = ::read(file, into, std::min(count, kLargestTransfer));
    if (done >= 0) return done;
    if (wouldBlock()) {
      waitFor(file, POLLIN);
    } else if (errno != EINTR) {
      return -1;
    }
  }
}

}  // namespace tarnkit::detail
