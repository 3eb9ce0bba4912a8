#include <fmt/format.h>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/foundation/MapAdditions.h"
#include "tarnkit/model/HXGroup.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/HXArchivedKeys.h"
#include "tarnkit/platform/collections/MembersOf.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

namespace {

namespace key = archived::group;

constinit const Symbol kDeviceUniqueKey{"PMGroup.uniqueKey"};
constinit const Symbol kDeviceNode{"PMGroup.node"};
constinit const Symbol kDeviceSubnodes{"PMGroup.subnodes"};

}  // namespace

void HXGroup::encodeWithCoder(Encoder& coder) const {
  if (isEditorCodingType(coder.codingType())) {
    coder.encodeConditionalObject(node_, key::kNode);
    if (coder.codingType() == HXCodingTypeEditorWithKeys) {
      coder.encodeMap(subnodes_, key::kSubnodesByUniqueKey);
    } else {
      // Sorted, so that two documents can be compared; the device graph deliberately is not.
      coder.encodeList(coder.keepsOrder() ? subnodes() : allValuesSortedByKey(subnodes_),
                       key::kSubnodes);
    }
    coder.encodeFloat(canvasCenter_.x, key::kCanvasCenterX);
    coder.encodeFloat(canvasCenter_.y, key::kCanvasCenterY);
    coder.encodeBool(opaque_, key::kOpaque);
    for (const auto orientation : kBothSides) {
      coder.encodeMembers(symbolicPortsInForce(orientation), key::kSymbolicPorts[orientation]);
    }
  } else if (coder.codingType() == HXCodingTypeDevice) {
    coder.setClassName(processClassName(), isa());
    coder.encodeString(uniqueKey_, kDeviceUniqueKey);
    coder.encodeConditionalObject(node_, kDeviceNode);
    coder.encodeList(subnodes(), kDeviceSubnodes);
  }
}

void HXGroup::initWithCoder(Decoder& coder) {
  uniqueKey_ = hx_newUniqueKey();
  canvasCenter_ = {coder.decodeFloat(key::kCanvasCenterX), coder.decodeFloat(key::kCanvasCenterY)};
  opaque_ = coder.decodeBool(key::kOpaque);
  for (const auto orientation : kBothSides) {
    coder.decodeEach<HXSymbolicPort>(
        key::kSymbolicPorts[orientation],
        [&](const Ref<HXSymbolicPort>& port) { symbolicPorts_[orientation]->add(port); });
  }
  node_ = coder.decode<HXNode>(key::kNode);
  if (coder.codingType() == HXCodingTypeEditorWithKeys) {
    coder.decodeEachEntry<HXNode>(
        key::kSubnodesByUniqueKey,
        [&](const String&, const Ref<HXNode>& node) { decodedSubnodes_.push_back(node); });
  } else if (isEditorCodingType(coder.codingType())) {
    coder.decodeEach<HXNode>(key::kSubnodes,
                             [&](const Ref<HXNode>& node) { decodedSubnodes_.push_back(node); });
  }
}

void HXGroup::awakeAfterDecoding(Decoder& coder) {
  subnodes_.reserve(static_cast<std::uint32_t>(decodedSubnodes_.size()));
  for (const auto& node : std::exchange(decodedSubnodes_, {})) {
    // The group that lists a node holds it, whatever group the node says that it is in.
    const auto* other = node->parentGroup();
    const bool isHeld =
        other && other != this && other->subnodeForKey(node->uniqueKey()) == node.get();
    if (isHeld || subnodes_.contains(node->uniqueKey())) {
      coder.fail("HXGroup.subnodes: a node that belongs to two groups, or twice to one");
      return;
    }
    node->linkParentGroup(this, HXNode::Told::nobody, {});
    insertSubnode(node);
  }
  for (const auto& ports : symbolicPorts_) settlePublications(*ports);
}

// A port may be published here whose node was moved elsewhere. Only such publications can stand for
// each other in a circle: inside its own group a port is always nearer to the end of its chain.
// Everything that the chains lead to has read its keys by now; of a circle the group that is
// awoken first finds a port that has no node yet.
void HXGroup::settlePublications(OrderedSet& ports) {
  std::vector<Ref<HXSymbolicPort>> taken;
  for (auto& symbolicPort : membersOf<HXSymbolicPort>(ports)) {
    if (symbolicPort.node() && symbolicPort.node() != node()) {
      taken.emplace_back(&symbolicPort);
      continue;
    }
    const auto* port = symbolicPort.port();
    const auto* inner = port ? port->node() : nullptr;
    if (port && (!inner || subnodeForKey(inner->uniqueKey()) != inner)) breakCircle(symbolicPort);
    symbolicPort.linkNode(node(), PassKey<HXGroup>());
  }
  for (const auto& symbolicPort : taken) {
    Log::warning("HXGroup",
                 fmt::format("Dropping the publication \"{}\" that belongs to another group",
                             symbolicPort->name().view()));
    ports.remove(symbolicPort.get());
  }
}

void HXGroup::linkAdoptedBy(HXNode& node, PassKey<HXNode>) {
  node_ = &node;
  for (const auto& ports : symbolicPorts_) {
    for (auto& symbolicPort : membersOf<HXSymbolicPort>(*ports)) {
      symbolicPort.linkNode(&node, PassKey<HXGroup>());
    }
  }
}

// Of the publications that stand for each other in a circle the one that closes it stands for
// nothing from now on. No publication is walked twice.
void HXGroup::breakCircle(HXSymbolicPort& symbolicPort) {
  using Chain = HXSymbolicPort::Chain;
  std::vector<HXSymbolicPort*> walked;
  for (auto* at = &symbolicPort; at && at->chain_ != Chain::ends;
       at = as<HXSymbolicPort>(at->port())) {
    if (at->chain_ == Chain::walked) {
      HXSymbolicPort& closing = *walked.back();
      Log::warning("HXGroup", fmt::format("Dropping the publication \"{}\" that stands for itself",
                                          closing.name().view()));
      closing.setPort(nullptr);
      break;
    }
    at->chain_ = Chain::walked;
    walked.push_back(at);
  }
  for (auto* port : walked) port->chain_ = Chain::ends;
}

void HXGroup::abandonDecoding() {
  subnodes_.clear();
  decodedSubnodes_.clear();
}

}  // namespace tarnkit
