#include "tarnkit/compare/HXNodeMatching.h"

#include <algorithm>
#include <deque>
#include <unordered_map>
#include <utility>

#include "tarnkit/compare/NodeSignatures.h"
#include "tarnkit/compare/StateHash.h"

namespace tarnkit {

namespace {

using detail::NodeSignatures;
using detail::StateHash;
using Numbers = std::vector<std::int32_t>;
using Hashes = std::vector<std::uint64_t>;

std::size_t at(std::int32_t number) { return static_cast<std::size_t>(number); }

/// Matches by keys.
class KeyMatcher {
 public:
  KeyMatcher(const HXDocumentState& older, const HXDocumentState& newer, Numbers& newOf,
             Numbers& oldOf)
      : old_(older), new_(newer), newOf_(newOf), oldOf_(oldOf) {}

  /// False, and nothing matched, when the documents have no common past.
  bool run() {
    for (std::size_t i = 1; i < old_.nodes.size(); ++i) {
      byKey_.try_emplace(old_.nodes[i].key, static_cast<std::int32_t>(i));
    }
    std::size_t common = 0;
    std::size_t alike = 0;
    for (std::size_t i = 1; i < new_.nodes.size(); ++i) {
      const auto found = byKey_.find(new_.nodes[i].key);
      if (found == byKey_.end()) continue;
      const auto& other = old_.nodes[at(found->second)];
      ++common;
      if (isAlike(other, new_.nodes[i])) ++alike;
    }
    if (common == 0 || alike * 2 < common) return false;
    // A key may stand once in each group only, so the group counts first.
    for (std::size_t i = 1; i < old_.nodes.size(); ++i) {
      byPlace_.try_emplace(placeOf(old_.nodes[i].parent, old_.nodes[i].key),
                           static_cast<std::int32_t>(i));
    }
    for (std::size_t i = 1; i < new_.nodes.size(); ++i) match(static_cast<std::int32_t>(i));
    return true;
  }

 private:
  static bool isAlike(const HXDocumentState::Node& a, const HXDocumentState::Node& b) {
    return a.nodeClass == b.nodeClass && (a.patchClass == b.patchClass || a.name == b.name);
  }
  static std::uint64_t placeOf(std::int32_t parent, const String& key) {
    StateHash hash;
    hash.add(static_cast<std::uint64_t>(parent));
    hash.add(key);
    return hash.value();
  }
  void match(std::int32_t number) {
    const auto& node = new_.nodes[at(number)];
    const auto parent = node.parent >= 0 ? oldOf_[at(node.parent)] : -1;
    if (const auto found = byPlace_.find(placeOf(parent, node.key)); found != byPlace_.end()) {
      const auto& other = old_.nodes[at(found->second)];
      if (newOf_[at(found->second)] < 0 && other.nodeClass == node.nodeClass) {
        return pair(found->second, number);
      }
    }
    const auto found = byKey_.find(node.key);
    if (found == byKey_.end() || newOf_[at(found->second)] >= 0) return;
    if (isAlike(old_.nodes[at(found->second)], node)) pair(found->second, number);
  }
  void pair(std::int32_t older, std::int32_t newer) {
    newOf_[at(older)] = newer;
    oldOf_[at(newer)] = older;
  }

  const HXDocumentState& old_;
  const HXDocumentState& new_;
  Numbers& newOf_;
  Numbers& oldOf_;
  std::unordered_map<String, std::int32_t> byKey_;
  std::unordered_map<std::uint64_t, std::int32_t> byPlace_;
};

/// Matches by what nodes are and what they are joined to.
class LikenessMatcher {
 public:
  LikenessMatcher(const HXDocumentState& older, const HXDocumentState& newer, Numbers& newOf,
                  Numbers& oldOf)
      : old_(older), new_(newer), olds_(older), news_(newer), newOf_(newOf), oldOf_(oldOf) {}

