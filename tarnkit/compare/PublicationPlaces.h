#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "tarnkit/compare/HXDocumentState.h"
#include "tarnkit/compare/StateHash.h"

namespace tarnkit::detail {

/// Which group publishes a port. The group around the port's node does not tell: when a node moves,
/// its hidden ports stay published where they were. By the numbers of a state; a value.
class PublicationPlaces {
 public:
  using Port = HXDocumentState::Port;

  PublicationPlaces() = default;
  explicit PublicationPlaces(const HXDocumentState& state);
  /// Of a state whose nodes are referred to by other numbers than their own: `numbers`, by those.
  PublicationPlaces(const HXDocumentState& state, const std::vector<std::int32_t>& numbers);

  /// False, and nothing noted, when the port is published already.
  bool add(const Port& port, std::int32_t node) { return places_.try_emplace(port, node).second; }
  /// The node whose group publishes the port; -1: none does.
  std::int32_t publisherOf(const Port& port) const {
    const auto found = places_.find(port);
    return found == places_.end() ? -1 : found->second;
  }
  /// The node on which the port stands: its own, and of a published one the node that publishes
  /// it; -1: there is none.
  std::int32_t holderOf(const Port& port) const {
    return port.level == 0 ? port.node : publisherOf({port.node, port.level - 1, port.key});
  }

 private:
  template <class NumberOf>
  void addAll(const HXDocumentState& state, NumberOf numberOf);

  std::unordered_map<Port, std::int32_t, PortHash> places_;
};

}  // namespace tarnkit::detail
