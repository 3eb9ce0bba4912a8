#include "tarnkit/model/HXRemoteGroupProcessorNode.h"

namespace tarnkit {

const Class HXRemoteGroupProcessorNode::kClass{"HXRemoteGroupProcessorNode", &HXNode::kClass,
                                               &HXRemoteGroupProcessorNode::makeForDecoding};

Ref<Object> HXRemoteGroupProcessorNode::makeForDecoding(const Class&) {
  return make<HXRemoteGroupProcessorNode>(Decoding{});
}

const Symbol& HXRemoteGroupProcessorNode::deviceClassName() const {
  static constinit const Symbol name{"PMRemoteGroupProcessorNode"};
  return name;
}

}  // namespace tarnkit
