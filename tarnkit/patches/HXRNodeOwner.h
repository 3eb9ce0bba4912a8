#pragma once

#include "tarnkit/platform/Object.h"

namespace tarnkit {

class HXRParameter;
class HXRPort;

/// What a patch definition tells the editor node that owns it. Implemented by the editor's node; it
/// stands here so that definitions know nothing of the model.
class HXRNodeOwner : public Object {
 public:
  virtual void addPatchPort(HXRPort& port) = 0;
  virtual void removePatchPort(HXRPort& port) = 0;
  virtual void addPatchParameter(HXRParameter& parameter) = 0;
  virtual void removePatchParameter(HXRParameter& parameter) = 0;
  virtual void patchPortNameDidChange(HXRPort& port) = 0;
  /// The definition replaced every port description and port group by an equal one of its own: the
  /// node takes those up. Nothing else has changed.
  virtual void patchLayoutWasCopied() = 0;
};

}  // namespace tarnkit
