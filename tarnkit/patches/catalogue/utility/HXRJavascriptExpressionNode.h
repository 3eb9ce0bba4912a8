#pragma once

#include <cstdint>

#include "tarnkit/patches/HXRNode.h"

namespace tarnkit {

/// Computes the script function "expression"; each argument that its signature names is an input.
///
/// The names stand in a hidden parameter, so that they are saved; a change of the script sets that
/// parameter, and the change of that parameter, which comes back through the editor node, rebuilds
/// the inputs. A definition without a node therefore keeps its inputs. Made by its record; owned by
/// its editor node. For one thread; a change of the script costs time linear in it.
class HXRJavascriptExpressionNode final : public HXRNode {
 public:
  static const HXRNodeClass kClass;
  explicit HXRJavascriptExpressionNode(const HXRNodeClass& patchClass) : HXRNode(patchClass) {}

  /// For the script: sets the names of the signature, or "" (and logs "No function found.") when it
  /// has no function of that name with arguments. For the names: makes the inputs be those.
  void parameterValueDidChange(HXRParameter& parameter) override;

 private:
  void readSignature(const String& script);
  void refreshInputs(const String& variables);

  std::uint32_t refreshes_ = 0;
};

}  // namespace tarnkit
