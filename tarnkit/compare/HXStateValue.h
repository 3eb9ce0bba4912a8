#pragma once

#include <string>

#include "tarnkit/platform/objects/Object.h"

namespace tarnkit {

class HXImageStore;
class HXParameter;
class PMRPrimitive;

/// A value that a document holds, of a port or of a parameter, as it was at one moment: equal to
/// another one exactly when a file holds the same bits for both, whatever the numbers say (a NaN
/// equals itself, 0 is not -0, an index is no number).
class HXStateValue {
 public:
  /// None.
  HXStateValue() = default;
  static HXStateValue of(const PMRPrimitive& primitive);
  /// With the kind of the parameter; of an image the key of its entry, and whether that is the
  /// store's own.
  static HXStateValue of(const HXParameter& parameter, const HXImageStore& store);

  bool isNone() const noexcept { return bits_.empty(); }
  /// For people: "5", "true", "\"text\"", "#ff8000ff"; "none".
  std::string description() const;
  /// What tells values apart, for hashing.
  const std::string& bits() const noexcept { return bits_; }

  /// Of a port's value: the primitive, which nobody else has; null for none.
  Ref<PMRPrimitive> primitive() const;
  /// Gives the value to a parameter of the same kind, an image out of the store where it was the
  /// store's own; false, and nothing done, for another kind.
  bool giveTo(HXParameter& parameter, const HXImageStore& store) const;
  /// Of an image; null for none, and for everything else.
  String imageKey() const;

  friend bool operator==(const HXStateValue& a, const HXStateValue& b) {
    return a.bits_ == b.bits_;
  }

 private:
  std::string bits_;
  Ref<Object> object_;  // a primitive of its own, or the entry of an image
};

}  // namespace tarnkit
