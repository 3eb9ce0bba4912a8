#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "tarnkit/math/MXExpression.h"
#include "tarnkit/math/MXMathOperatorSet.h"

namespace tarnkit {

namespace detail {
struct HostFunction;
class MXFunctionEvaluator;
class RandomNumbers;
}  // namespace detail

class MXMathEvaluator;

enum class MXAngleMeasurementMode : int { radians = 0, degrees = 1 };

/// A function registered at run time: given the argument expressions, the substitutions, the
/// evaluator and the error slot, it returns an expression (normally a number) or null on failure.
using MXMathFunction = std::function<Ref<MXExpression>(
    const std::vector<Ref<MXExpression>>& arguments, const MXSubstitutions& variables,
    const MXMathEvaluator& evaluator, MXError* error)>;

/// A function of numbers: given the values of its arguments, however many a call has, it returns
/// its value, or nothing on failure, with or without an error in the slot, which is never null.
using MXNumberFunction =
    std::function<std::optional<double>(std::span<const double> arguments, MXError* error)>;

/// Computes expressions, given values for their variables; owns the functions, aliases and settings
/// that bear on that.
///
/// Evaluation changes nothing in the evaluator but the sequence of `random()`, which a lock guards,
/// so several threads may evaluate with one that none
/// of them configures. It costs time linear in the tree and allocates nothing for trees of built-in
/// functions and number values. Substituted strings and expressions, and registered functions, may
/// lead back into the evaluator at most `kMaximumNesting` deep; beyond, as when two variables name
/// each other, evaluation fails with code 1.
class MXMathEvaluator final : public Object {
  TARNKIT_CLASS
 public:
  /// How deep substitutions and registered functions may lead back into evaluation.
  static constexpr int kMaximumNesting = 256;
  /// How many characters and nodes of substituted strings and expressions one evaluation may go
  /// through; a function that is computed in decimals there counts as 64 more.
  static constexpr std::uint64_t kMaximumSubstitutedWork = std::uint64_t{1} << 24;

  using FunctionResolver = std::function<MXMathFunction(const String& name)>;
  using VariableResolver = std::function<std::optional<MXNumber>(const String& name)>;

  /// The process's shared evaluator, made at first use from any thread.
  static const Ref<MXMathEvaluator>& defaultMathEvaluator();
  static const Ref<MXMathEvaluator>& sharedMathEvaluator() { return defaultMathEvaluator(); }

  /// Radians, the default operator set, double precision, and the standard aliases ("avg", "mean",
  /// "trunc", "modulo", "π", "tau_2", "τ", "ϕ", "vers", "ver", "vercos", "cvs", "chord").
  MXMathEvaluator();
  ~MXMathEvaluator() override;

  /// Registers a function under the name in lower case; false, changing nothing, when a built-in or
  /// a registered function has that name.
  bool registerFunction(MXMathFunction function, const String& forName);
  /// The same for a function of numbers, whose arguments are evaluated first, in order, up to the
  /// first that fails. It costs little: prepared expressions call it as they call built-ins.
  bool registerNumberFunction(MXNumberFunction function, const String& forName);
  /// Forgets a registered function or alias; built-ins stay.
  void unregisterFunctionWithName(const String& name);
  /// The names of all built-ins, registered functions and aliases, sorted by their bytes.
  std::vector<String> registeredFunctions() const;
  /// Makes another name for a function, which is looked up when the alias is called; refused as
  /// `registerFunction` is, and for a nil function name. "trunc" is floor, for negative numbers
  /// too. An alias of percent stands in no sum: with "pct" for it, 50 + pct(10) is 50.1.
  bool addAlias(const String& alias, const String& forFunctionName);
  void removeAlias(const String& alias) { unregisterFunctionWithName(alias); }

