#pragma once

#include <optional>
#include <span>
#include <vector>

#include "tarnkit/math/MXExpression.h"
#include "tarnkit/math/Program.h"

namespace tarnkit {

/// The values of a variable for many rows: one for each of them, or one that holds for all.
struct MXColumn {
  const double* values = nullptr;
  bool isConstant = false;
};

/// An expression prepared for being evaluated many thousand times with other values.
///
/// Its variables are numbered slots, built-in functions and aliases are resolved, constants are
/// folded, all as the evaluator was set up when it was prepared. Results are those of evaluating
/// the tree, bit for bit. Evaluating allocates nothing (with up to `kTemporariesInPlace` results
/// waiting at once, which few expressions need) and may be done by several threads with one object.
///
/// What cannot be prepared (random numbers, registered functions of expressions, unknown functions,
/// wrong numbers of arguments, other arithmetics than doubles) is evaluated by the evaluator, with
/// its errors. Registered functions of numbers are called as they were when it was prepared.
class MXCompiledExpression final : public Object {
  TARNKIT_CLASS
 public:
  static constexpr std::size_t kTemporariesInPlace = 32;

  /// Prepares the expression. The slots are its variables in the order of their first appearance
  /// (and functions without arguments that the evaluator takes for variables). Null without an
  /// expression or an evaluator.
  static Ref<MXCompiledExpression> compile(const Ref<MXExpression>& expression,
                                           const Ref<MXMathEvaluator>& evaluator);
  /// The same with the slots given; further variables of the expression are appended to them.
  static Ref<MXCompiledExpression> compile(const Ref<MXExpression>& expression,
                                           const Ref<MXMathEvaluator>& evaluator,
                                           std::vector<String> variables);

  /// The name of each slot.
  const std::vector<String>& variables() const noexcept { return variables_; }
  /// Whether it is evaluated without the evaluator.
  bool isPrepared() const noexcept { return isPrepared_; }

  /// The value for the values of the slots, in their order. Nothing, with the error in the slot,
  /// when there are too few values (code 18) or the evaluator fails.
  std::optional<double> evaluate(std::span<const double> values, MXError* error = nullptr) const {
    if (isSimple_ && values.size() >= variables_.size()) {
      double temporaries[kTemporariesInPlace];
      return code_->run(code_, values.data(), temporaries, 0);
    }
    return evaluateOtherwise(values, error);
  }
  /// The values for `count` rows of values: one column of at least `count` values for each slot.
  /// `results` has room for `count` values and overlaps no column. False, with the error in the
  /// slot, when there are too few columns or the evaluator fails for a row; the rows before it are
  /// written.
  bool evaluate(std::span<const double* const> columns, std::size_t count, double* results,
                MXError* error = nullptr) const;
  /// The same with columns of which some have one value for all rows.
  bool evaluate(std::span<const MXColumn> columns, std::size_t count, double* results,
                MXError* error = nullptr) const;

  MXCompiledExpression(Ref<MXExpression> expression, Ref<MXMathEvaluator> evaluator,
                       std::vector<String> variables);
  ~MXCompiledExpression() override;

 private:
  void addVariables();
  std::optional<double> evaluateOtherwise(std::span<const double> values, MXError* error) const;
  std::optional<double> evaluateCalling(const double* values, double* room, MXError* error) const;
  std::optional<double> evaluateTree(std::span<const double> values, MXError* error) const;
  bool evaluateRows(std::span<const MXColumn> columns, std::size_t count, double* results,
                    MXError* error) const;
  void evaluateBlocks(std::span<const MXColumn> columns, std::size_t count, double* results) const;
  bool hasEnough(std::size_t given, MXError* error) const;

  Ref<MXExpression> expression_;
  Ref<MXMathEvaluator> evaluator_;
  std::vector<String> variables_;
  detail::Program program_;
  const detail::Instruction* code_ = nullptr;
  bool isPrepared_ = false;
  bool isSimple_ = false;  // prepared, one segment, few temporaries, no host functions
};

}  // namespace tarnkit
