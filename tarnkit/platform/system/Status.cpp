#include "tarnkit/platform/system/Status.h"

#include <cassert>
#include <cerrno>
#include <system_error>
#include <utility>

namespace tarnkit {

namespace {

const std::string& none() noexcept {
  static const std::string empty;
  return empty;
}

StatusCode codeOfSystem(int number) noexcept {
  switch (number) {
    case ENOENT:
      return StatusCode::notFound;
    case EACCES:
    case EPERM:
    case EROFS:
      return StatusCode::notPermitted;
    case EISDIR:
    case ENOTDIR:
      return StatusCode::notAFile;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return StatusCode::noSpace;
    case ENOMEM:
      return StatusCode::outOfMemory;
    default:
      return StatusCode::systemFailure;
  }
}

}  // namespace

std::string_view nameOf(StatusCode code) noexcept {
  switch (code) {
    case StatusCode::ok:
      return "ok";
    case StatusCode::notFound:
      return "notFound";
    case StatusCode::notPermitted:
      return "notPermitted";
    case StatusCode::notAFile:
      return "notAFile";
    case StatusCode::noSpace:
      return "noSpace";
    case StatusCode::systemFailure:
      return "systemFailure";
    case StatusCode::damaged:
      return "damaged";
    case StatusCode::unsupported:
      return "unsupported";
    case StatusCode::tooLarge:
      return "tooLarge";
    case StatusCode::outOfMemory:
      return "outOfMemory";
    case StatusCode::refused:
      return "refused";
  }
  return {};
}

Status Status::failure(StatusCode code, std::string sentence, std::string path) {
  assert(code != StatusCode::ok);
  Status status;
  status.failure_ = std::make_unique<Failure>(Failure{code, std::move(sentence), std::move(path)});
  return status;
}

Status Status::ofSystem(int number, std::string path) {
  return failure(codeOfSystem(number), std::generic_category().message(number), std::move(path));
}

const std::string& Status::sentence() const noexcept {
  return failure_ ? failure_->sentence : none();
}

const std::string& Status::path() const noexcept { return failure_ ? failure_->path : none(); }

std::string Status::message() const {
  return path().empty() ? sentence() : path() + ": " + sentence();
}

Status Status::at(std::string_view path) && {
  if (failure_ && failure_->path.empty()) failure_->path = path;
  return std::move(*this);
}

Status Status::within(std::string_view context) && {
  if (failure_) failure_->sentence.insert(0, std::string(context) + ": ");
  return std::move(*this);
}

}  // namespace tarnkit
