#pragma once

#include <vector>

#include "tarnkit/patches/HXRValueParameters.h"
#include "tarnkit/patches/catalogue/NamedInputs.h"

namespace tarnkit {

/// Computes an expression; each variable in its text is an input.
/// Made by its record; owned by its editor node. For one thread; a change of the text costs time
/// linear in it, and what it adds and removes.
class HXRMathExpressionNode final : public NamedInputsNode {
 public:
  static const HXRNodeClass kClass;
  explicit HXRMathExpressionNode(const HXRNodeClass& patchClass);

  /// The text; null in a class that has put another kind of parameter in its place.
  HXRStringParameter* mathExpressionParameter() const;
  /// This definition's own inputs, variable name to port, in the order in which they were made.
  OrderedMap<Ref<HXRPort>> variableInputs() { return inputsByName(); }

  /// The names of the expression's variables, each once, in the order in which their texts first
  /// occur, even inside of another word. None, and a warning in the log, when the text is no
  /// expression.
  static std::vector<String> trn_variablesForExpression(const String& expression);
  /// Removes the inputs of variables that are gone and appends those of new ones; the others keep
  /// their places and connections.
  void trn_refreshPorts();
  void parameterValueDidChange(HXRParameter& parameter) override;
};

}  // namespace tarnkit
