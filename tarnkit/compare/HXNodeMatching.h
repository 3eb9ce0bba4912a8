#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/compare/HXDocumentState.h"

namespace tarnkit {

/// Which nodes of two documents are the same node.
///
/// By their unique keys where the documents have a common past: at least half of the nodes whose
/// keys both have must be of one patch, or of one name. Then the keys alone decide, and a key under
/// which the two have nodes of different patches, names and groups is that of two nodes.
///
/// Otherwise by what nodes are and what they are joined to: from the top downward, within groups
/// that match, first those that nothing else resembles (patch, name, values, what stands below
/// them, and their surroundings to a few steps), then what is joined to these in the same way, then
/// what resembles less. Look-alikes that nothing tells apart are taken in their order. What is left
/// is looked for in other groups. Time n log n, whatever the documents are.
class HXNodeMatching {
 public:
  enum class Keys : std::uint8_t {
    whereTheyAgree,  // as above
    ignored,         // one of the two drew fresh ones when it was opened
  };
  HXNodeMatching(const HXDocumentState& oldState, const HXDocumentState& newState,
                 Keys keys = Keys::whereTheyAgree);

  /// By the number of a node of the one state its number in the other; -1: it has none there.
  const std::vector<std::int32_t>& newOf() const noexcept { return newOf_; }
  const std::vector<std::int32_t>& oldOf() const noexcept { return oldOf_; }
  /// Whether the keys decided.
  bool isByKeys() const noexcept { return isByKeys_; }

 private:
  std::vector<std::int32_t> newOf_;
  std::vector<std::int32_t> oldOf_;
  bool isByKeys_ = false;
};

}  // namespace tarnkit
