#pragma once

#include "tarnkit/platform/objects/Object.h"

namespace tarnkit {

class HXRNode;
class HXRParameter;
class HXRPort;

/// What a patch definition tells the editor node that owns it. Implemented by the editor's node; it
/// stands here so that definitions know nothing of the model.
class HXRNodeOwner : public Object {
 public:
  /// The definition is about to change ports, groups or parameters. What is answered is held until
  /// it has, and everything was told; null, the answer of the base, when that does not matter.
  virtual Ref<Object> patchWillChange(HXRNode& definition);
  virtual void addPatchPort(HXRPort& port) = 0;
  virtual void removePatchPort(HXRPort& port) = 0;
  virtual void addPatchParameter(HXRParameter& parameter) = 0;
  virtual void removePatchParameter(HXRParameter& parameter) = 0;
  virtual void patchPortNameDidChange(HXRPort& port) = 0;
  /// The definition replaced every port description and port group by an equal one of its own: the
  /// node takes those up. Nothing else has changed.
  virtual void patchLayoutWasCopied() = 0;
  /// Around the steps by which the definition brings its ports and parameters in line with a
  /// parameter (`HXRNode::rebuild`). Each step is told as ever; in between a group may be missing
  /// that was there before and will be there again. Told once for rebuilds inside of a rebuild. The
  /// owner that was told of the beginning is told of the end, even if the definition is another
  /// node's by then, or nobody's. Do nothing here.
  virtual void patchRebuildWillBegin(HXRNode& definition);
  virtual void patchRebuildDidEnd(HXRNode& definition);
  /// Whether the definition is the owner's own, whose link only the owner changes. No here.
  virtual bool holdsPatch(const HXRNode& definition) const noexcept;

 protected:
  /// The owner becomes the definition's node, or ceases to be.
  void takeUp(HXRNode& definition);
  static void letGo(HXRNode& definition);
};

}  // namespace tarnkit
