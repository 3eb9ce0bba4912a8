#include "tarnkit/patches/HXRNodeSnapshot.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace tarnkit {

HXRNodeSnapshot::HXRNodeSnapshot(HXRNode& definition)
    : definition_(&definition), held_(stateInForce()), built_(definition.builtState()) {}

HXRNodeSnapshot::~HXRNodeSnapshot() = default;

HXRNodeSnapshot::State HXRNodeSnapshot::stateInForce() const {
  const auto& layout = *definition_->layout_;
  State state;
  state.layout = definition_->layout_;
  state.parameters = definition_->parameters();
  if (layout.isShared()) return state;
  for (const auto& entry : layout.ports_) state.inOrder.push_back(entry.value);
  int side = 0;
  for (const auto& collection : layout.collections_) {
    for (const auto& entry : collection->portGroups_) {
      Group group{entry.value, entry.value->ports(), entry.value->portsByKey_};
      for (const auto& port : group.ports) {
        state.ports.push_back({port, port->name(), port->portGroupKey()});
      }
      state.groups[side].push_back(std::move(group));
    }
    ++side;
  }
  return state;
}

void HXRNodeSnapshot::exchange() {
  State present = stateInForce();
  putInForce(held_, present);
  held_ = std::move(present);
  if (built_) built_->exchange(*definition_);
}

bool HXRNodeSnapshot::isNeutral() const {
  return held_ == stateInForce() && (!built_ || built_->isNeutral(*definition_));
}

// What is in force no more belongs to no definition, as if it had been removed.
void HXRNodeSnapshot::putInForce(const State& state, const State& earlier) {
  for (const auto& [port, name, groupKey] : earlier.ports) {
    port->node_ = nullptr;
    port->portGroupKey_ = nullptr;
  }
  for (const auto& parameter : earlier.parameters) parameter->node_ = nullptr;
  definition_->layout_ = state.layout;
  definition_->parameters_.clear();
  for (const auto& parameter : state.parameters) {
    definition_->parameters_.append(parameter);
    parameter->node_ = definition_.get();
  }
  if (state.layout->isShared()) return;
  for (const auto& [port, name, groupKey] : state.ports) {
    port->node_ = definition_.get();
    port->name_ = name;
    port->portGroupKey_ = groupKey;
  }
  state.layout->ports_.clear();
  for (const auto& port : state.inOrder) state.layout->ports_.set(port->uniqueKey(), port);
  int side = 0;
  for (const auto& collection : state.layout->collections_) {
    for (const auto& entry : collection->portGroups_) entry.value->portGroupCollection_ = nullptr;
    collection->portGroups_.clear();
    collection->portGroupKeys_ = nullptr;
    for (const auto& [group, ports, byKey] : state.groups[side++]) {
      group->portGroupCollection_ = collection.get();
      collection->portGroups_.set(group->groupKey(), group);
      group->ports_ = make<OrderedSet>();
      for (const auto& port : ports) group->ports_->add(port);
      group->portsByKey_ = byKey;
      group->portKeys_ = nullptr;
      group->portKeysBeforeEmptied_ = nullptr;
    }
  }
}

// By their keys: a definition that shares its ports with others has other objects than one that has
// its own.
std::vector<Ref<HXRPort>> HXRNodeSnapshot::renamedPorts() const {
  std::unordered_map<String, String> names;
  if (held_.layout->isShared()) {
    for (const auto& entry : held_.layout->ports_) names.emplace(entry.key, entry.value->name());
  } else {
    for (const auto& held : held_.ports) names.emplace(held.port->uniqueKey(), held.name);
  }
  std::vector<Ref<HXRPort>> renamed;
  for (const auto& entry : definition_->layout_->ports_) {
    const auto held = names.find(entry.key);
    if (held != names.end() && held->second != entry.value->name()) renamed.push_back(entry.value);
  }
  return renamed;
}

std::size_t HXRNodeSnapshot::byteCount() const noexcept {
  std::size_t bytes = sizeof(*this) + held_.ports.size() * 3 * sizeof(Port) +
                      held_.parameters.size() * sizeof(Ref<HXRParameter>);
  for (const auto& groups : held_.groups) bytes += groups.size() * sizeof(Group);
  return bytes;
}

}  // namespace tarnkit
