#pragma once

#include <memory>
#include <optional>
#include <span>

#include "tarnkit/math/EvaluationNesting.h"
#include "tarnkit/math/MXMathEvaluator.h"

namespace tarnkit::detail {

/// A function of numbers that the host registered. Immutable; held by the evaluator and by whatever
/// is about to call it, since a call may unregister it.
struct HostFunction {
  String name;  // in lower case
  MXNumberFunction function;

  /// Calls it; where it tells no error itself, its failure is that of a name without a function.
  std::optional<double> call(std::span<const double> arguments, MXError& error) const {
    const auto value = function(arguments, &error);
    if (!value)
      failResolving(error, "function", MXUnknownFunctionKey, MXErrorCode::invalidIdentifier, name);
    return value;
  }
};

/// What a program hands to the host functions that it calls.
struct HostCalls {
  MXError& error;
  bool failed = false;
};

}  // namespace tarnkit::detail
