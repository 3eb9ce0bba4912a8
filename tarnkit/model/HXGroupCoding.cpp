#include <fmt/format.h>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/foundation/MapAdditions.h"
#include "tarnkit/model/HXGroup.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/Log.h"

namespace tarnkit {

namespace {

constinit const Symbol kNode{"HXGroup.node"};
constinit const Symbol kSubnodes{"HXGroup.subnodes"};
constinit const Symbol kSubnodesByUniqueKey{"HXGroup.subnodesByUniqueKey"};
constinit const Symbol kCanvasCenterX{"HXGroup.canvasCenter.x"};
constinit const Symbol kCanvasCenterY{"HXGroup.canvasCenter.y"};
constinit const Symbol kOpaque{"HXGroup.opaque"};
constinit const Symbol kSymbolicInputPorts{"HXGroup.symbolicInputPorts"};
constinit const Symbol kSymbolicOutputPorts{"HXGroup.symbolicOutputPorts"};

constinit const Symbol kDeviceUniqueKey{"PMGroup.uniqueKey"};
constinit const Symbol kDeviceNode{"PMGroup.node"};
constinit const Symbol kDeviceSubnodes{"PMGroup.subnodes"};

}  // namespace

void HXGroup::encodeWithCoder(Encoder& coder) const {
  if (isEditorCodingType(coder.codingType())) {
    coder.encodeConditionalObject(node_, kNode);
    if (coder.codingType() == HXCodingTypeEditorWithKeys) {
      coder.encodeMap(subnodes_, kSubnodesByUniqueKey);
    } else {
      // Sorted, so that two documents can be compared; the device graph deliberately is not.
      coder.encodeList(allValuesSortedByKey(subnodes_), kSubnodes);
    }
    coder.encodeFloat(canvasCenter_.x, kCanvasCenterX);
    coder.encodeFloat(canvasCenter_.y, kCanvasCenterY);
    coder.encodeBool(opaque_, kOpaque);
    coder.encodeMembers(*symbolicInputPorts_, kSymbolicInputPorts);
    coder.encodeMembers(*symbolicOutputPorts_, kSymbolicOutputPorts);
  } else if (coder.codingType() == HXCodingTypeDevice) {
    coder.setClassName(processClassName(), isa());
    coder.encodeString(uniqueKey_, kDeviceUniqueKey);
    coder.encodeConditionalObject(node_, kDeviceNode);
    coder.encodeList(subnodes(), kDeviceSubnodes);
  }
}

void HXGroup::initWithCoder(Decoder& coder) {
  uniqueKey_ = hx_newUniqueKey();
  canvasCenter_ = {coder.decodeFloat(kCanvasCenterX), coder.decodeFloat(kCanvasCenterY)};
  opaque_ = coder.decodeBool(kOpaque);
  coder.decodeEach<HXSymbolicPort>(kSymbolicInputPorts, [&](const Ref<HXSymbolicPort>& port) {
    symbolicInputPorts_->add(port);
  });
  coder.decodeEach<HXSymbolicPort>(kSymbolicOutputPorts, [&](const Ref<HXSymbolicPort>& port) {
    symbolicOutputPorts_->add(port);
  });
  node_ = coder.decode<HXNode>(kNode);
  if (coder.codingType() == HXCodingTypeEditorWithKeys) {
    coder.decodeEachEntry<HXNode>(
        kSubnodesByUniqueKey,
        [&](const String&, const Ref<HXNode>& node) { decodedSubnodes_.push_back(node); });
  } else if (isEditorCodingType(coder.codingType())) {
    coder.decodeEach<HXNode>(kSubnodes,
                             [&](const Ref<HXNode>& node) { decodedSubnodes_.push_back(node); });
  }
}

void HXGroup::awakeAfterDecoding(Decoder& coder) {
  subnodes_.reserve(static_cast<std::uint32_t>(decodedSubnodes_.size()));
  for (const auto& node : std::exchange(decodedSubnodes_, {})) {
    if (!node->parentGroup_) node->parentGroup_ = this;
    if (node->parentGroup_.get() != this || subnodes_.contains(node->uniqueKey())) {
      coder.fail("HXGroup.subnodes: a node that belongs to two groups, or twice to one");
      return;
    }
    subnodes_.set(node->uniqueKey(), node);
  }
  // A published port must be one of a subnode: that is what keeps publications from standing for
  // each other in a circle.
  for (const auto& ports : {symbolicInputPorts_, symbolicOutputPorts_}) {
    for (const auto& member : *ports) {
      auto& symbolicPort = static_cast<HXSymbolicPort&>(*member);
      symbolicPort.setNode(node());
      auto* port = symbolicPort.port();
      if (!port || (port->node() && port->node()->parentGroup() == this)) continue;
      Log::warning("HXGroup", fmt::format("Dropping the publication \"{}\" of a port that is not "
                                          "inside the group",
                                          symbolicPort.name().view()));
      symbolicPort.setPort(nullptr);
      if (port->symbolicPort() == &symbolicPort) port->setSymbolicPort(nullptr);
    }
  }
}

void HXGroup::abandonDecoding() {
  subnodes_.clear();
  decodedSubnodes_.clear();
}

}  // namespace tarnkit
