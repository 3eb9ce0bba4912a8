#include <fmt/format.h>

#include "tarnkit/editing/HXReplacement.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/Arguments.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Operations.h"
#include "tools/tarnkit/Session.h"
#include "tools/tarnkit/ValueShapes.h"

namespace tarnkit::tool {

namespace {

// "key" and "formerKey" are those of ports and parameters (of a node: its own), "name" and "value"
// what the item has of the two, "to" what a connection was joined to.
void writeItem(JSONWriter& json, const HXNodeItem& item) {
  using Kind = HXNodeItem::Kind;
  json.beginObject().key("kind").value(nameOf(item.kind)).key("key");
  writeString(json, item.key);
  if (!item.formerKey.isNil()) {
    json.key("formerKey");
    writeString(json, item.formerKey);
  }
  if (item.kind == Kind::connection) {
    json.key("to");
    if (item.ownOther.isNil()) {
      writePortAddress(json, item.other.get());
    } else {
      writeString(json, item.ownOther);
    }
  } else {
    json.key(item.kind == Kind::value ? "value" : "name");
    writeString(json, item.text);
  }
  if (item.level != 0) json.key("level").value(item.level);
  json.endObject();
}

Result shapeOf(HXNodeReport report) {
  return [report = std::move(report)](JSONWriter& json) {
    json.beginObject();
    const auto write = [&](const char* name, const std::vector<HXNodeItem>& items) {
      json.key(name).beginArray();
      for (const auto& item : items) writeItem(json, item);
      json.endArray();
    };
    write("kept", report.kept);
    write("dropped", report.dropped);
    write("added", report.added);
    write("renamed", report.renamed);
    json.endObject();
  };
}

Ref<HXRNode> definitionOf(const Arguments& arguments) {
  const auto name = arguments.textOrNil("patch");
  if (name.isNil()) return nullptr;
  const HXRNodeClass& patchClass = patchClassGiven(name.view());
  auto definition = patchClass.makeDefinition();
  if (!definition) {
    throw CommandFailure(fmt::format("the patch class \"{}\" makes no patches", name.view()));
  }
  definition->setExternal(HXRNode::hx_isExternalClass(patchClass));
  return definition;
}

HXReplacementOptions optionsOf(const Arguments& arguments) {
  HXReplacementOptions options;
  options.newKeys = arguments.textsByKey("map");
  options.matchesNamesAndKinds = arguments.has("byName") && arguments.boolean("byName");
  return options;
}

Result replacePatch(Session& session, const Arguments& arguments) {
  const auto node = session.node(arguments.text("node"));
  const auto definition = definitionOf(arguments);
  auto report = HXReplacement::replacePatch(*node, definition, optionsOf(arguments));
  return shapeOf(*std::move(report));
}

Result wouldLose(Session& session, const Arguments& arguments) {
  const auto node = session.node(arguments.text("node"));
  const auto definition = definitionOf(arguments);
  return shapeOf(HXReplacement::wouldLose(*node, definition.get(), optionsOf(arguments)));
}

constexpr Operation kOperations[] = {
    {"replacePatch", "node patch map? byName?", replacePatch},
    {"wouldLose", "node patch map? byName?", wouldLose},
};

}  // namespace

std::span<const Operation> replacementOperations() { return kOperations; }

}  // namespace tarnkit::tool
