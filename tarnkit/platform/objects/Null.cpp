#include "tarnkit/platform/objects/Null.h"

#include "tarnkit/platform/text/String.h"

namespace tarnkit {

const Class Null::kClass{"NSNull", &Object::kClass};

const Ref<Null>& Null::null() {
  static const Ref<Null> shared = make<Null>();
  return shared;
}

Ref<Object> Null::orNull(Ref<Object> object) {
  if (object) return object;
  return null();
}

String Null::description() const { return "<null>"; }

}  // namespace tarnkit
