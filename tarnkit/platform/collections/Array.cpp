#include "tarnkit/platform/collections/Array.h"

#include <algorithm>

namespace tarnkit {

const Class Array::kClass{"NSArray", &Object::kClass};
const Class Set::kClass{"NSSet", &Object::kClass};

namespace {
thread_local int equalityDepth = 0;
}

bool Array::isEqual(const Object& other) const {
  const auto* array = as<Array>(&other);
  if (!array || array->count() != count()) return false;
  if (array == this) return true;
  if (equalityDepth >= kMaximumEqualityDepth) return false;
  ++equalityDepth;
  const bool equal = std::equal(begin(), end(), array->begin(),
                                [](const auto& a, const auto& b) { return a->isEqual(*b); });
  --equalityDepth;
  return equal;
}

}  // namespace tarnkit