  void run() {
    pair(0, 0);
    matchGroups();
    // What went to another group.
    for (const auto member : {&NodeSignatures::below, &NodeSignatures::own}) {
      Numbers olds;
      Numbers news;
      for (std::size_t i = 1; i < newOf_.size(); ++i) {
        if (newOf_[i] < 0) olds.push_back(static_cast<std::int32_t>(i));
      }
      for (std::size_t i = 1; i < oldOf_.size(); ++i) {
        if (oldOf_[i] < 0) news.push_back(static_cast<std::int32_t>(i));
      }
      pairUnique(olds, news, olds_.*member, news_.*member);
      matchGroups();
    }
  }

 private:
  void pair(std::int32_t older, std::int32_t newer) {
    newOf_[at(older)] = newer;
    oldOf_[at(newer)] = older;
    fresh_.emplace_back(older, newer);
    if (!old_.nodes[at(older)].subnodes.empty() && !new_.nodes[at(newer)].subnodes.empty()) {
      groups_.emplace_back(older, newer);
    }
  }

  void matchGroups() {
    while (!groups_.empty()) {
      const auto [older, newer] = groups_.front();
      groups_.pop_front();
      follow();
      matchGroup(old_.nodes[at(older)].subnodes, new_.nodes[at(newer)].subnodes);
    }
    follow();
  }

  void matchGroup(const Numbers& olds, const Numbers& news) {
    const auto unique = [&](Hashes NodeSignatures::*member) {
      pairUnique(olds, news, olds_.*member, news_.*member);
    };
    const auto inOrder = [&](Hashes NodeSignatures::*member, bool onlyAsMany) {
      pairInOrder(olds, news, olds_.*member, news_.*member, onlyAsMany);
    };
    unique(&NodeSignatures::exact);
    unique(&NodeSignatures::around);
    follow();
    inOrder(&NodeSignatures::exact, true);
    inOrder(&NodeSignatures::around, true);
    unique(&NodeSignatures::below);
    follow();
    unique(&NodeSignatures::own);
    follow();
    pairByNeighbours(olds, news, &NodeSignatures::kindName);
    inOrder(&NodeSignatures::exact, false);
    inOrder(&NodeSignatures::below, false);
    inOrder(&NodeSignatures::own, false);
    inOrder(&NodeSignatures::kindName, false);
    pairByNeighbours(olds, news, &NodeSignatures::kind);
    unique(&NodeSignatures::position);
    follow();
    pairByName(olds, news);
    follow();
  }

  struct Candidate {
    std::uint64_t hash;
    std::int32_t node;
  };
  template <class HashOf>
  static std::vector<Candidate> candidates(const Numbers& nodes, const Numbers& others,
                                           HashOf hashOf) {
    std::vector<Candidate> list;
    for (const auto node : nodes) {
      if (others[at(node)] >= 0) continue;
      if (const std::uint64_t hash = hashOf(node)) list.push_back({hash, node});
    }
    std::stable_sort(list.begin(), list.end(),
                     [](const Candidate& a, const Candidate& b) { return a.hash < b.hash; });
    return list;
  }
  /// Calls `visit` with the runs of candidates of one hash that both have.
  template <class HashOfOld, class HashOfNew, class Visit>
  void eachRun(const Numbers& olds, const Numbers& news, HashOfOld hashOfOld, HashOfNew hashOfNew,
               Visit visit) const {
    const auto older = candidates(olds, newOf_, hashOfOld);
    const auto newer = candidates(news, oldOf_, hashOfNew);
    std::size_t o = 0;
    std::size_t n = 0;
    while (o < older.size() && n < newer.size()) {
      if (older[o].hash < newer[n].hash) {
        ++o;
      } else if (newer[n].hash < older[o].hash) {
        ++n;
      } else {
        std::size_t endO = o;
        std::size_t endN = n;
        while (endO < older.size() && older[endO].hash == older[o].hash) ++endO;
        while (endN < newer.size() && newer[endN].hash == newer[n].hash) ++endN;
        visit(older.data() + o, endO - o, newer.data() + n, endN - n);
        o = endO;
        n = endN;
      }
    }
  }

