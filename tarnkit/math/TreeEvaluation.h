#pragma once

#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "tarnkit/math/EvaluationNesting.h"
#include "tarnkit/math/HostFunction.h"
#include "tarnkit/math/SmallStack.h"

namespace tarnkit::detail {

/// So many substitutions are searched one after the other, more are found by their hashes.
inline constexpr std::uint32_t kSearchedInPlace = 8;

/// Whether two names are equal. Most are short: where the first characters differ nothing more need
/// be looked at.
inline bool sameName(std::string_view a, std::string_view b) noexcept {
  return a.size() == b.size() &&
         (a.empty() || (a.front() == b.front() &&
                        (a.size() == 1 || std::memcmp(a.data(), b.data(), a.size()) == 0)));
}

/// Evaluates a tree of built-in functions in doubles; false when a variable has no number among the
/// substitutions (then `TreeEvaluation` finds its value or the error). No side effects, no memory
/// for trees of ordinary depth.
bool evaluatePlainTree(const TreeView& tree, std::uint32_t stackDepth,
                       const MXSubstitutions& substitutions, bool degrees, double& result);

/// Gives the error the place of a node in the text that its tree was read from, or none.
void placeError(MXError& error, const TreeView& tree, const ExpressionNode& node) noexcept;

/// Evaluates any expression in the order of its arguments, from a stack of its own: registered
/// functions, aliases, resolvers, substituted strings and expressions, and every error. Used once.
class TreeEvaluation {
 public:
  TreeEvaluation(const MXMathEvaluator& evaluator, const MXSubstitutions& substitutions,
                 MXError* error);

  std::optional<MXNumber> evaluate(const MXExpression& expression);

 private:
  /// A function whose arguments are being evaluated.
  struct Frame {
    std::uint32_t node;
    std::uint32_t waiting;  // arguments still to come, on top of `children_`
    std::uint32_t place;    // which argument of its parent it is
    std::size_t firstValue;
    Builtin builtin;  // what computes it, aliases followed: this, or a host function
    const HostFunction* host;
  };

  bool step(std::uint32_t node, std::uint32_t place);
  bool enterFunction(std::uint32_t node, std::uint32_t place);
  bool enterBuiltin(std::uint32_t node, std::uint32_t place, Builtin builtin);
  void enterFrame(std::uint32_t node, std::uint32_t place, Builtin builtin,
                  const HostFunction* host);
  bool leaveFunction();
  std::optional<MXNumber> compute(const Frame& frame, std::span<const MXNumber> arguments);
  bool callRegistered(const MXMathFunction& function, std::uint32_t place, const String& name);
  bool resolveUnknown(const String& name, std::uint32_t place);
  bool pushVariable(std::uint32_t node);
  bool findPercentBase(const Frame& frame, MXNumber& base);
  std::optional<MXNumber> variableValue(const String& name);
  std::optional<MXNumber> reduce(const Object* value);
  Ref<MXExpression> objectOf(std::uint32_t place);
  std::nullopt_t failAt(std::uint32_t node);
  bool fail(MXErrorCode code, std::string message);
  bool failReturning(std::string_view name);

  EvaluationNesting nesting_;
  const MXMathEvaluator& evaluator_;
  const MXSubstitutions& substitutions_;
  MXError own_;  // takes the error when the caller gave no slot
  MXError* error_;
  const MXExpression* root_ = nullptr;
  TreeView tree_;
  SmallStack<Frame, 16> frames_;
  /// The objects of the first frames, made when a registered function asks for its arguments.
  std::vector<Ref<MXExpression>> objects_;
  /// The host functions that are called.
  std::vector<std::shared_ptr<const HostFunction>> hosts_;
  SmallStack<std::uint32_t, 16> children_;
  SmallStack<MXNumber, 16> values_;
};

}  // namespace tarnkit::detail
