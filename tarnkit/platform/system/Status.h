#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace tarnkit {

/// What kind of failure it was, for code and scripts that have to decide; people read the sentence.
enum class StatusCode : std::uint8_t {
  ok,
  notFound,       ///< there is no file, folder or class of that name
  notPermitted,   ///< the system does not let this user do it
  notAFile,       ///< a folder stands where a file is meant, or a file where a folder is
  noSpace,        ///< the disk is full, or the file may not grow further
  systemFailure,  ///< the system refused for another reason: a broken device, a pipe without reader
  damaged,        ///< the bytes are not what they claim to be
  unsupported,    ///< well made, but of a kind or a version that is not read or written here
  tooLarge,       ///< beyond a limit that the operation states
  outOfMemory,
  refused,  ///< a rule of the library forbids it
};

/// The enumerator's own name, "notFound": stable, to be compared by scripts. "ok" of no failure.
std::string_view nameOf(StatusCode code) noexcept;

/// How something that can fail ended: well, or with a kind, one sentence for people, and the path
/// of the file that it is about, if any. It must be looked at.
///
/// A success is a null pointer and costs as much; a failure allocates once. Whoever passes one on
/// adds what it knows and those below did not: `return std::move(status).at(path)`. To be moved,
/// not copied; for one thread at a time.
class [[nodiscard]] Status {
 public:
  /// It went well.
  Status() noexcept = default;
  /// It did not; `code` is not `ok`. The sentence begins with a small letter, has no full stop and
  /// no path of its own in it.
  static Status failure(StatusCode code, std::string sentence, std::string path = {});
  static Status damaged(std::string sentence) {
    return failure(StatusCode::damaged, std::move(sentence));
  }
  /// What the system says of an error number (`errno`), in its own words.
  static Status ofSystem(int number, std::string path = {});

  bool isOK() const noexcept { return failure_ == nullptr; }
  explicit operator bool() const noexcept { return isOK(); }
  StatusCode code() const noexcept { return failure_ ? failure_->code : StatusCode::ok; }
  /// Empty of a success.
  const std::string& sentence() const noexcept;
  /// Empty where the failure is about no file.
  const std::string& path() const noexcept;
  /// "PATH: SENTENCE", or the sentence alone; empty of a success.
  std::string message() const;

  /// The same failure about that file, unless it names one already. A success stays one.
  Status at(std::string_view path) &&;
  /// The same failure with "CONTEXT: " before its sentence. A success stays one.
  Status within(std::string_view context) &&;

 private:
  struct Failure {
    StatusCode code;
    std::string sentence;
    std::string path;
  };

  std::unique_ptr<Failure> failure_;
};

}  // namespace tarnkit
