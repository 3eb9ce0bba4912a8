#include "tarnkit/editing/HXReplacement.h"

#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXRefusal.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/objects/Overloaded.h"

namespace tarnkit {

namespace {

using Kind = HXNodeItem::Kind;

// Only of parameters of one class; the description of the second one stays.
void copyValue(HXParameter& from, HXParameter& to) {
  if (&from.isa() != &to.isa() || !from.valueInitialized()) return;
  std::visit(Overloaded{
                 [&](HXImageParameter* image) {
                   image->setValue(static_cast<HXImageParameter&>(from).value());
                 },
                 [&](auto* parameter) {
                   using Parameter = std::remove_pointer_t<decltype(parameter)>;
                   parameter->setValue(static_cast<Parameter&>(from).value());
                 },
             },
             to.kind());
}

bool isOfOneSide(const HXPort& a, const HXPort& b) {
  return a.orientation() == b.orientation() &&
         a.connectionRelationship() == b.connectionRelationship();
}

/// What is to become of the ports of a node: worked out on a node in no document that has the new
/// definition, and carried out afterwards.
class Plan {
 public:
  Plan(const HXNode& node, const HXRNode* definition, const HXReplacementOptions& options)
      : node_(node),
        options_(options),
        before_(node),
        keepsSubnodes_((definition ? definition->patchClass() : HXRNode::kClass).allowsSubnodes() ||
                       node.hx_forceAllowsSubnodes()) {
    rehearse(definition);
    match();
    carry();
  }

  HXNodeReport expected() const {
    return before_.reportSince(HXNodeState(expectedItems()), newKeys_);
  }
  void perform(HXNode& node, const Ref<HXRNode>& definition) const;
  HXNodeReport reportOf(const HXNode& node) const {
    return before_.reportSince(HXNodeState(node), newKeys_);
  }

 private:
  void rehearse(const HXRNode* definition);
  void rehearseParameters() const;
  void match();
  void pair(const String& key, const String& newKey);
  void matchNamesAndKinds();
  void carry();
  bool carries(const HXNodeItem& item);
  bool carriesConnection(const HXNodeItem& item);
  bool isKept(const HXNodeItem& item) const;
  std::vector<HXNodeItem> expectedItems() const;
  bool isOwnPort(const HXNodeItem& item) const { return node_.portsInForce().contains(item.key); }
  /// Whether the port is there afterwards as the same one, and nothing of it is carried away.
  bool stays(const String& key) const {
    return staying_.contains(key.view()) && !newKeys_.contains(key);
  }
  /// The key under which a port is found afterwards; nil when there is none that stands for it.
  String keyNow(const String& key) const { return stays(key) ? key : newKeys_.get(key); }
  void leave(HXNode& node) const;
  void arrive(HXNode& node) const;
  void publish(HXNode& node, const HXNodeItem& item) const;
  void connect(HXNode& node, const HXNodeItem& item) const;

  struct Place {
    bool hasValue = false;
    std::uint32_t levels = 0;  // at which it is published
    std::uint32_t connections = 0;
  };

