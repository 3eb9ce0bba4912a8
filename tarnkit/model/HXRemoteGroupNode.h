#pragma once

#include "tarnkit/model/HXNode.h"

namespace tarnkit {

/// The node of the Remote Group patch: its subnodes are shown where a group processor stands, so it
/// is itself never a view.
class HXRemoteGroupNode final : public HXNode {
  TARNKIT_CLASS
 public:
  HXRemoteGroupNode() = default;
  bool shouldBeTreatedAsViewNode() const override { return false; }

 protected:
  const Symbol& deviceClassName() const override;

 private:
  explicit HXRemoteGroupNode(Decoding decoding) noexcept : HXNode(decoding) {}
  static Ref<Object> makeForDecoding(const Class&);
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);
};

}  // namespace tarnkit
