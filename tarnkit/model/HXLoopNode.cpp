#include "tarnkit/model/HXLoopNode.h"

namespace tarnkit {

const Class HXLoopNode::kClass{"HXLoopNode", &HXNode::kClass, &HXLoopNode::makeForDecoding};

Ref<Object> HXLoopNode::makeForDecoding(const Class&) { return make<HXLoopNode>(Decoding{}); }

const Symbol& HXLoopNode::deviceClassName() const {
  static constinit const Symbol name{"PMLoopNode"};
  return name;
}

}  // namespace tarnkit
