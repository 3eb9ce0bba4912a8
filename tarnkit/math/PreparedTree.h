#pragma once

#include <memory>
#include <vector>

#include "tarnkit/math/MXExpression.h"
#include "tarnkit/math/Program.h"

namespace tarnkit::detail {

/// What a tree that is evaluated again and again keeps beside its nodes: a program, and the names
/// of its variables, each looked up once an evaluation. Immutable; read by any thread.
class PreparedTree {
 public:
  static constexpr std::uint32_t kMaximumNodes = 256;
  static constexpr std::size_t kMaximumVariables = 16;
  static constexpr std::uint32_t kMaximumTemporaries = 32;

  /// Of a plain tree, for the evaluator's angle mode; null when the tree is too large for it.
  static std::unique_ptr<const PreparedTree> prepare(const ExpressionTree& tree,
                                                     const MXMathEvaluator& evaluator);

  /// False when a variable has no number among the substitutions. Allocates nothing.
  bool evaluate(const MXSubstitutions& substitutions, double& result) const {
    double values[kMaximumVariables];
    double temporaries[kMaximumTemporaries];
    if (!variables_.empty() && !readValues(substitutions, values)) return false;
    result = code_->run(code_, values, temporaries, 0);
    return true;
  }

 private:
  PreparedTree() = default;
  bool readValues(const MXSubstitutions& substitutions, double* values) const;

  Program program_;
  const Instruction* code_ = nullptr;
  std::vector<String> variables_;
};

}  // namespace tarnkit::detail
