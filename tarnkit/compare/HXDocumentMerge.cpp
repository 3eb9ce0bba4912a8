#include "tarnkit/compare/HXDocumentMerge.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <unordered_set>

#include "tarnkit/compare/ByKey.h"
#include "tarnkit/compare/HXDocumentAlignment.h"
#include "tarnkit/compare/StateHash.h"
#include "tarnkit/compare/StateMerge.h"
#include "tarnkit/model/HXDocumentFile.h"

namespace tarnkit {

namespace {

using detail::MergeBranch;
using State = HXDocumentState;
using Kind = HXMergeConflict::Kind;

constexpr std::int32_t kWithKeys = 3;

std::size_t at(std::int32_t number) { return static_cast<std::size_t>(number); }

void readBranch(MergeBranch& branch, const HXDocument& document) {
  branch.state = State(document);
  branch.nodes = State::nodesOf(document);
}

// Whatever refers to a node has its shared number from now on.
void share(MergeBranch& branch, std::size_t count) {
  branch.own.assign(count, -1);
  for (std::size_t i = 0; i < branch.numbers.size(); ++i) {
    branch.own[at(branch.numbers[i])] = static_cast<std::int32_t>(i);
  }
  branch.state.mapReferences(branch.numbers);
}

std::vector<State::Image> mergedImages(const State& base, const State& ours, const State& theirs) {
  const auto countIn = [](const State& state) {
    std::unordered_map<String, const State::Image*> images;
    for (const auto& image : state.images) images.emplace(image.key, &image);
    return images;
  };
  const auto had = countIn(base);
  const auto inOurs = countIn(ours);
  const auto inTheirs = countIn(theirs);
  const auto count = [](const auto& images, const String& key) {
    const auto found = images.find(key);
    return found == images.end() ? 0 : found->second->count;
  };
  std::vector<State::Image> merged;
  std::unordered_set<String> met;
  for (const auto* state : {&ours, &theirs}) {
    for (const auto& image : state->images) {
      if (!met.insert(image.key).second) continue;
      const auto before = count(had, image.key);
      const auto now = count(inOurs, image.key);
      const auto other = count(inTheirs, image.key);
      const auto both = now == other      ? now
                        : now == before   ? other
                        : other == before ? now
                                          : std::max(now + other - before, 1);
      if (both > 0) merged.push_back({image.entry, image.key, both});
    }
  }
  return merged;
}

/// Takes a merged state to a document.
class Builder {
 public:
  Builder(const MergeBranch& base, const MergeBranch& ours, const MergeBranch& theirs)
      : base_(base), ours_(ours), theirs_(theirs) {}

  Result<Ref<HXDocument>> build(const HXDocument& document, State merged) {
    auto bytes = HXDocumentFile::dataWithDocument(document, kWithKeys);
    if (!bytes) return std::move(bytes).status();
    auto copy = HXDocumentFile::document(*bytes, kWithKeys);
    if (!copy) return std::move(copy).status();
    const auto present = State::nodesOf(**copy);
    if (present.size() != ours_.nodes.size()) {
      return Status::failure(StatusCode::unsupported, "our document does not come back as it was");
    }
    std::vector<std::int32_t> numbers;
    merged.renumber(&numbers);
    std::vector<std::int32_t> shared(merged.nodes.size());
    std::vector<Ref<HXNode>> nodes(merged.nodes.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      if (numbers[i] < 0) continue;
      shared[at(numbers[i])] = static_cast<std::int32_t>(i);
      // A key is a node's for good: one that got another is another object.
      if (ours_.own[i] < 0) continue;
      const auto& own = present[at(ours_.own[i])];
      if (numbers[i] == 0 || own->uniqueKey() == merged.nodes[at(numbers[i])].key) {
        nodes[at(numbers[i])] = own;
      }
    }
    // Theirs makes way where ours has a key already, or where a group would have it twice.
    std::unordered_set<String> keys;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      if (nodes[i]) keys.insert(merged.nodes[i].key);
    }
    std::unordered_set<State::Port, detail::PortHash> places;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      auto& node = merged.nodes[i];
      if (nodes[i] ||
          (!keys.contains(node.key) && places.insert({node.parent, 0, node.key}).second)) {
        continue;
      }
      node.key = nullptr;
    }
    goal_ = merged;
    HXDocumentAlignment alignment(
        **copy, std::move(nodes), std::move(merged), [&](std::int32_t number) -> Ref<Data> {
          const auto& branch = theirs_.own[at(shared[at(number)])] >= 0 ? theirs_ : base_;
          const auto own = branch.own[at(shared[at(number)])];
          return own < 0 ? nullptr : State::pieceOf(*branch.nodes[at(own)]);
        });
    auto status = alignment.run("Merge", HXDocumentAlignment::Exactness::possible);
    if (!status) return status;
    return *copy;
  }

