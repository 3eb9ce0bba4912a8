#include "tools/tarnkit/Shapes.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "tarnkit/foundation/MapAdditions.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/collections/MembersOf.h"
#include "tarnkit/platform/objects/Overloaded.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/ValueShapes.h"

namespace tarnkit::tool {

namespace {

void writePatchPortFields(JSONWriter& json, const HXPatchPort& port) {
  json.key("defaultValue");
  writePrimitive(json, port.defaultValue().get());
  json.key("staticValue");
  writePrimitive(json, port.staticValue().get());
  json.key("effectiveValue");
  writePrimitive(json, port.effectiveValue().get());
}

void writeSymbolicPortFields(JSONWriter& json, const HXSymbolicPort& port) {
  json.key("port");
  writePortAddress(json, port.port());
  json.key("resolvedPort");
  writePortAddress(json, port.resolvedPort());
}

template <class Parameter>
void writeBounds(JSONWriter& json, const Parameter& parameter) {
  json.key("minimum").value(parameter.minimumValue());
  json.key("maximum").value(parameter.maximumValue());
}

void writeParameterValue(JSONWriter& json, const HXParameter& parameter) {
  json.key("value");
  const auto writeBounded = [&json](const auto* bounded) {
    json.value(bounded->value());
    writeBounds(json, *bounded);
  };
  std::visit(Overloaded{
                 [&](const HXIndexParameter* index) { writeBounded(index); },
                 [&](const HXNumberParameter* number) { writeBounded(number); },
                 [&](const HXBooleanParameter* boolean) { json.value(boolean->value()); },
                 [&](const HXStringParameter* string) {
                   writeString(json, string->value());
                   json.key("displayStyle").value(string->displayStyle());
                 },
                 [&](const HXColorParameter* color) { writeColor(json, color->value()); },
                 [&](const HXImageParameter* image) {
                   writeString(json, image->imageEntry() ? image->imageEntry()->key() : String());
                 },
             },
             parameter.kind());
}

void writePort(JSONWriter& json, const HXPort& port) {
  const auto* patchPort = as<HXPatchPort>(&port);
  const auto* definition = patchPort ? patchPort->definition() : nullptr;
  json.beginObject().key("key");
  writeString(json, port.uniqueKey());
  json.key("class").value(port.isa().name());
  json.key("name");
  writeString(json, port.name());
  json.key("displayName");
  writeString(json, port.displayName());
  json.key("orientation").value(port.orientation());
  json.key("connectionRelationship").value(port.connectionRelationship());
  json.key("processClassName");
  writeString(json, definition ? definition->processClassName() : String());
  json.key("color");
  writeColor(json, port.defaultColor());
  json.key("connections").beginArray();
  port.connections().forEach([&](HXConnection& connection) { writeConnection(json, &connection); });
  json.endArray();
  if (patchPort) writePatchPortFields(json, *patchPort);
  if (const auto* symbolic = as<HXSymbolicPort>(&port)) writeSymbolicPortFields(json, *symbolic);
  json.key("symbolicPort");
  writeString(json, port.symbolicPort() ? port.symbolicPort()->uniqueKey() : String());
  json.endObject();
}

template <class Ports>
void writePorts(JSONWriter& json, const char* key, const Ports& ports) {
  json.key(key).beginArray();
  for (const auto& port : ports) writePort(json, static_cast<const HXPort&>(*port));
  json.endArray();
}

void writePortGroup(JSONWriter& json, const HXPortGroup& group) {
  json.beginObject().key("key");
  writeString(json, group.groupKey());
  json.key("class").value(group.isa().name());
  json.key("orientation").value(group.orientation());
  json.key("hidden").value(group.hidden());
  json.key("collapsedCanvasGroup").value(group.collapsedCanvasGroup());
  json.key("collapsedSidebarGroup").value(group.collapsedSidebarGroup());
  json.key("portKeys").beginArray();
  const Ref<const OrderedSet> keys = group.portKeys();
  for (const auto& key : *keys) json.value(String::from(key.get()).view());
  json.endArray().endObject();
}

void writePortGroups(JSONWriter& json, const char* key,
                     const std::vector<Ref<HXPortGroup>>& groups) {
  json.key(key).beginArray();
  for (const auto& group : groups) writePortGroup(json, *group);
  json.endArray();
}

// `key` is the key under which the node holds the parameter.
void writeParameter(JSONWriter& json, const String& key, const HXParameter& parameter) {
  json.beginObject().key("key");
  writeString(json, key);
  json.key("class").value(parameter.isa().name());
  json.key("name");
  writeString(json, parameter.name());
  json.key("hidden").value(parameter.hidden());
  writeParameterValue(json, parameter);
  json.endObject();
}

void writePatchClass(JSONWriter& json, const HXNode& node) {
  json.key("patch");
  writeString(json, node.patch() ? node.patch()->isa().nameString() : String());
  if (!node.unknownPatchClass().isNil()) {
    json.key("unknownPatchClass").value(node.unknownPatchClass().view());
  }
}

void writeAllPortKeys(JSONWriter& json, const HXNode& node) {
  std::vector<String> keys;
  keys.reserve(node.portsInForce().size());
  for (const auto& entry : node.portsInForce()) keys.push_back(entry.key);
  std::sort(keys.begin(), keys.end());
  json.key("allPortKeys");
  writeStrings(json, keys);
}

// Everything up to the subnode group.
void beginNode(JSONWriter& json, const HXNode& node) {
  json.beginObject();
  json.key("class").value(node.isa().name());
  json.key("uniqueKey");
  writeString(json, node.uniqueKey());
  json.key("name");
  writeString(json, node.name());
  json.key("keyPath");
  writeStrings(json, node.keyPath());
  writePatchClass(json, node);
  json.key("position");
  writePoint(json, node.position());
  json.key("inspectorPanel").value(node.inspectorPanel());
  json.key("selected").value(node.selected());
  json.key("forceAllowsSubnodes").value(node.forceAllowsSubnodes());
  json.key("shouldBeTreatedAsViewNode").value(node.shouldBeTreatedAsViewNode());
  json.key("defaultColor");
  writeColor(json, node.defaultColor());
  writePortGroups(json, "inputPortGroups", node.inputPortGroups());
  writePortGroups(json, "outputPortGroups", node.outputPortGroups());
  writePorts(json, "inputPorts", node.inputPorts());
  writePorts(json, "outputPorts", node.outputPorts());
  writeAllPortKeys(json, node);
  json.key("parameters").beginArray();
  for (const auto& entry : node.parameters()) writeParameter(json, entry.key, *entry.value);
  json.endArray();
  json.key("subnodeGroup");
}

void endNode(JSONWriter& json, const HXNode& node) {
  if (const auto* document = as<HXDocument>(&node)) {
    json.key("documentKey");
    writeString(json, document->documentKey());
    json.key("images").beginArray();
    const auto& store = *document->imageStore();
    for (const auto& entry : allValuesSortedByKey(store.imageEntriesInForce())) {
      json.beginObject().key("key");
      writeString(json, entry->key());
      json.key("width").value(entry->image() ? entry->image()->width() : 0U);
      json.key("height").value(entry->image() ? entry->image()->height() : 0U);
      json.key("count").value(store.countForKey(entry->key())).endObject();
    }
    json.endArray();
  }
  json.endObject();
}

// Everything up to the subnodes.
void beginGroup(JSONWriter& json, const HXGroup& group) {
  json.beginObject();
  json.key("class").value(group.isa().name());
  json.key("uniqueKey");
  writeString(json, group.uniqueKey());
  json.key("opaque").value(group.isOpaque());
  json.key("canvasCenter");
  writePoint(json, group.canvasCenter());
  writePorts(json, "symbolicInputPorts", group.symbolicInputPortsInForce());
  writePorts(json, "symbolicOutputPorts", group.symbolicOutputPortsInForce());
  json.key("subnodes").beginArray();
}

void endGroup(JSONWriter& json, const HXGroup& group) {
  json.endArray();
  if (const auto* subviewGroup = as<HXSubviewGroup>(&group)) {
    json.key("subviewNodes").beginArray();
    for (const auto& node : membersOf<HXNode>(subviewGroup->subviewNodesInForce())) {
      writeString(json, node.uniqueKey());
    }
    json.endArray();
  }
  json.endObject();
}

}  // namespace

void checkShapeDepth(const HXNode& root) {
  if (!root.subnodeGroup()) return;
  for (HXNodeWalk walk(*root.subnodeGroup()); walk.next();) {
    if (walk.level() < kMaximumShapeDepth) continue;
    throw CommandFailure(fmt::format("groups are nested more than {} deep below {}",
                                     kMaximumShapeDepth, root.uniqueKey().view()));
  }
}

// Walks from a stack of its own: documents may be nested deeper than the program's stack.
void writeNode(JSONWriter& json, const HXNode& root) {
  struct Level {
    const HXNode* node;
    std::vector<Ref<HXNode>> subnodes;
    std::size_t next = 0;
  };
  std::vector<Level> levels;
  const auto enter = [&](const HXNode& node) {
    beginNode(json, node);
    if (const auto* group = node.subnodeGroup().get()) {
      beginGroup(json, *group);
      levels.push_back({&node, allValuesSortedByKey(group->subnodesInForce())});
    } else {
      json.null();
      endNode(json, node);
    }
  };
  enter(root);
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next < level.subnodes.size()) {
      enter(*level.subnodes[level.next++]);
      continue;
    }
    endGroup(json, *level.node->subnodeGroup());
    endNode(json, *level.node);
    levels.pop_back();
  }
}

}  // namespace tarnkit::tool
