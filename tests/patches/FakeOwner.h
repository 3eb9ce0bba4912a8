#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tarnkit/patches/HXRNode.h"

namespace tarnkit {

/// An editor node that writes down what its definition tells it.
class FakeOwner final : public HXRNodeOwner {
  TARNKIT_CLASS
 public:
  void addPatchPort(HXRPort& port) override {
    note("+", port.uniqueKey());
    if (observer) observer();
  }
  void removePatchPort(HXRPort& port) override {
    note("-", port.uniqueKey());
    if (observer) observer();
  }
  void addPatchParameter(HXRParameter& parameter) override { note("+", parameter.uniqueKey()); }
  void removePatchParameter(HXRParameter& parameter) override { note("-", parameter.uniqueKey()); }
  void patchPortNameDidChange(HXRPort& port) override { note("=", port.name()); }
  void patchLayoutWasCopied() override { note("copied", ""); }
  void patchRebuildWillBegin(HXRNode&) override { ++rebuilds; }
  void patchRebuildDidEnd(HXRNode&) override { --rebuilds; }

  /// How many rebuilds have begun and not ended; and what was seen of it at each step.
  int rebuilds = 0;
  std::vector<int> rebuildsAtSteps;

  /// Called after each port that was added or removed, as an observer of the editor node is.
  std::function<void()> observer;

  /// What was told since the last call: "+KEY", "-KEY", "=NAME", "copied".
  std::vector<std::string> take() { return std::exchange(events_, {}); }

 private:
  void note(const char* what, const String& text) {
    events_.push_back(what + text.toStdString());
    rebuildsAtSteps.push_back(rebuilds);
  }
  std::vector<std::string> events_;
};

inline const Class FakeOwner::kClass{"FakeOwner", &Object::kClass};

using Texts = std::vector<std::string>;

/// The keys of the ports of a definition's group, in order; the definition is not made to differ.
inline Texts keysOfGroup(const HXRNode& definition, std::int32_t orientation,
                         const char* groupKey) {
  Texts keys;
  const auto* const group =
      definition.portLayout().collection(orientation)->portGroupForKey(groupKey);
  if (!group) return keys;
  for (const auto& key : *group->portKeys()) {
    keys.push_back(String::from(key.get()).toStdString());
  }
  return keys;
}

/// The keys of the groups of one side, in order.
inline Texts groupKeys(const HXRNode& definition, std::int32_t orientation) {
  Texts keys;
  for (const auto& entry : definition.portLayout().collection(orientation)->portGroupsInForce()) {
    keys.push_back(entry.key.toStdString());
  }
  return keys;
}

/// The names of a definition's ports by their keys' order in the group.
inline Texts namesOfGroup(const HXRNode& definition, std::int32_t orientation,
                          const char* groupKey) {
  Texts names;
  for (const auto& key : keysOfGroup(definition, orientation, groupKey)) {
    names.push_back(definition.portLayout().ports().get(String(key))->name().toStdString());
  }
  return names;
}

}  // namespace tarnkit
