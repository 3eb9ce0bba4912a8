#pragma once

#include <vector>

#include "tarnkit/patches/HXRTypedPorts.h"
#include "tarnkit/patches/HXRValueParameters.h"
#include "tarnkit/patches/catalogue/NamedInputs.h"

namespace tarnkit {

/// Computes the script function "expression"; each argument that its signature names is an input.
///
/// The names stand in a hidden parameter, so that they are saved; a change of the script sets that
/// parameter, and the change of that parameter, which comes back through the editor node, rebuilds
/// the inputs. A definition without a node therefore keeps its inputs. Made by its record; owned by
/// its editor node. For one thread; a change of the script costs time linear in it.
class HXRJavascriptExpressionNode final : public NamedInputsNode {
 public:
  static const HXRNodeClass kClass;
  explicit HXRJavascriptExpressionNode(const HXRNodeClass& patchClass);

  /// The script, and the names of its arguments; null in a class that has put another kind of
  /// parameter in its place.
  HXRStringParameter* javascriptExpressionParameter() const;
  HXRStringParameter* inputVariablesParameter() const;
  /// This definition's own inputs, in the order in which they were made.
  std::vector<Ref<HXRValueInputPort>> inputPorts();

  /// For the script: sets the names of the signature, or "" (and logs "No function found.") when it
  /// has no function of that name with arguments. For the names: makes the inputs be those.
  void parameterValueDidChange(HXRParameter& parameter) override;

 private:
  void readSignature(const String& script);
  void readVariables(const String& variables);
};

}  // namespace tarnkit
