#include "tarnkit/model/HXDecodedLosses.h"

#include <fmt/format.h>

#include <utility>

#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit::detail {

namespace {

using Kind = HXNodeItem::Kind;

thread_local DecodedLosses* innermost = nullptr;

bool isInUse(const HXPatchPort& port) {
  return port.staticValue() || port.symbolicPort() || !port.connections().isEmpty();
}

void logLosses(const HXNodeLosses& losses) {
  const auto patch = losses.node->patch();
  for (const auto& item : losses.dropped) {
    if (item.kind == Kind::port || item.kind == Kind::parameter) continue;
    Log::warning("HXNode", fmt::format("Dropping from {}, {}: {}", losses.node->uniqueKey().view(),
                                       patch ? patch->isa().name() : "which has no patch",
                                       item.description()));
  }
}

}  // namespace

DecodedLosses::DecodedLosses() noexcept : outer_(std::exchange(innermost, this)) {}
DecodedLosses::~DecodedLosses() { innermost = outer_; }

std::vector<HXNodeLosses> DecodedLosses::tell() {
  for (const auto& losses : losses_) logLosses(losses);
  return std::exchange(losses_, {});
}

DecodedLosses::Watch::Watch(HXNode& node, const HXRNode* patch) : node_(node) {
  if (mayLose(patch)) gather();
}

bool DecodedLosses::Watch::mayLose(const HXRNode* patch) const {
  for (const auto& entry : node_.portsInForce()) {
    if (!isInUse(*entry.value)) continue;
    const auto* description = patch ? patch->portLayout().ports().find(entry.key) : nullptr;
    if (!description || (*description)->orientation() != entry.value->orientation() ||
        (*description)->connectionRelationship() != entry.value->connectionRelationship()) {
      return true;
    }
  }
  if (node_.subnodeGroup() && !node_.subnodeGroup()->subnodesInForce().empty() &&
      !node_.hx_forceAllowsSubnodes()) {
    if (!(patch ? patch->patchClass() : HXRNode::kClass).allowsSubnodes()) return true;
  }
  if (!patch) return false;
  for (const auto& description : patch->parametersInForce()) {
    const auto* parameter = node_.parameterForKey(description->uniqueKey());
    const auto* wanted = description->parameterClass();
    if (parameter && wanted && !parameter->isKindOf(*wanted)) return true;
  }
  return false;
}

// The keys are those under which the node was read: before it follows its patch, its ports do not
// know their own.
void DecodedLosses::Watch::gather() {
  const auto add = [&](Kind kind, const String& key, const String& text, Object* object,
                       Object* holder) -> HXNodeItem& {
    HXNodeItem& item = items_.emplace_back();
    item.kind = kind;
    item.key = key;
    item.text = text;
    item.object = Ref<Object>(object);
    holders_.emplace_back(holder);
    return item;
  };
  for (const auto& entry : node_.portsInForce()) {
    HXPatchPort& port = *entry.value;
    add(Kind::port, entry.key, nullptr, &port, &port);
    if (const auto& value = port.staticValue()) {
      add(Kind::value, entry.key, value->stringValue(), value.get(), &port);
    }
    if (auto* published = port.symbolicPort()) {
      add(Kind::publication, entry.key, published->name(), published, &port).level = 1;
    }
    port.connections().forEach([&](HXConnection& connection) {
      const bool isInput = connection.inputPort() == &port;
      add(Kind::connection, entry.key, nullptr, &connection, &port).other = Ref<const HXPort>(
          isInput ? connection.displayOutputPort() : connection.displayInputPort());
    });
  }
  const auto parameters = HXNodeState::itemsOfParameters(node_);
  for (const auto& item : parameters) {
    items_.push_back(item);
    holders_.emplace_back(node_.parameterForKey(item.key));
  }
  if (const auto* group = node_.subnodeGroup().get()) {
    for (const auto& entry : group->subnodesInForce()) {
      add(Kind::node, entry.key, entry.value->name(), entry.value.get(), nullptr);
    }
  }
}

bool DecodedLosses::Watch::isLost(const HXNodeItem& item) const {
  const auto& holder = holders_[static_cast<std::size_t>(&item - items_.data())];
  if (item.kind == Kind::node) return !node_.subnodeGroup();
  if (as<HXParameter>(holder)) return node_.parameterForKey(item.key) != holder.get();
  const auto* port = node_.portsInForce().find(item.key);
  return !port || port->get() != holder.get();
}

void DecodedLosses::Watch::end() {
  HXNodeLosses losses{Ref<HXNode>(&node_), {}};
  for (const auto& item : items_) {
    if (isLost(item)) losses.dropped.push_back(item);
  }
  if (losses.dropped.empty()) return;
  if (innermost) {
    innermost->losses_.push_back(std::move(losses));
  } else {
    logLosses(losses);
  }
}

}  // namespace tarnkit::detail