  /// The value of a text; nothing, with the error in the slot, on failure.
  std::optional<MXNumber> evaluateString(std::string_view string,
                                         const MXSubstitutions& substitutions,
                                         MXError* error) const;
  /// The same; a failure is logged ("error: …").
  std::optional<MXNumber> evaluateString(std::string_view string,
                                         const MXSubstitutions& substitutions) const;
  /// The value of a tree; nothing, with the error in the slot, on failure. An error that stands in
  /// the slot already is not overwritten by the general ones about names that are not resolved and
  /// functions that return nothing of use.
  std::optional<MXNumber> evaluateExpression(const MXExpression& expression,
                                             const MXSubstitutions& substitutions,
                                             MXError* error) const;

  /// Forward to the default rewriter.
  Ref<MXExpression> expressionByRewritingExpression(const Ref<MXExpression>& expression) const;
  void addRewriteRule(const String& replacement, const String& forExpressionsMatchingTemplate,
                      const String& condition);

  /// What strings are tokenized with; never null.
  const Ref<MXMathOperatorSet>& operatorSet() const noexcept { return operatorSet_; }
  void setOperatorSet(const Ref<MXMathOperatorSet>& operatorSet);
  MXAngleMeasurementMode angleMeasurementMode() const noexcept { return angleMode_; }
  void setAngleMeasurementMode(MXAngleMeasurementMode mode) noexcept { angleMode_ = mode; }
  /// Whether the built-in functions compute in decimals of 38 digits instead of doubles. Changing
  /// it makes a new function evaluator; setting it to what it is keeps the old one.
  bool usesHighPrecisionEvaluation() const noexcept { return !computesInDoubles_; }
  void setUsesHighPrecisionEvaluation(bool uses);
  /// Whether a function that is not known is looked up as a variable, so that "2x" takes x's value.
  bool resolvesFunctionsAsVariables() const noexcept { return functionsAsVariables_; }
  void setResolvesFunctionsAsVariables(bool resolves) noexcept { functionsAsVariables_ = resolves; }
  /// Asked for functions that nothing else knows; may answer an empty function.
  const FunctionResolver& functionResolver() const noexcept { return resolvers_->ofFunctions; }
  void setFunctionResolver(FunctionResolver resolver) {
    resolvers_->ofFunctions = std::move(resolver);
  }
  /// Asked for variables that have no substitution.
  const VariableResolver& variableResolver() const noexcept { return resolvers_->ofVariables; }
  void setVariableResolver(VariableResolver resolver) {
    resolvers_->ofVariables = std::move(resolver);
  }

  /// Makes `random()` give the same sequence from here on; it is seeded from the system otherwise.
  void seedRandomNumbers(std::uint64_t seed);
  /// The next whole number of the sequence, in [lower, upper).
  double randomNumber(std::uint32_t lower, std::uint32_t upper);

  /// A registered function of either kind, or an alias of another name.
  struct RegisteredFunction {
    String aliasOf;                                  // nil unless it is an alias
    std::shared_ptr<const MXMathFunction> function;  // of either kind, one is null
    std::shared_ptr<const detail::HostFunction> ofNumbers;
  };
  /// By the name in lower case; null when nothing is registered under it.
  const RegisteredFunction* registeredFunction(const String& name) const noexcept {
    return functionMap_.find(name);
  }
  const detail::MXFunctionEvaluator& functionEvaluator() const noexcept {
    return *functionEvaluator_;
  }
  bool computesInDoubles() const noexcept { return computesInDoubles_; }

 private:
  // Apart, since not every standard library lets a function object stand in an object of ours.
  struct Resolvers {
    FunctionResolver ofFunctions;
    VariableResolver ofVariables;
  };

  bool enter(const String& name, RegisteredFunction function);

  OrderedMap<RegisteredFunction> functionMap_;
  Ref<detail::MXFunctionEvaluator> functionEvaluator_;
  Ref<MXMathOperatorSet> operatorSet_;
  std::unique_ptr<Resolvers> resolvers_;
  std::unique_ptr<detail::RandomNumbers> randomNumbers_;
  MXAngleMeasurementMode angleMode_ = MXAngleMeasurementMode::radians;
  bool functionsAsVariables_ = false;
  bool computesInDoubles_ = true;
};

}  // namespace tarnkit