  void pairUnique(const Numbers& olds, const Numbers& news, const Hashes& oldHashes,
                  const Hashes& newHashes) {
    std::vector<std::pair<std::int32_t, std::int32_t>> found;
    eachRun(
        olds, news, [&](std::int32_t node) { return oldHashes[at(node)]; },
        [&](std::int32_t node) { return newHashes[at(node)]; },
        [&](const Candidate* o, std::size_t countO, const Candidate* n, std::size_t countN) {
          if (countO == 1 && countN == 1) found.emplace_back(o->node, n->node);
        });
    for (const auto& [older, newer] : found) pair(older, newer);
  }

  // Each pair first brings along what is joined to it: of two equal chains one whole one goes with
  // one whole one.
  void pairInOrder(const Numbers& olds, const Numbers& news, const Hashes& oldHashes,
                   const Hashes& newHashes, bool onlyAsMany) {
    std::vector<std::pair<Numbers, Numbers>> runs;
    eachRun(
        olds, news, [&](std::int32_t node) { return oldHashes[at(node)]; },
        [&](std::int32_t node) { return newHashes[at(node)]; },
        [&](const Candidate* o, std::size_t countO, const Candidate* n, std::size_t countN) {
          if (onlyAsMany && countO != countN) return;
          auto& run = runs.emplace_back();
          for (std::size_t i = 0; i < countO; ++i) run.first.push_back(o[i].node);
          for (std::size_t i = 0; i < countN; ++i) run.second.push_back(n[i].node);
        });
    for (const auto& [older, newer] : runs) {
      std::size_t n = 0;
      for (const auto node : older) {
        if (newOf_[at(node)] >= 0) continue;
        while (n < newer.size() && oldOf_[at(newer[n])] >= 0) ++n;
        if (n == newer.size()) break;
        pair(node, newer[n]);
        follow();
      }
    }
  }

  // By what they are joined to, as far as that is matched.
  void pairByNeighbours(const Numbers& olds, const Numbers& news, Hashes NodeSignatures::*member) {
    const auto hash = [](const NodeSignatures& signatures, const Hashes& hashes, std::int32_t node,
                         auto pairOf) {
      std::uint64_t sum = 0;
      for (const auto& joint : signatures.joints[at(node)]) {
        const std::int32_t pair = pairOf(joint.other);
        if (pair < 0) continue;
        StateHash one;
        one.add(joint.port);
        one.add(joint.otherPort);
        one.add(static_cast<std::uint64_t>(pair));
        sum += StateHash::mixed(one.value());
      }
      return sum == 0 ? 0 : StateHash::mixed(sum ^ hashes[at(node)]);
    };
    std::vector<std::pair<std::int32_t, std::int32_t>> found;
    eachRun(
        olds, news,
        [&](std::int32_t node) {
          return hash(olds_, olds_.*member, node,
                      [&](std::int32_t other) { return newOf_[at(other)] >= 0 ? other : -1; });
        },
        [&](std::int32_t node) {
          return hash(news_, news_.*member, node,
                      [&](std::int32_t other) { return oldOf_[at(other)]; });
        },
        [&](const Candidate* o, std::size_t countO, const Candidate* n, std::size_t countN) {
          if (countO == 1 && countN == 1) found.emplace_back(o->node, n->node);
        });
    for (const auto& [older, newer] : found) pair(older, newer);
    follow();
  }

  // A patch was replaced: what somebody named is what it was.
  void pairByName(const Numbers& olds, const Numbers& news) {
    const auto hash = [](const HXDocumentState& state, std::int32_t number) -> std::uint64_t {
      const auto& node = state.nodes[at(number)];
      if (!node.name) return 0;
      StateHash one;
      one.add(node.nodeClass->name());
      one.add(node.name);
      return one.value();
    };
    std::vector<std::pair<std::int32_t, std::int32_t>> found;
    eachRun(
        olds, news, [&](std::int32_t node) { return hash(old_, node); },
        [&](std::int32_t node) { return hash(new_, node); },
        [&](const Candidate* o, std::size_t countO, const Candidate* n, std::size_t countN) {
          if (countO == 1 && countN == 1) found.emplace_back(o->node, n->node);
        });
    for (const auto& [older, newer] : found) pair(older, newer);
  }

