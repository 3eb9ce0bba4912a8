#include "tarnkit/model/HXReplicatorNode.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/foundation/MapAdditions.h"
#include "tarnkit/model/HXEntryChange.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/HXArchivedKeys.h"
#include "tarnkit/platform/collections/Array.h"
#include "tarnkit/platform/collections/Dictionary.h"
#include "tarnkit/platform/collections/MembersOf.h"
#include "tarnkit/platform/system/Log.h"
#include "tarnkit/platform/text/UUID.h"

namespace tarnkit {

const Class HXReplicatorNode::kClass{"HXReplicatorNode", &HXNode::kClass,
                                     &HXReplicatorNode::makeForDecoding};

namespace {

namespace key = archived::replicatorNode;

// The name says the reverse of what stands under it (key to port), and is kept for the documents
// that have it.
constinit const Symbol kDeviceArrayOutputs{"PMReplicatorNode.arrayOutputPortKeyToKeyPath"};

constinit const Symbol kResolvedPortNodeKeyPath{"ResolvedPortNodeKeyPath"};
constinit const Symbol kResolvedPortKey{"ResolvedPortKey"};
constinit const Symbol kReplicatorOutputPortKey{"ReplicatorOutputPortKey"};

const String& outputGroupKey() {
  static const String key = String::interned("ReplicatorOutputs");
  return key;
}

Ref<Array> arrayOf(const std::vector<String>& strings) {
  auto array = make<Array>();
  for (const auto& string : strings) array->add(string.object());
  return array;
}

}  // namespace

struct HXReplicatorNodeFields {
  struct ArrayOutput : detail::TableOf<HXReplicatorNode, IdentityMap<HXPort, String>> {
    static constexpr const char* kName = "arrayOutput";
    static Collection& in(HXReplicatorNode& node) { return node.arrayOutputKeys_; }
    static void follow(HXReplicatorNode& node, const Ref<HXPort>& port, const String*, bool) {
      node.followCollectedPort(port);
    }
    static void addNotices(HXReplicatorNode& node, const Ref<HXPort>& port, const String* key,
                           bool came, HXChangeNotices& notices) {
      if (!key) return;
      using Order = HXChangeNotices::Order;
      notices.addMember(node, *port, came, Order::newPublication, Order::gonePublication,
                        [&node, port, key = *key](bool here) {
                          if (here) {
                            node.announceAddedOutput(*port, key);
                          } else {
                            node.announceRemovedOutput(key);
                          }
                        });
    }
  };
};

Ref<Object> HXReplicatorNode::makeForDecoding(const Class&) {
  return make<HXReplicatorNode>(Decoding{});
}

const Symbol& HXReplicatorNode::deviceClassName() const {
  static constinit const Symbol name{"PMReplicatorNode"};
  return name;
}

bool HXReplicatorNode::hx_shouldMatchPortWithArrayOutputPort(const HXPort& port) {
  return port.connectionRelationship() == HXConnectionRelationshipMany;
}

Ref<HXRPort> HXReplicatorNode::hx_replicatorArrayOutputPortForPort(const HXPort& port) const {
  const String key = arrayOutputKeys_.get(&port);
  return key.isNil() || !patch() ? nullptr : Ref<HXRPort>(patch()->portForKey(key));
}

HXPort* HXReplicatorNode::collectingPort(const HXPort& port) const {
  const String key = arrayOutputKeys_.get(&port);
  return key.isNil() ? nullptr : portForKey(key);
}

void HXReplicatorNode::addArrayOutput(HXRNode& patch, HXPort& port, const String& key) const {
  patch.addPort(*make<HXRReplicatorArrayOutputPort>(Ref<HXRCollectedPort>(&port), key),
                outputGroupKey());
}

// The published inner outputs show only by way of their array outputs.
void HXReplicatorNode::hx_hideSymbolicOutputPortGroups() {
  const Ref<HXNode> self(this);
  for (const auto& group : outputPortGroups()) {
    if (as<HXSymbolicPortGroup>(group.get())) group->setHidden(true);
  }
}

std::vector<String> HXReplicatorNode::hx_keyPathForNode(const HXNode* node) const {
  std::vector<String> keys;
  for (; node && node != this; node = node->enclosingNode()) keys.push_back(node->uniqueKey());
  std::reverse(keys.begin(), keys.end());
  return keys;
}

void HXReplicatorNode::symbolicPortNameWasAdded(HXPort& port) {
  const Ref<HXNode> kept(this);
  const Ref<HXPort> keptPort(&port);
  if (hx_shouldMatchPortWithArrayOutputPort(port)) {
    endArrayOutput(port);  // a port that is published once more is collected once
    const String key(fmt::format("ReplicatorOutput.{}", newUUIDString().view()));
    if (!collect(keptPort, key)) return;
    announceAddedOutput(port, key);
  }
  HXNode::symbolicPortNameWasAdded(port);
}

void HXReplicatorNode::symbolicPortNameWasRemoved(HXPort& port, HXSymbolicPort& symbolicPort) {
  const Ref<HXNode> kept(this);
  const Ref<HXPort> keptPort(&port);
  const Ref<HXSymbolicPort> keptSymbolicPort(&symbolicPort);
  if (hx_shouldMatchPortWithArrayOutputPort(port)) endArrayOutput(port);
  HXNode::symbolicPortNameWasRemoved(port, symbolicPort);
}

void HXReplicatorNode::symbolicPortWasPointed(HXSymbolicPort& symbolicPort, HXPort* earlier) {
  const Ref<HXPort> port(symbolicPort.port());
  const String key = earlier ? arrayOutputKeys_.get(earlier) : String();
  if (key.isNil() || !port || arrayOutputKeys_.contains(port.get())) return;
  const Ref<HXNode> kept(this);
  const Ref<HXPort> keptEarlier(earlier);
  detail::willChangeEntry<HXReplicatorNodeFields::ArrayOutput>(*this, keptEarlier);
  arrayOutputKeys_.take(earlier);
  detail::willChangeEntry<HXReplicatorNodeFields::ArrayOutput>(*this, port);
  arrayOutputKeys_.set(port, key);
  followCollectedPort(port);
  if (isOfSubnode(*earlier)) announceRemovedOutput(key);
  if (isOfSubnode(*port) && arrayOutputKeys_.get(port.get()) == key)
    announceAddedOutput(*port, key);
}

bool HXReplicatorNode::isOfSubnode(const HXPort& port) const {
  const auto* node = port.node();
  return node && node->enclosingNode() == this;
}

void HXReplicatorNode::followCollectedPort(const Ref<HXPort>& port) const {
  const String key = arrayOutputKeys_.get(port.get());
  if (key.isNil() || !patch()) return;
  const auto* output = patch()->portLayout().ports().find(key);
  auto* collecting = output ? as<HXRReplicatorArrayOutputPort>(output->get()) : nullptr;
  if (collecting && !collecting->isShared()) collecting->setPort(port);
}

void HXReplicatorNode::endArrayOutput(HXPort& port) {
  const auto output = hx_replicatorArrayOutputPortForPort(port);
  // Forgotten first: an observer of the rest may publish the port anew.
  detail::willChangeEntry<HXReplicatorNodeFields::ArrayOutput>(*this, &port);
  const String key = arrayOutputKeys_.take(&port);
  if (output) Ref<HXRNode>(patch())->removePort(*output);
  if (key.isNil()) return;
  announceRemovedOutput(key);
}

void HXReplicatorNode::setArrayOutputs(const IdentityMap<HXPort, String>& keys) {
  const Ref<HXNode> kept(this);
  const detail::RecordedOperation operation(static_cast<const HXNode&>(*this));
  std::vector<std::pair<Ref<HXPort>, String>> wanted;
  for (const auto& entry : keys) {
    const auto* published = entry.key->symbolicPort();
    if (published && published->isHeld() && published->node() == this && !entry.value.isNil() &&
        hx_shouldMatchPortWithArrayOutputPort(*entry.key)) {
      wanted.emplace_back(entry.key, entry.value);
    }
  }
  const auto present = arrayOutputKeys_;
  const auto isSame = [](const auto& entry, const std::pair<Ref<HXPort>, String>& other) {
    return entry.key == other.first && entry.value == other.second;
  };
  if (std::equal(present.begin(), present.end(), wanted.begin(), wanted.end(), isSame)) return;
  for (const auto& entry : present) endArrayOutput(*entry.key);
  for (const auto& [port, key] : wanted) {
    if (collect(port, key)) announceAddedOutput(*port, key);
  }
}

bool HXReplicatorNode::collect(const Ref<HXPort>& port, const String& key) {
  // Noted first: whoever observes the rest may end the publication, and with it the array output.
  detail::willChangeEntry<HXReplicatorNodeFields::ArrayOutput>(*this, port);
  arrayOutputKeys_.set(port, key);
  if (patch()) addArrayOutput(*Ref<HXRNode>(patch()), *port, key);
  hx_hideSymbolicOutputPortGroups();
  return arrayOutputKeys_.get(port.get()) == key;
}

void HXReplicatorNode::announceAddedOutput(const HXPort& port, const String& key) {
  NotificationCenter::defaultCenter().postLazily(
      HXReplicatorNodeAddOutputPortNotification, *this, [&] {
        const auto* resolved = port.resolvedPort();
        return UserInfo{{HXDocumentKeyInfo, documentKey().object()},
                        {HXNodeInfo, Ref<Object>(this)},
                        {kResolvedPortNodeKeyPath,
                         arrayOf(hx_keyPathForNode(resolved ? resolved->node() : nullptr))},
                        {kResolvedPortKey, resolved ? resolved->uniqueKey().object() : nullptr},
                        {kReplicatorOutputPortKey, key.object()}};
      });
}

void HXReplicatorNode::announceRemovedOutput(const String& key) {
  NotificationCenter::defaultCenter().postLazily(
      HXReplicatorNodeRemoveOutputPortNotification, *this, [&] {
        return UserInfo{{HXDocumentKeyInfo, documentKey().object()},
                        {HXNodeInfo, Ref<Object>(this)},
                        {kReplicatorOutputPortKey, key.object()}};
      });
}

void HXReplicatorNode::symbolicPortNameDidChange(HXSymbolicPort& symbolicPort) {
  const Ref<HXNode> kept(this);
  const Ref<HXSymbolicPort> keptSymbolicPort(&symbolicPort);
  if (const auto* port = symbolicPort.port()) {
    if (const auto output = hx_replicatorArrayOutputPortForPort(*port)) {
      output->setName(symbolicPort.name());
    }
  }
  HXNode::symbolicPortNameDidChange(symbolicPort);
}

void HXReplicatorNode::willSetPatch(const Ref<HXRNode>& patch) {
  if (!patch || arrayOutputKeys_.empty()) return;
  // A definition that is in force already announces what it is given.
  const auto outputs = arrayOutputKeys_;
  for (const auto& entry : outputs) {
    if (arrayOutputKeys_.get(entry.key.get()) == entry.value &&
        !patch->portLayout().ports().contains(entry.value)) {
      addArrayOutput(*patch, *entry.key, entry.value);
    }
  }
}

// Otherwise they would come back with the next patch and collect nodes that are in no document.
void HXReplicatorNode::didDropSubnodeGroup() {
  const Ref<HXNode> kept(this);
  const auto outputs = arrayOutputKeys_;
  for (const auto& entry : outputs) endArrayOutput(*entry.key);
}

void HXReplicatorNode::didSetPatch() { hx_hideSymbolicOutputPortGroups(); }

void HXReplicatorNode::encodeWithCoder(Encoder& coder) const {
  HXNode::encodeWithCoder(coder);
  if (isEditorCodingType(coder.codingType())) {
    coder.encodeMap(reverseDictionary(arrayOutputKeys_), key::kArrayOutputs);
  } else if (coder.codingType() == HXCodingTypeDevice) {
    OrderedMap<Ref<Dictionary>> paths;
    for (const auto& entry : arrayOutputKeys_) {
      const auto* resolved = entry.key->resolvedPort();
      auto path = make<Dictionary>();
      path->setObject(arrayOf(hx_keyPathForNode(resolved ? resolved->node() : nullptr)), "KeyPath");
      if (resolved) path->setObject(resolved->uniqueKey().object(), "PortKey");
      paths.set(entry.value, path);
    }
    coder.encodeMap(paths, kDeviceArrayOutputs);
  }
}

void HXReplicatorNode::initWithCoder(Decoder& coder) {
  OrderedMap<Ref<HXPort>> ports;
  coder.decodeEachEntry<HXPort>(
      key::kArrayOutputs,
      [&](const String& key, const Ref<HXPort>& port) { ports.set(key, port); });
  arrayOutputKeys_ = reverseMapTable(ports);
  HXNode::initWithCoder(coder);
}

void HXReplicatorNode::awakeAfterDecoding(Decoder& coder) {
  // Of a port that is published twice either publication will do.
  std::unordered_set<const HXPort*> published;
  for (const auto orientation : kBothSides) {
    for (const auto& port : membersOf<HXSymbolicPort>(symbolicPortsInForce(orientation))) {
      published.insert(port.port());
    }
  }
  IdentityMap<HXPort, String> kept;
  for (const auto& entry : arrayOutputKeys_) {
    if (published.contains(entry.key.get())) {
      kept.set(entry.key, entry.value);
    } else {
      Log::warning("HXReplicatorNode",
                   fmt::format("Dropping the array output {} of a port that is not published",
                               entry.value.view()));
    }
  }
  arrayOutputKeys_ = kept;
  HXNode::awakeAfterDecoding(coder);
}

void HXReplicatorNode::abandonDecoding() {
  HXNode::abandonDecoding();
  arrayOutputKeys_.clear();
}

}  // namespace tarnkit
