#include "tarnkit/model/HXReplicatorNode.h"

#include <fmt/format.h>

#include <algorithm>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/foundation/MapAdditions.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/Array.h"
#include "tarnkit/platform/Dictionary.h"
#include "tarnkit/platform/Log.h"
#include "tarnkit/platform/UUID.h"

namespace tarnkit {

const Class HXReplicatorNode::kClass{"HXReplicatorNode", &HXNode::kClass,
                                     &HXReplicatorNode::makeForDecoding};

namespace {

// The name says the reverse of what stands under it (key to port), and is kept for the documents
// that have it.
constinit const Symbol kArrayOutputs{"HXReplicatorNode.resolvedPortToArrayOutputPortKey"};
constinit const Symbol kDeviceArrayOutputs{"PMReplicatorNode.arrayOutputPortKeyToKeyPath"};

constinit const Symbol kResolvedPortNodeKeyPath{"ResolvedPortNodeKeyPath"};
constinit const Symbol kResolvedPortKey{"ResolvedPortKey"};
constinit const Symbol kReplicatorOutputPortKey{"ReplicatorOutputPortKey"};

const String& outputGroupKey() {
  static const String key = String::interned("ReplicatorOutputs");
  return key;
}

// The port that the published inner port stands for, at the bottom of the chain.
const HXPort* resolvedPort(const HXPort& port) {
  const auto* symbolicPort = port.symbolicPort();
  return symbolicPort ? symbolicPort->resolvedPort() : nullptr;
}

Ref<Array> arrayOf(const std::vector<String>& strings) {
  auto array = make<Array>();
  for (const auto& string : strings) array->add(string.object());
  return array;
}

}  // namespace

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
  patch.addPort(*make<HXRReplicatorArrayOutputPort>(Ref<Object>(&port), key), outputGroupKey());
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
  const Ref<HXNode> self(this);
  if (hx_shouldMatchPortWithArrayOutputPort(port)) {
    const String key(fmt::format("ReplicatorOutput.{}", newUUIDString().view()));
    // Known before it is announced, so that an observer who ends the publication ends this too.
    arrayOutputKeys_.set(Ref<HXPort>(&port), key);
    if (patch()) addArrayOutput(*Ref<HXRNode>(patch()), port, key);
    hx_hideSymbolicOutputPortGroups();
    if (arrayOutputKeys_.get(&port) != key) return;
    NotificationCenter::defaultCenter().postLazily(
        HXReplicatorNodeAddOutputPortNotification, *this, [&] {
          const auto* resolved = resolvedPort(port);
          return UserInfo{{HXDocumentKeyInfo, documentKey().object()},
                          {HXNodeInfo, Ref<Object>(this)},
                          {kResolvedPortNodeKeyPath,
                           arrayOf(hx_keyPathForNode(resolved ? resolved->node() : nullptr))},
                          {kResolvedPortKey, resolved ? resolved->uniqueKey().object() : nullptr},
                          {kReplicatorOutputPortKey, key.object()}};
        });
  }
  HXNode::symbolicPortNameWasAdded(port);
}

void HXReplicatorNode::symbolicPortNameWasRemoved(HXPort& port, HXSymbolicPort& symbolicPort) {
  const Ref<HXNode> self(this);
  if (hx_shouldMatchPortWithArrayOutputPort(port)) {
    const Ref<HXPort> kept(&port);
    const auto output = hx_replicatorArrayOutputPortForPort(port);
    const String key = arrayOutputKeys_.take(&port);
    if (output) Ref<HXRNode>(patch())->removePort(*output);
    if (!key.isNil()) {
      NotificationCenter::defaultCenter().postLazily(
          HXReplicatorNodeRemoveOutputPortNotification, *this, [&] {
            return UserInfo{{HXDocumentKeyInfo, documentKey().object()},
                            {HXNodeInfo, Ref<Object>(this)},
                            {kReplicatorOutputPortKey, key.object()}};
          });
    }
  }
  HXNode::symbolicPortNameWasRemoved(port, symbolicPort);
}

void HXReplicatorNode::symbolicPortNameDidChange(HXSymbolicPort& symbolicPort) {
  const Ref<HXNode> self(this);
  const Ref<HXSymbolicPort> keptPort(&symbolicPort);
  if (const auto* port = symbolicPort.port()) {
    if (const auto output = hx_replicatorArrayOutputPortForPort(*port)) {
      output->setName(symbolicPort.name());
    }
  }
  HXNode::symbolicPortNameDidChange(symbolicPort);
}

void HXReplicatorNode::willSetPatch(const Ref<HXRNode>& patch) {
  if (!patch || arrayOutputKeys_.empty()) return;
  const auto keys = arrayOutputKeys_;  // adding a port to the patch in force is announced
  for (const auto& entry : keys) {
    if (arrayOutputKeys_.get(entry.key.get()) == entry.value &&
        !patch->portLayout().ports().contains(entry.value)) {
      addArrayOutput(*patch, *entry.key, entry.value);
    }
  }
}

void HXReplicatorNode::didSetPatch() { hx_hideSymbolicOutputPortGroups(); }

void HXReplicatorNode::encodeWithCoder(Encoder& coder) const {
  HXNode::encodeWithCoder(coder);
  if (isEditorCodingType(coder.codingType())) {
    coder.encodeMap(reverseDictionary(arrayOutputKeys_), kArrayOutputs);
  } else if (coder.codingType() == HXCodingTypeDevice) {
    OrderedMap<Ref<Dictionary>> paths;
    for (const auto& entry : arrayOutputKeys_) {
      const auto* resolved = resolvedPort(*entry.key);
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
      kArrayOutputs, [&](const String& key, const Ref<HXPort>& port) { ports.set(key, port); });
  arrayOutputKeys_ = reverseMapTable(ports);
  HXNode::initWithCoder(coder);
}

void HXReplicatorNode::awakeAfterDecoding(Decoder& coder) {
  IdentityMap<HXPort, String> published;
  for (const auto& entry : arrayOutputKeys_) {
    const auto* node = entry.key->node();
    if (node && entry.key->symbolicPort() && node->parentGroup() == subnodeGroup().get()) {
      published.set(entry.key, entry.value);
    } else {
      Log::warning("HXReplicatorNode",
                   fmt::format("Dropping the array output {} of a port that is not published",
                               entry.value.view()));
    }
  }
  arrayOutputKeys_ = published;
  HXNode::awakeAfterDecoding(coder);
}

void HXReplicatorNode::abandonDecoding() {
  HXNode::abandonDecoding();
  arrayOutputKeys_.clear();
}

}  // namespace tarnkit
