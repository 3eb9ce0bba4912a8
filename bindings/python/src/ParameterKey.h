#pragma once

#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXParameter.h"

namespace tarnkit::python {

/// Under which its node finds it: also of one that the patch does not have any more, which knows no
/// key of its own.
inline String keyOf(const HXParameter& parameter) {
  String key = parameter.uniqueKey();
  const auto* const node = parameter.node();
  if (!key.isNil() || !node) return key;
  for (const auto& [held, other] : node->parametersInForce()) {
    if (other.get() == &parameter) return held;
  }
  return key;
}

}  // namespace tarnkit::python
