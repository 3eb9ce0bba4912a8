#pragma once

#include <cassert>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

#include "tarnkit/platform/objects/Ref.h"
#include "tarnkit/platform/system/Status.h"

namespace tarnkit {

namespace detail {
template <class T>
inline constexpr bool isRef = false;
template <class T>
inline constexpr bool isRef<Ref<T>> = true;
}  // namespace detail

/// What an operation made, or the `Status` that says why it made nothing; never both, never
/// neither: a `Ref` in it is not null. Converts from either, so that `return value;` and
/// `return Status::failure(…);` do. It must be looked at. To be moved; for one thread at a time.
template <class T>
class [[nodiscard]] Result {
  static_assert(!std::is_same_v<T, Status>, "a Status is a result of its own");

 public:
  Result(T value) : value_(std::move(value)) {  // NOLINT(*-explicit-*)
    if constexpr (detail::isRef<T>) assert(*value_);
  }
  Result(Status failure) noexcept : status_(std::move(failure)) {  // NOLINT(*-explicit-*)
    assert(!status_.isOK());
  }

  bool isOK() const noexcept { return value_.has_value(); }
  explicit operator bool() const noexcept { return isOK(); }
  /// Ok where there is a value.
  const Status& status() const& noexcept { return status_; }
  Status status() && noexcept { return std::move(status_); }

  /// The value, which must be there.
  T& operator*() & noexcept { return value(*this); }
  const T& operator*() const& noexcept { return value(*this); }
  T operator*() && { return std::move(value(*this)); }
  /// Members of the value; where that is a `Ref`, of the object behind it.
  auto operator->() noexcept { return pointer(value(*this)); }
  auto operator->() const noexcept { return pointer(value(*this)); }
  /// The value, or the other one for who asks no reason.
  T valueOr(T other) && { return value_ ? std::move(*value_) : std::move(other); }

  /// As those of `Status`; a value stays as it is.
  Result at(std::string_view path) && {
    status_ = std::move(status_).at(path);
    return std::move(*this);
  }
  Result within(std::string_view context) && {
    status_ = std::move(status_).within(context);
    return std::move(*this);
  }

 private:
  template <class Self>
  static auto& value(Self& self) noexcept {
    assert(self.value_);
    return *self.value_;
  }
  template <class Value>
  static auto pointer(Value& value) noexcept {
    if constexpr (detail::isRef<T>) {
      return value.get();
    } else {
      return &value;
    }
  }

  std::optional<T> value_;
  Status status_;
};

}  // namespace tarnkit
