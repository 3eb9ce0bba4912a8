#include <fmt/format.h>

#include "tarnkit/editing/HXGrouping.h"
#include "tarnkit/model/HXDocument.h"
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
  for (const auto& name : arguments.texts("nodes")) {
    nodes.push_back(session.node(name.toStdString()));
  }
  return nodes;
}

[[noreturn]] void refuse(const Status& status) { throw CommandFailure(status.sentence()); }

void writeLosses(JSONWriter& json, const HXLosses& losses) {
  json.key("lost").beginArray();
  for (const auto& loss : losses.connections) {
    json.beginObject().key("connection");
    writeString(json, loss.connection->uniqueKey());
    json.key("reason").value(loss.reason).endObject();
  }
  for (const auto& loss : losses.publications) {
    json.beginObject().key("publication");
    const auto* node = loss.node.get();
    json.value(fmt::format("{}/{}", node ? node->uniqueKey().view() : "", loss.key.view()));
    json.key("reason").value(loss.reason).endObject();
  }
  json.endArray();
}

Result group(Session& session, const Arguments& arguments) {
  const auto name = arguments.optionalText("as");
  const auto made = HXGrouping::group(nodesOf(session, arguments), arguments.textOrNil("name"));
  if (!made) refuse(made.status());
  const Ref<HXNode> node = *made;
  session.nameNode(name, node);
  return [node](JSONWriter& json) {
    json.beginObject().key("uniqueKey");
    writeString(json, node->uniqueKey());
    json.endObject();
  };
}

// What is lost is told only where something is.
Result ungroup(Session& session, const Arguments& arguments) {
  auto result = HXGrouping::ungroup(*session.node(arguments.text("node")));
  if (!result) refuse(result.status());
  std::vector<String> keys;
  for (const auto& node : result->nodes) keys.push_back(node->uniqueKey());
  return [keys = std::move(keys), lost = std::move(result->lost)](JSONWriter& json) {
    json.beginObject().key("nodes");
    writeStrings(json, keys);
    if (!lost.isEmpty()) writeLosses(json, lost);
    json.endObject();
  };
}

Result moveNodes(Session& session, const Arguments& arguments) {
  const auto nodes = nodesOf(session, arguments);
  const auto group = session.subnodeGroup(arguments.text("to"));
  auto lost = HXGrouping::move(nodes, *group);
  if (!lost) refuse(lost.status());
  return [losses = *std::move(lost)](JSONWriter& json) {
    json.beginObject();
    writeLosses(json, losses);
    json.endObject();
  };
}

constexpr Operation kOperations[] = {
    {"group", "nodes name? as?", group},
    {"ungroup", "node", ungroup},
    {"moveNodes", "nodes to", moveNodes},
};

}  // namespace

std::span<const Operation> groupingOperations() { return kOperations; }

}  // namespace tarnkit::tool
