#include "tools/tarnkit/reference/RelatedPatches.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "tarnkit/patches/HXRNode.h"
#include "tools/tarnkit/reference/PortKinds.h"
#include "tools/tarnkit/reference/ReferencePages.h"

namespace tarnkit::tool {

namespace {

/// From 0, nothing in common, to 1. What is below is likely to share a number or two and no more.
constexpr double kLeastLikeness = 0.15;

bool meet(const std::set<std::string_view>& a, const std::set<std::string_view>& b) {
  return std::any_of(a.begin(), a.end(), [&](std::string_view kind) { return b.count(kind) > 0; });
}

bool holds(const std::vector<const HXRNodeClass*>& patches, const HXRNodeClass* patch) {
  return std::find(patches.begin(), patches.end(), patch) != patches.end();
}

}  // namespace

RelatedPatches::RelatedPatches(const ReferencePages& pages) : pages_(pages) {
  for (const auto* const patch : pages.patches()) addProfile(*patch);
}

void RelatedPatches::addProfile(const HXRNodeClass& patch) {
  Profile& profile = profiles_[&patch];
  std::map<std::string, std::pair<std::uint32_t, bool>> counts;
  for (const auto& [key, port] : patch.prototype().portLayout().ports()) {
    const bool isInput = port->orientation() == HXOrientationInput;
    const auto kind = kindOf(*port);
    auto& entry = counts[(isInput ? "in " : "out ") + std::string(kind)];
    ++entry.first;
    entry.second = true;
    ++counts["key " + key.toStdString()].first;
    const bool isInherited =
        patch.base() && patch.base()->prototype().portLayout().ports().contains(key);
    if (isExclusiveKind(kind) && !isInherited) {
      (isInput ? profile.taken : profile.given).insert(kind);
    }
  }
  if (patch.libraryCategory()) ++counts["category " + patch.libraryCategory().toStdString()].first;
  for (const auto& [trait, count] : counts) {
    const auto number = static_cast<std::uint32_t>(patchesWithTrait_.size());
    const auto entry = traitNumbers_.try_emplace(trait, number);
    if (entry.second) patchesWithTrait_.push_back(0);
    ++patchesWithTrait_[entry.first->second];
    profile.traits.push_back({entry.first->second, count.first, count.second});
  }
  std::sort(profile.traits.begin(), profile.traits.end(),
            [](const Trait& a, const Trait& b) { return a.number < b.number; });
}

/// What both have over what either has, 0 to 1, every trait weighed by its rarity; 0 when they
/// share no kind.
double RelatedPatches::likeness(const Traits& a, const Traits& b) const {
  const auto weight = [&](const Trait& trait) {
    return std::log(1 + static_cast<double>(profiles_.size()) / patchesWithTrait_[trait.number]);
  };
  double shared = 0;
  double all = 0;
  bool sharesKind = false;
  auto first = a.begin();
  auto second = b.begin();
  while (first != a.end() || second != b.end()) {
    if (second == b.end() || (first != a.end() && first->number < second->number)) {
      all += weight(*first) * first->count;
      ++first;
    } else if (first == a.end() || second->number < first->number) {
      all += weight(*second) * second->count;
      ++second;
    } else {
      shared += weight(*first) * std::min(first->count, second->count);
      all += weight(*first) * std::max(first->count, second->count);
      sharesKind |= first->isKind;
      ++first;
      ++second;
    }
  }
  return sharesKind ? shared / all : 0;
}

std::vector<const HXRNodeClass*> RelatedPatches::partnersOf(const ReferencePage& page) const {
  std::set<std::string_view> taken;
  std::set<std::string_view> given;
  for (const auto* const patch : page.patches) {
    const Profile& profile = profiles_.at(patch);
    taken.insert(profile.taken.begin(), profile.taken.end());
    given.insert(profile.given.begin(), profile.given.end());
  }
  std::vector<const HXRNodeClass*> partners;
  for (const auto* const patch : pages_.patches()) {
    if (partners.size() == kMostPartners) break;
    if (standsApart(*patch) || pages_.pageOf(*patch) == &page) continue;
    const Profile& other = profiles_.at(patch);
    if (meet(given, other.taken) || meet(taken, other.given)) partners.push_back(patch);
  }
  return partners;
}

std::vector<const HXRNodeClass*> RelatedPatches::similarTo(const ReferencePage& page,
                                                           const Relations& known) const {
  const Traits& own = profiles_.at(page.patches.front()).traits;
  std::vector<std::pair<double, const HXRNodeClass*>> candidates;
  for (const auto* const patch : pages_.patches()) {
    if (standsApart(*patch) || pages_.pageOf(*patch) == &page) continue;
    if (holds(known.bases, patch) || holds(known.derived, patch)) continue;
    const double found = likeness(own, profiles_.at(patch).traits);
    if (found >= kLeastLikeness) candidates.emplace_back(found, patch);
  }
  // Equal ones stay in the order of the index.
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const auto& a, const auto& b) { return a.first > b.first; });
  if (candidates.size() > kMostSimilar) candidates.resize(kMostSimilar);
  std::vector<const HXRNodeClass*> similar;
  similar.reserve(candidates.size());
  for (const auto& candidate : candidates) similar.push_back(candidate.second);
  return similar;
}

std::vector<const HXRNodeClass*> RelatedPatches::neighboursOf(const ReferencePage& page,
                                                              const Relations& known) const {
  const String& category = page.patches.front()->libraryCategory();
  std::vector<const HXRNodeClass*> neighbours;
  for (const auto* const patch : pages_.patches()) {
    if (neighbours.size() == kMostNeighbours) break;
    if (patch->libraryCategory() != category || standsApart(*patch)) continue;
    if (pages_.pageOf(*patch) == &page) continue;
    const bool isKnown = holds(known.bases, patch) || holds(known.derived, patch) ||
                         holds(known.partners, patch) || holds(known.similar, patch);
    if (!isKnown) neighbours.push_back(patch);
  }
  return neighbours;
}

Relations RelatedPatches::relationsOf(const ReferencePage& page) const {
  Relations relations;
  for (const auto* const patch : page.patches) {
    const auto* const base = patch->base();
    if (base && pages_.pageOf(*base) && pages_.pageOf(*base) != &page &&
        !holds(relations.bases, base)) {
      relations.bases.push_back(base);
    }
  }
  for (const auto* const patch : pages_.patches()) {
    if (relations.derived.size() == kMostDerived) break;
    if (pages_.pageOf(*patch) != &page && holds(page.patches, patch->base())) {
      relations.derived.push_back(patch);
    }
  }
  relations.partners = partnersOf(page);
  relations.similar = similarTo(page, relations);
  relations.neighbours = neighboursOf(page, relations);
  return relations;
}

}  // namespace tarnkit::tool
