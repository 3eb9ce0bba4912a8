#include "tarnkit/editing/HXClipboard.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/Arguments.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Operations.h"
#include "tools/tarnkit/Session.h"
#include "tools/tarnkit/ValueShapes.h"

namespace tarnkit::tool {

namespace {

std::vector<Ref<HXNode>> nodesOf(Session& session, const Arguments& arguments) {
  std::vector<Ref<HXNode>> nodes;
  for (const auto& name : arguments.texts("nodes"))
    nodes.push_back(session.node(name.toStdString()));
  return nodes;
}

HXPoint offsetOf(const Arguments& arguments) {
  return arguments.has("offset") ? arguments.point("offset") : HXPoint{};
}

// The new nodes, which are found by their keys from now on.
Result keysOf(Session& session, const std::vector<Ref<HXNode>>& nodes) {
  std::vector<String> keys;
  for (const auto& node : nodes) {
    session.nameNode("", node);
    keys.push_back(node->uniqueKey());
  }
  return [keys = std::move(keys)](JSONWriter& json) {
    json.beginObject().key("nodes");
    writeStrings(json, keys);
    json.endObject();
  };
}

Result copy(Session& session, const Arguments& arguments) {
  const auto name = arguments.text("as");
  session.nameClipboard(name, required(HXClipboard::copy(nodesOf(session, arguments))));
  return {};
}

Result paste(Session& session, const Arguments& arguments) {
  const auto bytes = session.clipboard(arguments.text("clipboard"));
  const auto group = session.subnodeGroup(arguments.text("to"));
  return keysOf(session, required(HXClipboard::paste(bytes->bytes(), *group, offsetOf(arguments))));
}

Result duplicate(Session& session, const Arguments& arguments) {
  const bool keepInputs = arguments.has("keepInputs") && arguments.boolean("keepInputs");
  return keysOf(session, required(HXClipboard::duplicate(nodesOf(session, arguments),
                                                         offsetOf(arguments), keepInputs)));
}

constexpr Operation kOperations[] = {
    {"copy", "nodes as", copy},
    {"paste", "clipboard to offset?", paste},
    {"duplicate", "nodes offset? keepInputs?", duplicate},
};

}  // namespace

std::span<const Operation> clipboardOperations() { return kOperations; }

}  // namespace tarnkit::tool
