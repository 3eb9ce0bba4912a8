#pragma once

#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tarnkit/compare/HXAddresses.h"
#include "tarnkit/compare/HXDocumentMerge.h"
#include "tarnkit/compare/HXDocumentState.h"
#include "tarnkit/compare/PublicationPlaces.h"
#include "tarnkit/model/HXNode.h"

namespace tarnkit::detail {

/// One of the three documents, in numbers that all three share: a node of the base has its number
/// there, those that the branches made follow.
struct MergeBranch {
  HXDocumentState state;
  std::vector<Ref<HXNode>> nodes;     // by the state's own numbers
  std::vector<std::int32_t> numbers;  // shared, by its own
  std::vector<std::int32_t> own;      // its own, by the shared; -1: not there
  HXAddresses addresses;
  PublicationPlaces places;

  const HXDocumentState::Node* find(std::int32_t shared) const {
    const auto number = own[static_cast<std::size_t>(shared)];
    return number < 0 ? nullptr : &state.nodes[static_cast<std::size_t>(number)];
  }
};

/// Merges two states on their base: the part of `HXDocumentMerge` that decides. The states are in
/// shared numbers already, references too.
class StateMerge {
 public:
  StateMerge(MergeBranch& base, MergeBranch& ours, MergeBranch& theirs, std::size_t count,
             const HXDocumentMerge::Options& options);

  /// The merged state in shared numbers; a node that is not there has no class.
  HXDocumentState run();
  std::vector<HXMergeConflict> takeConflicts() { return std::move(conflicts_); }

 private:
  using State = HXDocumentState;
  using Node = HXDocumentState::Node;
  using Port = HXDocumentState::Port;
  using Kind = HXMergeConflict::Kind;
  using Numbers = std::vector<std::int32_t>;

  // StateMerge.cpp: nodes.
  void keep(std::int32_t number);
  bool hasChanged(const Node& before, const Node& now, const MergeBranch& branch) const;
  void decideParents();
  void breakCircles();
  void decidePresence();
  void mergeNode(std::int32_t number);
  void mergeShape(std::int32_t number, const Node& b, const Node& o, const Node& t);
  void mergeValues(std::int32_t number, const Node& b, const Node& o, const Node& t);
  void mergePortGroups(std::int32_t number, const Node& b, const Node& o, const Node& t);
  void mergeSubnodes(std::int32_t number);

  // StateMergeWires.cpp: publications and connections.
  using Publications = std::vector<State::Publication>;
  using Wire = State::Connection;
  struct WireCounts {
    Wire wire;
    int base = 0;
    int ours = 0;
    int theirs = 0;
    bool isMade() const noexcept { return ours > base || theirs > base; }
  };
  void mergePublications();
  /// As both branches have them; not all of them may find their ports.
  void mergePublications(std::int32_t number);
  Publications mergedPublications(std::int32_t number, const Publications& before,
                                  const Publications& ours, const Publications& theirs);
  /// Leaves out what has no port to publish, and notes the others.
  void settlePublications();
  void mergeArrayOutputs(std::int32_t number);
  /// Tells of those that somebody made.
  void takeOutPublications(std::int32_t number, std::int32_t side,
                           const std::vector<std::size_t>& gone);
  /// Whether the port stands right inside of the node, or where a branch that publishes it there
  /// has it, too: the publication of a hidden port stays where it was made when its node moves.
  bool mayBePublished(const Port& port, std::int32_t number) const;
  void mergeConnections();
  std::vector<WireCounts> countedWires() const;
  /// How many of the wire there are to be.
  int numberOf(const WireCounts& counts) const;
  void tellLostWire(const WireCounts& counts);
  /// Those that an input which takes one connection has no place for, since both branches joined
  /// it.
  std::unordered_set<Wire, WireHash> refusedWires(const std::vector<WireCounts>& wanted);
  void mergeWireOrder(std::int32_t number);
  /// The wires of the node's ports in numbers of the merged connections, as the branch has them.
  std::unordered_map<String, Numbers> wiresOf(const MergeBranch& branch, std::int32_t number,
                                              std::vector<String>& keys) const;
  bool isThere(const Port& port) const;
  /// Whether the branch removed the node of the port, which stays for what the other made of it.
  bool hasReturned(const MergeBranch& branch, const Port& port) const;
  std::string portText(MergeBranch& branch, const Port& port) const;
  std::string wireText(MergeBranch& branch, const State::Connection& wire) const;
  bool takesOne(const Port& port) const;

  /// What is taken of a property, by the texts of what each says.
  HXMergeSide decide(Kind kind, std::int32_t number, const std::string& subject,
                     const std::string& ours, const std::string& theirs);
  /// A conflict in which nothing is to be decided.
  void tell(Kind kind, std::int32_t number, const std::string& subject, const std::string& ours,
            const std::string& theirs, const std::string& taken);
  template <class Value, class TextOf>
  Value pick(const Value& b, const Value& o, const Value& t, std::int32_t number,
             const std::string& subject, TextOf textOf, Kind kind = Kind::twoValues);
  std::string addressOf(std::int32_t number);
  /// The last part of it.
  std::string labelOf(std::int32_t number);
  MergeBranch& branchWith(std::int32_t number);
  /// Members of either list that are present; in the order of the one that has another order than
  /// the base, as is decided where both have and they are not one. Where both added something ours
  /// come first. `subject` is what is in order, and `textOf` tells of one.
  template <class Item, class Hash, class TextOf>
  std::vector<Item> mergedOrder(const std::vector<Item>& b, const std::vector<Item>& o,
                                const std::vector<Item>& t,
                                const std::unordered_set<Item, Hash>& present, std::int32_t number,
                                const std::string& subject, TextOf textOf);
  /// From where it is another order than the other one, some of it.
  template <class Item, class TextOf>
  static std::string orderText(const std::vector<Item>& order, const std::vector<Item>& other,
                               TextOf textOf);

