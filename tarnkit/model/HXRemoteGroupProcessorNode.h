#pragma once

#include "tarnkit/model/HXNode.h"

namespace tarnkit {

/// The node of the Group Processor patch: shows the views of a remote group, so it is always a
/// view.
class HXRemoteGroupProcessorNode final : public HXNode {
  TARNKIT_CLASS
 public:
  HXRemoteGroupProcessorNode() = default;
  bool shouldBeTreatedAsViewNode() const override { return true; }

 protected:
  const Symbol& deviceClassName() const override;

 private:
  explicit HXRemoteGroupProcessorNode(Decoding decoding) noexcept : HXNode(decoding) {}
  static Ref<Object> makeForDecoding(const Class&);
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);
};

}  // namespace tarnkit
