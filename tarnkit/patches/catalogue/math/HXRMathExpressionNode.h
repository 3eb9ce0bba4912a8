#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/patches/HXRNode.h"

namespace tarnkit {

/// Computes an expression; each variable in its text is an input.
/// Made by its record; owned by its editor node. For one thread; a change of the text costs time
/// linear in it, and what it adds and removes.
class HXRMathExpressionNode final : public HXRNode {
 public:
  static const HXRNodeClass kClass;
  explicit HXRMathExpressionNode(const HXRNodeClass& patchClass) : HXRNode(patchClass) {}

  /// The names of the expression's variables, each once, in the order in which their texts first
  /// occur, even inside of another word. None, and a warning in the log, when the text is no
  /// expression.
  static std::vector<String> trn_variablesForExpression(const String& expression);
  /// Removes the inputs of variables that are gone and appends those of new ones; the others keep
  /// their places and connections.
  void trn_refreshPorts();
  void parameterValueDidChange(HXRParameter& parameter) override;

 private:
  void refreshInputs(const std::vector<String>& names);

  std::uint32_t refreshes_ = 0;
};

}  // namespace tarnkit
