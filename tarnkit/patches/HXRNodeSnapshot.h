#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "tarnkit/patches/HXRBuiltState.h"
#include "tarnkit/patches/HXRNode.h"

namespace tarnkit {

/// What a definition consists of at one moment: its ports with their names, its port groups and
/// parameters, all in their order, and what it remembers of having built them. An undo puts it
/// back: the same objects. Taking one costs what the definition has of its own, a shared layout
/// nothing. For one thread.
class HXRNodeSnapshot {
 public:
  explicit HXRNodeSnapshot(HXRNode& definition);
  ~HXRNodeSnapshot();
  HXRNodeSnapshot(const HXRNodeSnapshot&) = delete;
  HXRNodeSnapshot& operator=(const HXRNodeSnapshot&) = delete;

  HXRNode& definition() const noexcept { return *definition_; }
  /// Puts what is held in force and holds what was. Tells nobody: the owner brings itself in line.
  void exchange();
  /// Whether that would change nothing.
  bool isNeutral() const;
  /// The ports that have another name in force than in what is held, in order.
  std::vector<Ref<HXRPort>> renamedPorts() const;
  std::size_t byteCount() const noexcept;

 private:
  struct Port {
    Ref<HXRPort> port;
    String name;
    String groupKey;
    friend bool operator==(const Port&, const Port&) = default;
  };
  struct Group {
    Ref<HXRPortGroup> group;
    std::vector<Ref<HXRPort>> ports;
    OrderedMap<Ref<HXRPort>> byKey;
    friend bool operator==(const Group& a, const Group& b) {
      return a.group == b.group && a.ports == b.ports;
    }
  };
  struct State {
    Ref<HXRPortLayout> layout;
    // Of a layout of the definition's own; the rest is empty for a shared one.
    std::vector<Port> ports;            // all that stand in the groups
    std::vector<Ref<HXRPort>> inOrder;  // those that are found by their keys
    std::vector<Group> groups[2];
    std::vector<Ref<HXRParameter>> parameters;
    friend bool operator==(const State&, const State&) = default;
  };
  State stateInForce() const;
  void putInForce(const State& state, const State& earlier);

  Ref<HXRNode> definition_;
  State held_;
  std::unique_ptr<HXRBuiltState> built_;  // null for a definition that remembers nothing
};

}  // namespace tarnkit
