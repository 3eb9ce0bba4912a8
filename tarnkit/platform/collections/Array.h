#pragma once

#include <vector>

#include "tarnkit/platform/objects/Object.h"

namespace tarnkit {

/// An ordered list of objects, none of them null: null is left out wherever it is given. One thread
/// at a time may change it.
class Array final : public Object {
  TARNKIT_CLASS
 public:
  Array() = default;
  explicit Array(std::vector<Ref<Object>> objects) noexcept : objects_(std::move(objects)) {
    std::erase(objects_, nullptr);
  }

  std::size_t count() const noexcept { return objects_.size(); }
  const Ref<Object>& operator[](std::size_t index) const noexcept { return objects_[index]; }
  auto begin() const noexcept { return objects_.begin(); }
  auto end() const noexcept { return objects_.end(); }
  void add(Ref<Object> object) {
    if (object) objects_.push_back(std::move(object));
  }

  /// Equal when the elements are equal in the same order. Nested deeper than
  /// `kMaximumEqualityDepth`, lists and maps count as different.
  bool isEqual(const Object& other) const override;
  std::uint64_t hash() const override { return count(); }
  CodingKind codingKind() const noexcept override { return CodingKind::list; }

  static constexpr int kMaximumEqualityDepth = 1000;

 private:
  std::vector<Ref<Object>> objects_;
};

/// An unordered set of objects by `isEqual`; kept in the order of insertion so that outputs repeat.
/// Null is left out wherever it is given. Built by the platform's readers and by callers; the model
/// itself keeps ordered sets.
class Set final : public Object {
  TARNKIT_CLASS
 public:
  Set() = default;
  explicit Set(std::vector<Ref<Object>> objects) noexcept : objects_(std::move(objects)) {
    std::erase(objects_, nullptr);
  }
  std::size_t count() const noexcept { return objects_.size(); }
  auto begin() const noexcept { return objects_.begin(); }
  auto end() const noexcept { return objects_.end(); }
  void add(Ref<Object> object) {
    if (object) objects_.push_back(std::move(object));
  }
  CodingKind codingKind() const noexcept override { return CodingKind::set; }

 private:
  std::vector<Ref<Object>> objects_;
};

}  // namespace tarnkit