  bool mayFollow(std::int32_t older, std::int32_t newer) const {
    if (older < 0 || newer < 0 || newOf_[at(older)] >= 0 || oldOf_[at(newer)] >= 0) return false;
    const auto oldParent = old_.nodes[at(older)].parent;
    return oldParent >= 0 && newOf_[at(oldParent)] == new_.nodes[at(newer)].parent &&
           olds_.own[at(older)] == news_.own[at(newer)];
  }

  // What is joined to what was matched, in the same way, is the same.
  void follow() {
    while (!fresh_.empty()) {
      const auto [older, newer] = fresh_.back();
      fresh_.pop_back();
      followJoints(olds_.joints[at(older)], news_.joints[at(newer)]);
      followGroup(old_.nodes[at(older)], new_.nodes[at(newer)]);
    }
  }

  void followJoints(const std::vector<NodeSignatures::Joint>& olds,
                    const std::vector<NodeSignatures::Joint>& news) {
    std::size_t o = 0;
    std::size_t n = 0;
    while (o < olds.size() && n < news.size()) {
      const auto port = olds[o].port;
      if (port != news[n].port) {
        port < news[n].port ? ++o : ++n;
        continue;
      }
      std::size_t endO = o;
      std::size_t endN = n;
      while (endO < olds.size() && olds[endO].port == port) ++endO;
      while (endN < news.size() && news[endN].port == port) ++endN;
      if (endO - o == endN - n) {
        for (std::size_t i = 0; i < endO - o; ++i) {
          const auto& a = olds[o + i];
          const auto& b = news[n + i];
          if (a.otherPort == b.otherPort && mayFollow(a.other, b.other)) pair(a.other, b.other);
        }
      }
      o = endO;
      n = endN;
    }
  }

  void followGroup(const HXDocumentState::Node& older, const HXDocumentState::Node& newer) {
    for (const auto side : kBothSides) {
      const auto& olds = older.publications[side];
      const auto& news = newer.publications[side];
      if (olds.size() != news.size()) continue;
      for (std::size_t i = 0; i < olds.size(); ++i) {
        if (olds[i].name != news[i].name || olds[i].port.key != news[i].port.key) continue;
        const auto a = olds_.places().holderOf(olds[i].port);
        const auto b = news_.places().holderOf(news[i].port);
        if (mayFollow(a, b)) pair(a, b);
      }
    }
    if (older.views.size() != newer.views.size()) return;
    for (std::size_t i = 0; i < older.views.size(); ++i) {
      if (mayFollow(older.views[i], newer.views[i])) pair(older.views[i], newer.views[i]);
    }
  }

  const HXDocumentState& old_;
  const HXDocumentState& new_;
  NodeSignatures olds_;
  NodeSignatures news_;
  Numbers& newOf_;
  Numbers& oldOf_;
  std::vector<std::pair<std::int32_t, std::int32_t>> fresh_;
  std::deque<std::pair<std::int32_t, std::int32_t>> groups_;
};

}  // namespace

HXNodeMatching::HXNodeMatching(const HXDocumentState& oldState, const HXDocumentState& newState,
                               Keys keys)
    : newOf_(oldState.nodes.size(), -1), oldOf_(newState.nodes.size(), -1) {
  newOf_[0] = oldOf_[0] = 0;
  if (keys == Keys::whereTheyAgree) {
    isByKeys_ = KeyMatcher(oldState, newState, newOf_, oldOf_).run();
  }
  if (!isByKeys_) LikenessMatcher(oldState, newState, newOf_, oldOf_).run();
}

}  // namespace tarnkit
