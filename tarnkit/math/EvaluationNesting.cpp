#include "tarnkit/math/EvaluationNesting.h"

#include <fmt/format.h>

#include "tarnkit/math/MXMathEvaluator.h"

namespace tarnkit::detail {

bool EvaluationNesting::enter(MXError& error) const {
  if (used.depth <= MXMathEvaluator::kMaximumNesting) return true;
  error = MXError(MXErrorCode::invalidFormat,
                  "the expression refers to itself or is nested too deeply");
  return false;
}

bool EvaluationNesting::charge(std::uint64_t work, MXError& error) const {
  used.work += work;
  if (used.work <= MXMathEvaluator::kMaximumSubstitutedWork) return true;
  error = MXError(MXErrorCode::invalidFormat, "the substitutions refer to each other too often");
  return false;
}

void failResolving(MXError& error, const char* what, const char* key, MXErrorCode code,
                   const String& name) {
  if (error) return;
  error = MXError(code, fmt::format("unable to resolve {}: {}", what, name.view()));
  error.setUserInfo(name, String(key));
}

}  // namespace tarnkit::detail
