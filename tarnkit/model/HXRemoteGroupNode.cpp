#include "tarnkit/model/HXRemoteGroupNode.h"

namespace tarnkit {

const Class HXRemoteGroupNode::kClass{"HXRemoteGroupNode", &HXNode::kClass,
                                      &HXRemoteGroupNode::makeForDecoding};

Ref<Object> HXRemoteGroupNode::makeForDecoding(const Class&) {
  return make<HXRemoteGroupNode>(Decoding{});
}

const Symbol& HXRemoteGroupNode::deviceClassName() const {
  static constinit const Symbol name{"PMRemoteGroupNode"};
  return name;
}

}  // namespace tarnkit
