#pragma once

#include "tarnkit/model/HXNode.h"

namespace tarnkit {

/// The node of the Loop patch: runs its subnodes several times on the device.
class HXLoopNode final : public HXNode {
  TARNKIT_CLASS
 public:
  HXLoopNode() = default;

 protected:
  const Symbol& deviceClassName() const override;

 private:
  explicit HXLoopNode(Decoding decoding) noexcept : HXNode(decoding) {}
  static Ref<Object> makeForDecoding(const Class&);
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);
};

}  // namespace tarnkit
