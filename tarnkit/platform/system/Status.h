#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace tarnkit {

/// What kind of failure it was, for code that has to decide; people read the sentence.
enum class StatusCode : std::uint8_t {
  ok,
  notFound,      ///< there is no file, class or object of that name
  inaccessible,  ///< the system refused: permissions, a full disk, a device that failed
  damaged,       ///< the bytes are not what they claim to be
  unsupported,   ///< well made, but of a kind that is not read or written here
  tooLarge,      ///< beyond a limit that the operation states
  outOfMemory,
  refused,  ///< a rule of the library forbids it
};

/// How something that can fail ended: well, or with a kind, one sentence for people, and the path
/// of the file that it is about, if any.
///
/// What reads or writes returns one of these, or a `Result` where there is something to hand over;
/// it must be looked at. A success is a null pointer and costs as much. A value: move it about, use
/// it in one thread at a time.
class [[nodiscard]] Status {
 public:
  /// It went well.
  Status() noexcept = default;
  /// It did not. The sentence begins with a small letter, has no full stop and no path in it.
  static Status failure(StatusCode code, std::string sentence, std::string path = {}) {
    Status status;
    status.failure_ =
        std::make_unique<Failure>(Failure{code, std::move(sentence), std::move(path)});
    return status;
  }
  static Status damaged(std::string sentence) {
    return failure(StatusCode::damaged, std::move(sentence));
  }

  bool isOK() const noexcept { return failure_ == nullptr; }
  explicit operator bool() const noexcept { return isOK(); }
  StatusCode code() const noexcept { return failure_ ? failure_->code : StatusCode::ok; }
  /// Empty of a success.
  const std::string& sentence() const noexcept { return failure_ ? failure_->sentence : none(); }
  /// Empty where the failure is about no file.
  const std::string& path() const noexcept { return failure_ ? failure_->path : none(); }
  /// "PATH: SENTENCE", or the sentence alone; empty of a success.
  std::string message() const {
    if (path().empty()) return sentence();
    return path() + ": " + sentence();
  }

  /// The same failure about that file, unless it names one already. A success stays one.
  Status at(std::string_view path) && {
    if (failure_ && failure_->path.empty()) failure_->path = path;
    return std::move(*this);
  }
  /// The same failure with "CONTEXT: " before its sentence. A success stays one.
  Status within(std::string_view context) && {
    if (failure_) failure_->sentence.insert(0, std::string(context) + ": ");
    return std::move(*this);
  }

 private:
  struct Failure {
    StatusCode code;
    std::string sentence;
    std::string path;
  };
  static const std::string& none() noexcept {
    static const std::string empty;
    return empty;
  }

  std::unique_ptr<Failure> failure_;
};

}  // namespace tarnkit