  /// What the patches did not allow after all.
  void tellLosses(const HXDocument& document, std::vector<HXMergeConflict>& conflicts) const {
    const State is(document);
    if (is.nodes.size() != goal_.nodes.size()) return;
    const auto nodes = State::nodesOf(document);
    HXAddresses addresses;
    const auto tell = [&](std::size_t number, std::string subject, std::string lost) {
      conflicts.push_back({Kind::hungOnRemoved, addresses.of(*nodes[number]), std::move(subject),
                           lost, lost, "none", false});
    };
    for (std::size_t i = 0; i < is.nodes.size(); ++i) {
      const detail::ByKey values(is.nodes[i].values);
      for (const auto& value : goal_.nodes[i].values) {
        const auto* kept = values[value.key];
        if (!kept || kept->value != value.value) {
          tell(i, value.key.toStdString(), value.value.description());
        }
      }
    }
    if (is.connections.size() >= goal_.connections.size()) return;
    const std::unordered_set<State::Connection, detail::WireHash> wires(is.connections.begin(),
                                                                        is.connections.end());
    for (const auto& wire : goal_.connections) {
      if (wires.contains(wire)) continue;
      tell(at(std::max(wire.input.node, 0)), "connection", wire.input.key.toStdString());
    }
  }

 private:
  const MergeBranch& base_;
  const MergeBranch& ours_;
  const MergeBranch& theirs_;
  State goal_;
};

constexpr std::string_view kNames[] = {"twoValues",   "patchReplaced",   "removedAndChanged",
                                       "joinedTwice", "movedIntoItself", "movedTwice",
                                       "twoOrders",   "hungOnRemoved"};
static_assert(std::size(kNames) == static_cast<std::size_t>(Kind::hungOnRemoved) + 1);

}  // namespace

std::string HXMergeConflict::description() const {
  return fmt::format("{}: {}, ours {}, theirs {}, taken {}", address, subject, ours, theirs, taken);
}

std::string_view nameOf(HXMergeConflict::Kind kind) noexcept {
  return kNames[static_cast<std::size_t>(kind)];
}

bool HXDocumentMerge::Outcome::hasOpenConflicts() const {
  return std::any_of(conflicts.begin(), conflicts.end(),
                     [](const auto& conflict) { return !conflict.isDecided; });
}

Result<HXDocumentMerge::Outcome> HXDocumentMerge::merge(const HXDocument& baseDocument,
                                                        const HXDocument& ourDocument,
                                                        const HXDocument& theirDocument,
                                                        const Options& options) {
  MergeBranch base;
  MergeBranch ours;
  MergeBranch theirs;
  readBranch(base, baseDocument);
  readBranch(ours, ourDocument);
  readBranch(theirs, theirDocument);
  for (const auto* branch : {&base, &ours, &theirs}) {
    if (branch->state.fitsTogether) continue;
    return Status::failure(StatusCode::unsupported,
                           "a document publishes a port twice, or what leads nowhere");
  }
  const bool areSame = ours.state.isEqual(theirs.state);
  auto count = static_cast<std::int32_t>(base.state.nodes.size());
  for (std::int32_t i = 0; i < count; ++i) base.numbers.push_back(i);
  const auto number = [&](MergeBranch& branch) {
    const HXNodeMatching matching(base.state, branch.state, options.keys);
    for (const auto old : matching.oldOf()) branch.numbers.push_back(old >= 0 ? old : count++);
  };
  number(ours);
  if (areSame) {
    theirs.numbers = ours.numbers;
  } else {
    number(theirs);
  }
  for (auto* branch : {&base, &ours, &theirs}) share(*branch, static_cast<std::size_t>(count));
  detail::StateMerge merge(base, ours, theirs, static_cast<std::size_t>(count), options);
  State merged = merge.run();
  merged.images = mergedImages(base.state, ours.state, theirs.state);
  Outcome outcome;
  outcome.conflicts = merge.takeConflicts();
  Builder builder(base, ours, theirs);
  auto document = builder.build(ourDocument, std::move(merged));
  if (!document) return std::move(document).status();
  outcome.document = *std::move(document);
  builder.tellLosses(*outcome.document, outcome.conflicts);
  return outcome;
}

}  // namespace tarnkit
