#pragma once

#include "tarnkit/patches/HXRNodeClass.h"

namespace example {

/// Shakes a value.
extern const tarnkit::HXRNodeClass wiggleNode;
/// Climbs step by step; it has as many steps as its parameter says.
extern const tarnkit::HXRNodeClass staircaseNode;

}  // namespace example
