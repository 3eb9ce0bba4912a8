#include "tarnkit/compare/PublicationPlaces.h"

namespace tarnkit::detail {

PublicationPlaces::PublicationPlaces(const HXDocumentState& state) {
  addAll(state, [](std::size_t node) { return static_cast<std::int32_t>(node); });
}

PublicationPlaces::PublicationPlaces(const HXDocumentState& state,
                                     const std::vector<std::int32_t>& numbers) {
  addAll(state, [&numbers](std::size_t node) { return numbers[node]; });
}

template <class NumberOf>
void PublicationPlaces::addAll(const HXDocumentState& state, NumberOf numberOf) {
  for (std::size_t i = 0; i < state.nodes.size(); ++i) {
    for (const auto& side : state.nodes[i].publications) {
      for (const auto& publication : side) {
        if (publication.port.node >= 0) add(publication.port, numberOf(i));
      }
    }
  }
}

}  // namespace tarnkit::detail
