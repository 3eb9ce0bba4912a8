#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tarnkit {
class HXRNodeClass;
}

namespace tarnkit::tool {

class ReferencePages;
struct ReferencePage;

/// The patches to which a page leads on, each list bounded and in the order in which to show it.
struct Relations {
  /// The patches that those of the page are kinds of, and those that are kinds of them.
  std::vector<const HXRNodeClass*> bases;
  std::vector<const HXRNodeClass*> derived;
  /// Patches of other pages with an input for an output of this page, or the other way round, of a
  /// kind that fits nothing else.
  std::vector<const HXRNodeClass*> partners;
  /// Patches of other pages whose ports are most like those of this page: of the same kinds, better
  /// still under the same keys or in the same category, where what is rare counts more.
  std::vector<const HXRNodeClass*> similar;
  /// The other patches of the same category.
  std::vector<const HXRNodeClass*> neighbours;
};

/// Finds what to link to. Comparing every page with every patch takes time quadratic in their
/// number, of which a catalogue has some hundred. Keeps only references.
class RelatedPatches {
 public:
  static constexpr std::size_t kMostDerived = 24;
  static constexpr std::size_t kMostPartners = 12;
  static constexpr std::size_t kMostSimilar = 6;
  static constexpr std::size_t kMostNeighbours = 24;

  explicit RelatedPatches(const ReferencePages& pages);
  Relations relationsOf(const ReferencePage& page) const;

 private:
  /// A trait of a patch ("in Number", "key Tarn.valueInput", "category Math") and how often it has
  /// it, in a list sorted by trait.
  struct Trait {
    std::uint32_t number;
    std::uint32_t count;
    bool isKind;
  };
  using Traits = std::vector<Trait>;
  struct Profile {
    Traits traits;
    /// The exclusive kinds among the ports that the patch adds to its base's.
    std::set<std::string_view> taken;
    std::set<std::string_view> given;
  };

  void addProfile(const HXRNodeClass& patch);
  double likeness(const Traits& a, const Traits& b) const;
  std::vector<const HXRNodeClass*> partnersOf(const ReferencePage& page) const;
  std::vector<const HXRNodeClass*> neighboursOf(const ReferencePage& page,
                                                const Relations& known) const;
  std::vector<const HXRNodeClass*> similarTo(const ReferencePage& page,
                                             const Relations& known) const;

  const ReferencePages& pages_;
  std::unordered_map<std::string, std::uint32_t> traitNumbers_;
  std::vector<std::uint32_t> patchesWithTrait_;
  std::unordered_map<const HXRNodeClass*, Profile> profiles_;
};

}  // namespace tarnkit::tool
