#pragma once

#include "tarnkit/math/MXFunctionEvaluator.h"

namespace tarnkit::detail {

/// Computes the built-in functions in decimals of 38 digits. The bitwise and logical ones, the
/// comparisons, min, max and random stay in doubles. A result that is no number is a NaN, not an
/// error. In degrees an angle is reduced before it is converted and an inverse is converted before
/// it is rounded, so that whole degrees lose nothing. Owned by an evaluator; safe on any thread.
class MXPrecisionFunctionEvaluator final : public MXFunctionEvaluator {
  TARNKIT_CLASS
 public:
  explicit MXPrecisionFunctionEvaluator(MXMathEvaluator* evaluator)
      : MXFunctionEvaluator(evaluator) {}
  ~MXPrecisionFunctionEvaluator() override;

  bool computesInDoubles() const noexcept override { return false; }
  std::optional<MXNumber> compute(const BuiltinCall& call, std::span<const MXNumber> arguments,
                                  MXError* error) const override;
};

}  // namespace tarnkit::detail
