#include <fmt/format.h>

#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/objects/Overloaded.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/Arguments.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Operations.h"
#include "tools/tarnkit/Session.h"

namespace tarnkit::tool {

namespace {

Ref<HXNode> nodeOf(Session& session, const Arguments& arguments) {
  return session.node(arguments.text("node"));
}

// Null for nil.
const HXRNodeClass* patchClassOf(const Arguments& arguments) {
  const auto name = arguments.textOrNil("patch");
  return name.isNil() ? nullptr : &patchClassGiven(name.view());
}

CommandFailure noPatches(const HXRNodeClass& patchClass) {
  return CommandFailure(fmt::format("the patch class \"{}\" makes no patches", patchClass.name()));
}

void setFreshPatch(HXNode& node, const HXRNodeClass& patchClass) {
  const auto patch = patchClass.makeDefinition();
  if (!patch) throw noPatches(patchClass);
  patch->setExternal(HXRNode::hx_isExternalClass(patchClass));
  node.setPatch(patch);
}

Result newNode(Session& session, const Arguments& arguments) {
  const auto name = arguments.optionalText("as");
  const HXRNodeClass* patchClass = patchClassOf(arguments);
  const std::string className = arguments.optionalText("class");
  Ref<HXNode> node;
  if (patchClass && className.empty()) {
    node = HXNode::makeForPatch(*patchClass);
    if (!node) throw noPatches(*patchClass);
  } else {
    node = HXNode::makeOfClass(className.empty() ? "HXNode" : className);
    if (!node) throw CommandFailure(fmt::format("there is no node class \"{}\"", className));
    if (patchClass) setFreshPatch(*node, *patchClass);
  }
  session.nameNode(name, node);
  return [node](JSONWriter& json) {
    json.beginObject().key("uniqueKey").value(node->uniqueKey().view()).endObject();
  };
}

Result setPatch(Session& session, const Arguments& arguments) {
  const auto node = nodeOf(session, arguments);
  if (const HXRNodeClass* patchClass = patchClassOf(arguments)) {
    setFreshPatch(*node, *patchClass);
  } else {
    node->setPatch(nullptr);
  }
  return {};
}

Result resyncPatch(Session& session, const Arguments& arguments) {
  const auto node = nodeOf(session, arguments);
  // There is nothing to be set again of a patch that nobody knows.
  if (node->unknownPatchClass().isNil()) node->setPatch(node->patch());
  return {};
}

Result setName(Session& session, const Arguments& arguments) {
  const auto name = arguments.textOrNil("value");
  nodeOf(session, arguments)->setName(name);
  return {};
}

Result setPosition(Session& session, const Arguments& arguments) {
  const auto position = arguments.point("value");
  nodeOf(session, arguments)->setPosition(position);
  return {};
}

Result setSelected(Session& session, const Arguments& arguments) {
  const auto selected = arguments.boolean("value");
  nodeOf(session, arguments)->setSelected(selected);
  return {};
}

Result setInspectorPanel(Session& session, const Arguments& arguments) {
  const auto panel = arguments.unsignedInteger("value");
  nodeOf(session, arguments)->setInspectorPanel(panel);
  return {};
}

Result setForceAllowsSubnodes(Session& session, const Arguments& arguments) {
  const auto force = arguments.boolean("value");
  nodeOf(session, arguments)->setForceAllowsSubnodes(force);
  return {};
}

void setImage(const Session& session, HXImageParameter& parameter, const String& image) {
  parameter.setImageEntry(image.isNil() ? nullptr : session.image(image.toStdString()));
}

Result setParameter(Session& session, const Arguments& arguments) {
  const auto node = nodeOf(session, arguments);
  const auto key = arguments.text("parameter");
  const Ref<HXParameter> parameter(node->parameterForKey(String(key)));
  if (!parameter) throw CommandFailure(fmt::format("the node has no parameter \"{}\"", key));
  std::visit(
      Overloaded{
          [&](HXIndexParameter* index) { index->setValue(arguments.integer("value")); },
          [&](HXNumberParameter* number) { number->setValue(arguments.number("value")); },
          [&](HXBooleanParameter* boolean) { boolean->setValue(arguments.boolean("value")); },
          [&](HXStringParameter* string) { string->setValue(arguments.textOrNil("value")); },
          [&](HXColorParameter* color) { color->setValue(arguments.color("value")); },
          [&](HXImageParameter* image) { setImage(session, *image, arguments.textOrNil("value")); },
      },
      parameter->kind());
  return {};
}

Result prune(Session& session, const Arguments& arguments) {
  nodeOf(session, arguments)->pruneInvalidConnections();
  return {};
}

constexpr Operation kOperations[] = {
    {"newNode", "as? patch? class?", newNode},
    {"setPatch", "node patch", setPatch},
    {"resyncPatch", "node", resyncPatch},
    {"setName", "node value", setName},
    {"setPosition", "node value", setPosition},
    {"setSelected", "node value", setSelected},
    {"setInspectorPanel", "node value", setInspectorPanel},
    {"setForceAllowsSubnodes", "node value", setForceAllowsSubnodes},
    {"setParameter", "node parameter value", setParameter},
    {"prune", "node", prune},
};

}  // namespace

std::span<const Operation> nodeOperations() { return kOperations; }

}  // namespace tarnkit::tool
