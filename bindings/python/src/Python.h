#pragma once

// Python's own headers come first, as they ask; then the binding library, and the two names that
// every source here uses.
#include <pybind11/pybind11.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/platform/objects/Object.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit::python {
namespace py = pybind11;
}
