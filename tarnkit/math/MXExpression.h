#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "tarnkit/math/ExpressionTree.h"
#include "tarnkit/math/MXError.h"
#include "tarnkit/math/MXNumber.h"
#include "tarnkit/platform/collections/OrderedMap.h"

namespace tarnkit {

class MXMathEvaluator;
namespace detail {
class TreeBuilder;
}

/// The values of variables by name: numbers, strings (evaluated as expressions) or expressions.
using MXSubstitutions = OrderedMap<Ref<Object>>;

enum class MXExpressionType : int { number = 0, function = 1, variable = 2 };

/// A node of an expression tree: a number, a variable, or a function of argument expressions. Every
/// operator has become a function ("2 + $x" is add(2,$x)).
///
/// Immutable, shared through `Ref`, archived by keyed coders. A tree that was parsed, simplified or
/// rewritten is one block of memory whose inner nodes become objects when `arguments` asks for
/// them; walking, comparing, printing, copying and evaluating do not need them. None of these
/// recurses, so a tree may be as deep as memory allows. Several threads may read one expression.
class MXExpression : public Object {
  TARNKIT_CLASS
 public:
  /// Parses a text; null, with the error in the slot, when it is no expression. Linear in the text.
  static Ref<MXExpression> expressionFromString(std::string_view string, MXError* error);
  static Ref<MXExpression> numberExpressionWithNumber(const MXNumber& number);
  /// A leading "$" is removed from the name; null when nothing is left.
  static Ref<MXExpression> variableExpressionWithVariable(const String& variable);
  /// The new node holds these argument objects and becomes their parent. One that is null or no
  /// expression gives null and "function arguments must be MXExpression objects" (code 18).
  static Ref<MXExpression> functionExpressionWithFunctionOfObjects(
      const String& function, const std::vector<Ref<Object>>& arguments, MXError* error);
  static Ref<MXExpression> functionExpressionWithFunction(
      const String& function, const std::vector<Ref<MXExpression>>& arguments, MXError* error);
  /// The tree that a builder holds, which must not be empty; the builder is used up.
  static Ref<MXExpression> expressionWithTree(detail::TreeBuilder& tree);

  virtual MXExpressionType expressionType() const;
  /// The value of a number node; other nodes throw std::logic_error.
  virtual MXNumber number() const;
  /// The name of a function node in lower case; other nodes throw std::invalid_argument.
  virtual String function() const;
  /// The arguments of a function node, the same objects on every call; other nodes throw
  /// std::invalid_argument.
  virtual const std::vector<Ref<MXExpression>>& arguments() const;
  /// The name of a variable node, without "$"; other nodes throw std::invalid_argument.
  virtual String variable() const;
  /// The function node that holds this one as an argument; null for a root.
  Ref<MXExpression> parentExpression() const { return parent_.lock(); }

  /// A deep, independent copy.
  virtual Ref<MXExpression> copy() const;
  /// The tree with every function of numbers replaced by its value. A null evaluator means the
  /// default one. A function that cannot be evaluated stays, with its simplified arguments.
  virtual Ref<MXExpression> simplifiedExpressionWithEvaluator(const MXMathEvaluator* evaluator,
                                                              MXError* error) const;
  /// The same with the default evaluator; an error is logged ("error: …") and gives null.
  Ref<MXExpression> simplifiedExpression() const;
  /// The evaluator's value of this node; nothing without an evaluator.
  std::optional<MXNumber> evaluateWithSubstitutions(const MXSubstitutions& substitutions,
                                                    const MXMathEvaluator* evaluator,
                                                    MXError* error) const;

  /// Same kind and same value, name, or name in lower case and arguments.
  bool isEqual(const Object& other) const override;
  /// Of the number or the name; arguments do not contribute.
  std::uint64_t hash() const override;
  /// "2.5", "$x", "add(2,$x)"; function names as written.
  String description() const override;

  /// The node as the algorithms see it. `storage` holds a node that stands in no tree; both it and
  /// this object must outlive the view.
  virtual detail::TreeView view(detail::ExpressionNode& storage) const;

 protected:
  MXExpression() noexcept = default;
  static void setParent(MXExpression& expression, MXExpression* parent) {
    expression.parent_ = WeakRef<MXExpression>(parent);
  }
  static bool hasParent(const MXExpression& expression) { return expression.parent_.get(); }

 private:
  WeakRef<MXExpression> parent_;
};

}  // namespace tarnkit
