#include "tarnkit/compare/HXDocumentDifference.h"

#include <algorithm>
#include <unordered_set>

#include "tarnkit/compare/HXDifferenceFinder.h"
#include "tarnkit/compare/HXDocumentAlignment.h"

namespace tarnkit {

HXDocumentDifference::HXDocumentDifference(const HXDocument& oldDocument,
                                           const HXDocument& newDocument, HXNodeMatching::Keys keys)
    : old_(oldDocument), new_(newDocument), matching_(old_, new_, keys) {
  const auto oldNodes = HXDocumentState::nodesOf(oldDocument);
  const auto newNodes = HXDocumentState::nodesOf(newDocument);
  changes_ = detail::HXDifferenceFinder(old_, new_, matching_, oldNodes, newNodes).changes();
  pieces_.resize(new_.nodes.size());
  for (std::size_t i = 1; i < new_.nodes.size(); ++i) {
    const auto number = matching_.oldOf()[i];
    const auto* old = number < 0 ? nullptr : &old_.nodes[static_cast<std::size_t>(number)];
    const auto& node = new_.nodes[i];
    if (!old || old->patchClass != node.patchClass || old->shape != node.shape ||
        old->parameters != node.parameters) {
      pieces_[i] = HXDocumentState::pieceOf(*newNodes[i]);
    }
  }
}

bool HXDocumentDifference::hasContentChanges() const noexcept {
  return std::any_of(changes_.begin(), changes_.end(),
                     [](const auto& change) { return !change.isViewState(); });
}

HXDocumentState HXDocumentDifference::goal() const {
  HXDocumentState goal = new_;
  for (std::size_t i = 0; i < goal.nodes.size(); ++i) {
    const auto number = matching_.oldOf()[i];
    if (number >= 0) goal.nodes[i].key = old_.nodes[static_cast<std::size_t>(number)].key;
  }
  if (matching_.isByKeys()) return goal;
  // Another node has kept the key.
  std::unordered_set<String> kept;
  for (std::size_t i = 0; i < goal.nodes.size(); ++i) {
    if (matching_.oldOf()[i] >= 0) kept.insert(goal.nodes[i].key);
  }
  for (std::size_t i = 0; i < goal.nodes.size(); ++i) {
    auto& key = goal.nodes[i].key;
    if (matching_.oldOf()[i] < 0 && kept.contains(key)) key = nullptr;
  }
  // The order in which a file without keys has them is that of other keys.
  for (auto& node : goal.nodes) {
    const auto placeOf = [this](std::int32_t subnode) {
      const auto old = matching_.oldOf()[static_cast<std::size_t>(subnode)];
      return old < 0 ? static_cast<std::int32_t>(old_.nodes.size()) : old;
    };
    std::stable_sort(node.subnodes.begin(), node.subnodes.end(),
                     [&](std::int32_t a, std::int32_t b) { return placeOf(a) < placeOf(b); });
  }
  return goal;
}

Status HXDocumentDifference::applyTo(HXDocument& document) const {
  if (!HXDocumentState(document).isEqual(old_)) {
    return Status::failure(StatusCode::refused,
                           "the document is not the one that the difference begins with");
  }
  if (!old_.fitsTogether || !new_.fitsTogether) {
    return Status::failure(StatusCode::unsupported,
                           "a document publishes a port twice, or what leads nowhere");
  }
  const auto present = HXDocumentState::nodesOf(document);
  HXDocumentState goal = this->goal();
  std::vector<std::int32_t> numbers;
  goal.renumber(&numbers);
  std::vector<Ref<HXNode>> nodes(goal.nodes.size());
  std::vector<Ref<Data>> pieces(goal.nodes.size());
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const auto to = static_cast<std::size_t>(numbers[i]);
    const auto old = matching_.oldOf()[i];
    if (old >= 0) nodes[to] = present[static_cast<std::size_t>(old)];
    pieces[to] = pieces_[i];
  }
  return HXDocumentAlignment(
             document, std::move(nodes), std::move(goal),
             [&pieces](std::int32_t node) { return pieces[static_cast<std::size_t>(node)]; })
      .run("Apply Changes");
}

}  // namespace tarnkit
