#pragma once

#include <cassert>
#include <cstdint>

#include "tarnkit/math/MXError.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit::detail {

/// What the evaluations that stand on a thread's stack have used.
struct EvaluationWork {
  int depth = 0;
  std::uint64_t work = 0;
};

/// Stands on the stack while something is evaluated that may lead back into evaluation, and counts
/// what the evaluations of its thread have used so far.
class EvaluationNesting {
 public:
  EvaluationNesting() noexcept {
    if (used.depth++ == 0) used.work = 0;
  }
  ~EvaluationNesting() {
    assert(used.depth > 0);
    --used.depth;
  }
  EvaluationNesting(const EvaluationNesting&) = delete;
  EvaluationNesting& operator=(const EvaluationNesting&) = delete;

  /// Whether no other evaluation led to this one.
  bool isOutermost() const noexcept { return used.depth == 1; }
  /// False, with the error set, when it is deeper than `MXMathEvaluator::kMaximumNesting`.
  bool enter(MXError& error) const;
  /// Adds work that a substitution asks for; false, with the error set, when it is beyond
  /// `MXMathEvaluator::kMaximumSubstitutedWork`.
  bool charge(std::uint64_t work, MXError& error) const;

 private:
  inline static constinit thread_local EvaluationWork used;
};

/// Sets "unable to resolve function: …" or "… variable: …", with the name under the key, unless the
/// error tells something already.
void failResolving(MXError& error, const char* what, const char* key, MXErrorCode code,
                   const String& name);

}  // namespace tarnkit::detail
