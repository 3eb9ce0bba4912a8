#include "tarnkit/patches/catalogue/NamedInputs.h"

#include <fmt/format.h>

#include <unordered_set>

namespace tarnkit {

NamedInputsNode::NamedInputsNode(const HXRNodeClass& patchClass, const NamedInputs& inputs)
    : HXRNode(patchClass), inputs_(inputs) {
  if (prototype()) keysByName_ = static_cast<const NamedInputsNode*>(prototype())->keysByName_;
}

String NamedInputsNode::keyForName(const String& name) const {
  return String(fmt::format(fmt::runtime(inputs_.keyPattern), name.view()));
}

// The editor node announces every step; an observer that changes the names meanwhile has them
// refreshed, and this refresh is then of the past.
void NamedInputsNode::refreshInputs(const std::vector<String>& names) {
  rebuild([&] {
    const auto refresh = ++refreshes_;
    removeInputsBut(names, refresh);
    const String group = String::interned(inputs_.group);
    for (const String& name : names) {
      if (refresh != refreshes_) return;
      if (keysByName_.contains(name)) continue;
      const String key = keyForName(name);
      keysByName_.set(name, key);
      addPort(*inputs_.makePort(name, key), group);
    }
  });
}

void NamedInputsNode::removeInputsBut(const std::vector<String>& names, std::uint32_t refresh) {
  const std::unordered_set<String> wanted(names.begin(), names.end());
  const auto built = keysByName_;
  for (const auto& [name, key] : built) {
    if (refresh != refreshes_) return;
    const auto* const port = portLayout().ports().find(key);
    if (port && wanted.contains((*port)->name())) continue;
    keysByName_.take(name);
    if (port) removePort(*portForKey(key));
  }
}

OrderedMap<Ref<HXRPort>> NamedInputsNode::inputsByName() {
  OrderedMap<Ref<HXRPort>> inputs;
  for (const auto& [name, key] : keysByName_) {
    if (auto* const port = portForKey(key)) inputs.set(name, Ref<HXRPort>(port));
  }
  return inputs;
}

std::unique_ptr<HXRBuiltState> NamedInputsNode::builtState() const {
  return builtStateOf(*this, &NamedInputsNode::keysByName_);
}

}  // namespace tarnkit