  const HXNode& node_;
  const HXReplacementOptions& options_;
  HXNodeState before_;
  bool keepsSubnodes_;
  Ref<HXNode> rehearsal_ = make<HXNode>();
  std::unordered_set<std::string_view> staying_;        // keys of the old ports that stay
  OrderedMap<String> newKeys_;                          // of ports that are stood for by others
  std::unordered_set<std::string_view> taken_;          // those others
  std::unordered_map<std::string_view, Place> places_;  // what hangs on the ports afterwards
  std::unordered_set<const HXNodeItem*> carried_;       // of the state before
  // Of a connection from the node to itself: both its items.
  std::unordered_map<const Object*, std::vector<const HXNodeItem*>> twins_;
  std::unordered_map<const Object*, Ref<HXNode>> publishers_;
};

void Plan::rehearse(const HXRNode* definition) {
  const auto fresh = definition ? definition->patchClass().makeDefinition() : nullptr;
  if (fresh) {
    for (const auto& entry : definition->portLayout().ports()) {
      if (fresh->portLayout().ports().contains(entry.key)) continue;
      fresh->addPort(*entry.value->copy(), entry.value->portGroupKey());
    }
    // A replicator gives its array outputs to every definition that holds nodes.
    for (const auto& entry : node_.portsInForce()) {
      const auto* port = as<HXRReplicatorArrayOutputPort>(entry.value->definition());
      if (!port || !keepsSubnodes_ || fresh->portLayout().ports().contains(entry.key)) continue;
      if (!node_.isKindOf(HXReplicatorNode::kClass)) continue;
      fresh->addPort(*port->copy(), port->portGroupKey());
    }
  }
  rehearsal_->setPatch(fresh);
  rehearseParameters();
}

// A parameter may bring others.
void Plan::rehearseParameters() const {
  constexpr int kMaximumRounds = 64;
  for (int round = 0; round < kMaximumRounds; ++round) {
    const auto parameters = rehearsal_->parameters();
    for (const auto& entry : parameters) {
      auto* from = node_.parameterForKey(entry.key);
      if (from) copyValue(*from, *entry.value);
    }
    for (const auto& entry : options_.newKeys) {
      auto* from = node_.parameterForKey(entry.key);
      auto* to = rehearsal_->parameterForKey(entry.value);
      if (from && to) copyValue(*from, *to);
    }
    if (rehearsal_->parameters() == parameters) return;
  }
}

void Plan::pair(const String& key, const String& newKey) {
  if (newKey == key || !taken_.insert(newKey.view()).second) return;
  newKeys_.set(key, newKey);
}

void Plan::match() {
  const auto& fresh = rehearsal_->portsInForce();
  for (const auto& entry : node_.portsInForce()) {
    const auto* now = fresh.find(entry.key);
    if (now && isOfOneSide(**now, *entry.value)) staying_.insert(entry.key.view());
  }
  for (const auto& entry : options_.newKeys) {
    const auto* from = node_.portsInForce().find(entry.key);
    const auto* to = fresh.find(entry.value);
    if (from && to && (*from)->orientation() == (*to)->orientation()) pair(entry.key, entry.value);
  }
  if (options_.matchesNamesAndKinds) matchNamesAndKinds();
}

void Plan::matchNamesAndKinds() {
  struct Candidates {
    std::vector<String> keys;
    std::size_t next = 0;
  };
  std::unordered_map<std::string, Candidates> byName;
  const auto nameOfPort = [](const HXPatchPort& port) {
    return std::to_string(port.orientation()) + ' ' + std::string(HXRefusal::kindOf(&port)) + ' ' +
           std::string(port.name().view());
  };
  for (const auto& entry : rehearsal_->portsInForce()) {
    if (staying_.contains(entry.key.view()) || taken_.contains(entry.key.view())) continue;
    byName[nameOfPort(*entry.value)].keys.push_back(entry.key);
  }
  for (const auto& entry : node_.portsInForce()) {
    if (staying_.contains(entry.key.view()) || newKeys_.contains(entry.key)) continue;
    const auto found = byName.find(nameOfPort(*entry.value));
    if (found == byName.end() || found->second.next == found->second.keys.size()) continue;
    pair(entry.key, found->second.keys[found->second.next++]);
  }
}

// What stays is entered first, so that it is not replaced by what comes.
void Plan::carry() {
  for (const HXNodeItem& item : before_.items()) {
    if (!isOwnPort(item)) continue;
    if (item.kind == Kind::publication) {
      publishers_.emplace(item.object.get(),
                          Ref<HXNode>(static_cast<HXSymbolicPort&>(*item.object).node()));
    }
    if (item.kind == Kind::connection && !item.ownOther.isNil()) {
      twins_[item.object.get()].push_back(&item);
    }
    if (!isKept(item)) continue;
    Place& place = places_[item.key.view()];
    if (item.kind == Kind::value) place.hasValue = true;
    if (item.kind == Kind::publication) place.levels = item.level;
    if (item.kind == Kind::connection) ++place.connections;
  }
  for (const HXNodeItem& item : before_.items()) {
    if (isOwnPort(item) && !isKept(item) && !carried_.contains(&item) && carries(item)) {
      carried_.insert(&item);
    }
  }
}

bool Plan::isKept(const HXNodeItem& item) const {
  return stays(item.key) && (item.ownOther.isNil() || stays(item.ownOther));
}

bool Plan::carries(const HXNodeItem& item) {
  const String key = keyNow(item.key);
  if (key.isNil()) return false;
  const HXPatchPort& port = **rehearsal_->portsInForce().find(key);
  Place& place = places_[port.definition()->uniqueKey().view()];
  switch (item.kind) {
    case Kind::value:
      if (item.classification != "port" || !port.supportsStaticValue()) return false;
      return !std::exchange(place.hasValue, true);
    case Kind::publication:
      if (place.levels + 1 != item.level) return false;
      ++place.levels;
      return true;
    case Kind::connection:
      return carriesConnection(item);
    default:
      return false;
  }
}

bool Plan::carriesConnection(const HXNodeItem& item) {
  struct End {
    const HXNodeItem* item;
    Ref<HXPatchPort> port;
    Place* place;
  };
  const auto& fresh = rehearsal_->portsInForce();
  std::vector<const HXNodeItem*> items{&item};
  if (!item.ownOther.isNil()) items = twins_[item.object.get()];
  if (items.size() != (item.ownOther.isNil() ? 1U : 2U)) return false;
  std::vector<End> ends;
  for (const auto* end : items) {
    const auto port = fresh.get(keyNow(end->key));
    if (!port) return false;
    Place& place = places_[port->definition()->uniqueKey().view()];
    const bool takesMany = port->connectionRelationship() == HXConnectionRelationshipMany;
    if (!takesMany && place.connections != 0) return false;
    if (end->level > place.levels) return false;
    ends.push_back({end, port, &place});
  }
  const HXPort* other = ends.size() == 2 ? ends[1].port.get() : item.other.get();
  if (!other) return false;
  if (!ends[0].port->canConnectToPort(other) && !other->canConnectToPort(ends[0].port.get())) {
    return false;
  }
  for (const End& end : ends) {
    ++end.place->connections;
    carried_.insert(end.item);
  }
  return true;
}

std::vector<HXNodeItem> Plan::expectedItems() const {
  std::vector<HXNodeItem> items = HXNodeState(*rehearsal_).items();
  for (const HXNodeItem& item : before_.items()) {
    const bool isOfParameter = item.kind == Kind::parameter ||
                               (item.kind == Kind::value && item.classification == "parameter");
    HXNodeItem expected = item;
    if (isOfParameter) {
      if (rehearsal_->parameterForKey(item.key)) continue;
    } else if (item.kind == Kind::node || !isOwnPort(item)) {
      if (!keepsSubnodes_) continue;
      if (!item.ownOther.isNil() && keyNow(item.ownOther).isNil()) continue;
    } else {
      if (item.kind == Kind::port || (!isKept(item) && !carried_.contains(&item))) continue;
      expected.key = keyNow(item.key);
    }
    if (!item.ownOther.isNil()) expected.ownOther = keyNow(item.ownOther);
    items.push_back(std::move(expected));
  }
  return items;
}

void Plan::perform(HXNode& node, const Ref<HXRNode>& definition) const {
  leave(node);
  node.setPatch(definition);
  arrive(node);
}

// What a port that stays is rid of since it is carried elsewhere, and what the old port of a key
// holds that another port gets.
void Plan::leave(HXNode& node) const {
  for (const auto& entry : node.portsByUniqueKey()) {
    if (stays(entry.key) || !rehearsal_->portsInForce().contains(entry.key)) continue;
    if (const Ref<HXGroup> group{node.parentGroup()}) {
      group->removeSymbolicPortForPort(entry.value.get());
    }
    if (const Ref<HXDocument> document{node.document()}) {
      document->breakAllConnectionsToPort(*entry.value);
    }
    if (staying_.contains(entry.key.view())) entry.value->setStaticValue(nullptr);
  }
}

void Plan::arrive(HXNode& node) const {
  for (const auto& entry : options_.newKeys) {
    const Ref<HXParameter> from(node.parameterForKey(entry.key));
    const Ref<HXParameter> to(node.parameterForKey(entry.value));
    if (from && to && rehearsal_->parameterForKey(entry.value)) copyValue(*from, *to);
  }
  for (const HXNodeItem& item : before_.items()) {
    if (!carried_.contains(&item)) continue;
    if (item.kind == Kind::publication) publish(node, item);
    if (item.kind != Kind::value) continue;
    const Ref<HXPatchPort> port = node.portsInForce().get(keyNow(item.key));
    if (port) port->setStaticValue(as<PMRPrimitive>(item.object));
  }
  for (const HXNodeItem& item : before_.items()) {
    if (item.kind == Kind::connection && carried_.contains(&item)) connect(node, item);
  }
}

// The port under its new key, or the one that stands for it so many levels above; null when an
// observer has done away with it.
Ref<HXPort> portAt(const HXNode& node, const String& key, std::uint32_t level) {
  Ref<HXPort> port = node.portsInForce().get(key);
  for (; port && level != 0; --level) port = Ref<HXPort>(port->symbolicPort());
  return port;
}

void Plan::publish(HXNode& node, const HXNodeItem& item) const {
  const auto below = portAt(node, keyNow(item.key), item.level - 1);
  const auto publisher = publishers_.find(item.object.get());
  if (!below || below->symbolicPort() || publisher == publishers_.end()) return;
  const Ref<HXGroup> group = publisher->second ? publisher->second->subnodeGroup() : nullptr;
  if (!group || !below->node() || below->node()->parentGroup() != group.get()) return;
  if (const auto published = group->addSymbolicPortForPort(*below)) published->setName(item.text);
}

void Plan::connect(HXNode& node, const HXNodeItem& item) const {
  const Ref<HXDocument> document(node.document());
  const auto own = portAt(node, keyNow(item.key), item.level);
  Ref<HXPort> other(const_cast<HXPort*>(item.other.get()));
  if (!item.ownOther.isNil()) {
    const auto& ends = twins_.at(item.object.get());
    if (ends[0] != &item) return;
    other = portAt(node, keyNow(ends[1]->key), ends[1]->level);
  }
  if (document && own && other) document->connectPort(*own, *other);
}

}  // namespace

HXNodeReport HXReplacement::wouldLose(const HXNode& node, const HXRNode* definition,
                                      const HXReplacementOptions& options) {
  return Plan(node, definition, options).expected();
}

std::optional<HXNodeReport> HXReplacement::replacePatch(HXNode& node,
                                                        const Ref<HXRNode>& definition,
                                                        const HXReplacementOptions& options) {
  const Ref<HXNode> kept(&node);
  const Plan plan(node, definition.get(), options);
  if (options.mayLose) {
    const HXNodeReport expected = plan.expected();
    if (expected.losesAnything() && !options.mayLose(expected)) return std::nullopt;
  }
  std::optional<HXHistory::Step> step;
  if (const auto* document = node.document()) step.emplace(*document, "Replace Patch");
  plan.perform(node, definition);
  return plan.reportOf(node);
}

}  // namespace tarnkit