  MergeBranch& base_;
  MergeBranch& ours_;
  MergeBranch& theirs_;
  const HXDocumentMerge::Options& options_;
  State merged_;
  std::vector<bool> isKept_;
  PublicationPlaces places_;  // of what is published in the end
  std::unordered_map<Wire, Numbers, WireHash> wireNumbers_;
  /// By the number of a merged connection, whether the branch has it, too.
  std::vector<bool> isInOurs_;
  std::vector<bool> isInTheirs_;
  std::vector<HXMergeConflict> conflicts_;
};

template <class Item, class TextOf>
std::string StateMerge::orderText(const std::vector<Item>& order, const std::vector<Item>& other,
                                  TextOf textOf) {
  constexpr std::ptrdiff_t kMost = 6;
  const auto first = std::mismatch(order.begin(), order.end(), other.begin(), other.end()).first;
  std::string text = first == order.begin() ? "(" : "(…, ";
  for (auto at = first; at != order.end(); ++at) {
    if (at != first) text += ", ";
    if (at - first == kMost) {
      text += "…";
      break;
    }
    text += textOf(*at);
  }
  return text + ")";
}

template <class Item, class Hash, class TextOf>
std::vector<Item> StateMerge::mergedOrder(const std::vector<Item>& b, const std::vector<Item>& o,
                                          const std::vector<Item>& t,
                                          const std::unordered_set<Item, Hash>& present,
                                          std::int32_t number, const std::string& subject,
                                          TextOf textOf) {
  using Set = std::unordered_set<Item, Hash>;
  const auto setOf = [](const std::vector<Item>& list) { return Set(list.begin(), list.end()); };
  const Set inBase = setOf(b);
  const Set inOurs = setOf(o);
  const Set inTheirs = setOf(t);
  // Whether what two lists share comes in one order; each is given with what the other has.
  const auto agree = [](const std::vector<Item>& one, const Set& inOther,
                        const std::vector<Item>& other, const Set& inOne) {
    auto at = other.begin();
    const auto skip = [&] {
      while (at != other.end() && !inOne.contains(*at)) ++at;
    };
    for (const auto& item : one) {
      if (!inOther.contains(item)) continue;
      skip();
      if (at == other.end() || !(*at == item)) return false;
      ++at;
    }
    skip();
    return at == other.end();
  };
  const bool oursMoved = !agree(b, inOurs, o, inBase);
  const bool theirsMoved = !agree(b, inTheirs, t, inBase);
  auto side = options_.preference;
  if (oursMoved && theirsMoved && !agree(o, inTheirs, t, inOurs)) {
    side =
        decide(Kind::twoOrders, number, subject, orderText(o, t, textOf), orderText(t, o, textOf));
  }
  const bool byTheirs = theirsMoved && (!oursMoved || side == HXMergeSide::theirs);
  // What only one has follows what it follows there, ours before theirs.
  struct Gaps {
    std::vector<Item> atStart;
    std::unordered_map<Item, std::vector<Item>, Hash> after;
  };
  const auto gapsOf = [&present](const std::vector<Item>& list, const Set& inOther) {
    Gaps gaps;
    auto* gap = &gaps.atStart;
    for (const auto& item : list) {
      if (inOther.contains(item)) {
        gap = &gaps.after[item];
      } else if (present.contains(item)) {
        gap->push_back(item);
      }
    }
    return gaps;
  };
  const Gaps onlyOurs = gapsOf(o, inTheirs);
  const Gaps onlyTheirs = gapsOf(t, inOurs);
  std::vector<Item> merged;
  Set taken;
  const auto addOne = [&](const Item& item) {
    if (present.contains(item) && taken.insert(item).second) merged.push_back(item);
  };
  const auto add = [&](const std::vector<Item>& items) {
    for (const auto& item : items) addOne(item);
  };
  const Set& inSecond = byTheirs ? inOurs : inTheirs;
  add(onlyOurs.atStart);
  add(onlyTheirs.atStart);
  for (const auto& item : byTheirs ? t : o) {
    if (!inSecond.contains(item)) continue;
    addOne(item);
    add(onlyOurs.after.at(item));
    add(onlyTheirs.after.at(item));
  }
  add(b);
  return merged;
}

template <class Value, class TextOf>
Value StateMerge::pick(const Value& b, const Value& o, const Value& t, std::int32_t number,
                       const std::string& subject, TextOf textOf, Kind kind) {
  if (o == t || t == b) return o;
  if (o == b) return t;
  return decide(kind, number, subject, textOf(o), textOf(t)) == HXMergeSide::ours ? o : t;
}

}  // namespace tarnkit::detail
