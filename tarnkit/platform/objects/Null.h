#pragma once

#include "tarnkit/platform/objects/Object.h"

namespace tarnkit {

/// The null object: stands for nil where a collection or a user-info map needs an object.
class Null final : public Object {
  TARNKIT_CLASS
 public:
  /// The process's one null object.
  static const Ref<Null>& null();
  /// `object`, or the null object when it is null.
  static Ref<Object> orNull(Ref<Object> object);
  String description() const override;
};

}  // namespace tarnkit
