#pragma once

#include <cassert>
#include <optional>
#include <utility>

#include "tarnkit/platform/system/Status.h"

namespace tarnkit {

/// What an operation made, or the `Status` that says why it made nothing; never both, never
/// neither. Converts from either, so that `return value;` and `return Status::failure(…);` do.
/// A value: use it in one thread at a time.
template <class T>
class [[nodiscard]] Result {
 public:
  Result(T value) : value_(std::move(value)) {}                    // NOLINT(*-explicit-*)
  Result(Status failure) noexcept : status_(std::move(failure)) {  // NOLINT(*-explicit-*)
    assert(!status_.isOK());
  }

  bool isOK() const noexcept { return value_.has_value(); }
  explicit operator bool() const noexcept { return isOK(); }
  /// Ok where there is a value.
  const Status& status() const& noexcept { return status_; }
  Status status() && noexcept { return std::move(status_); }

  /// The value, which must be there.
  T& operator*() & noexcept { return *value_; }
  const T& operator*() const& noexcept { return *value_; }
  T operator*() && { return std::move(*value_); }
  T* operator->() noexcept { return &*value_; }
  const T* operator->() const noexcept { return &*value_; }

 private:
  std::optional<T> value_;
  Status status_;
};

}  // namespace tarnkit
