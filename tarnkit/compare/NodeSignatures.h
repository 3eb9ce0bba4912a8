#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/compare/HXDocumentState.h"
#include "tarnkit/compare/PublicationPlaces.h"

namespace tarnkit::detail {

/// What the nodes of a state look like, as hashes of more and of less, and how they stand beside
/// each other. Equal hashes are taken for equal things: they cannot be predicted.
class NodeSignatures {
 public:
  explicit NodeSignatures(const HXDocumentState& state);

  /// A wire, as one of the nodes that the user joined sees it.
  struct Joint {
    std::uint64_t port = 0;  // of this node
    std::uint64_t otherPort = 0;
    std::int32_t other = -1;
  };
  /// By the node's number; the joints by port, then in the order of the port.
  std::vector<std::vector<Joint>> joints;

  std::vector<std::uint64_t> kind;      // the classes of node and patch
  std::vector<std::uint64_t> kindName;  // and the name
  std::vector<std::uint64_t> own;       // and all values
  std::vector<std::uint64_t> below;     // and what stands below it
  std::vector<std::uint64_t> around;    // and its surroundings
  std::vector<std::uint64_t> exact;     // and how it is looked at
  std::vector<std::uint64_t> position;  // the kind, and the position

  const PublicationPlaces& places() const noexcept { return places_; }

 private:
  void addOwn();
  void addBelow();
  void addJoints();
  void addAround();
  std::uint64_t labelOf(const HXDocumentState::Port& port) const;

  const HXDocumentState& state_;
  PublicationPlaces places_;
};

}  // namespace tarnkit::detail
