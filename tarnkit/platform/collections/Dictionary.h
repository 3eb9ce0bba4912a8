#pragma once

#include "tarnkit/platform/collections/OrderedMap.h"
#include "tarnkit/platform/objects/Object.h"

namespace tarnkit {

/// A map from strings to objects as an object of its own; iterates in the order of insertion.
/// One thread at a time may change it.
class Dictionary final : public Object {
  TARNKIT_CLASS
 public:
  Dictionary() = default;
  explicit Dictionary(OrderedMap<Ref<Object>> entries) noexcept : entries_(std::move(entries)) {}

  const OrderedMap<Ref<Object>>& entries() const noexcept { return entries_; }
  std::uint32_t count() const noexcept { return entries_.size(); }
  /// Null when the key is absent.
  Ref<Object> objectForKey(const String& key) const { return entries_.get(key); }
  /// A nil key and a null object are refused, with one line logged.
  void setObject(Ref<Object> object, const String& forKey);

  CodingKind codingKind() const noexcept override { return CodingKind::map; }

 private:
  OrderedMap<Ref<Object>> entries_;
};

}  // namespace tarnkit
