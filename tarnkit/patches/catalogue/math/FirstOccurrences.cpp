#include "tarnkit/patches/catalogue/math/FirstOccurrences.h"

#include <cstdint>

namespace tarnkit::detail {

namespace {

/// All names as one tree of bytes, whose every state also knows the longest other state that its
/// own text ends with: one walk along the text then meets every occurrence of every name.
class NameTree {
 public:
  explicit NameTree(const std::vector<String>& names) : names_(names) {
    for (std::uint32_t i = 0; i < names.size(); ++i) insert(names[i], i);
    linkSuffixes();
  }

  std::vector<std::size_t> search(std::string_view text) {
    std::vector<std::size_t> positions(names_.size(), std::string_view::npos);
    std::uint32_t at = kRoot;
    for (std::size_t i = 0; i < text.size(); ++i) {
      at = next(at, text[i]);
      // A state that was met before has told all that it and its suffixes have to tell.
      for (auto s = at; s != kRoot && !states_[s].met; s = states_[s].suffix) {
        states_[s].met = true;
        if (const auto name = states_[s].name; name != kNone) {
          positions[name] = i + 1 - names_[name].size();
        }
      }
    }
    return positions;
  }

 private:
  static constexpr std::uint32_t kRoot = 0;
  static constexpr std::uint32_t kNone = 0xFFFFFFFFU;
  struct State {
    std::uint32_t firstChild = kNone;
    std::uint32_t nextSibling = kNone;
    std::uint32_t suffix = kRoot;
    std::uint32_t name = kNone;
    char byte = 0;
    bool met = false;
  };

  std::uint32_t child(std::uint32_t state, char byte) const noexcept {
    auto at = states_[state].firstChild;
    while (at != kNone && states_[at].byte != byte) at = states_[at].nextSibling;
    return at;
  }

  std::uint32_t next(std::uint32_t state, char byte) const noexcept {
    for (;; state = states_[state].suffix) {
      if (const auto found = child(state, byte); found != kNone) return found;
      if (state == kRoot) return kRoot;
    }
  }

  void insert(std::string_view name, std::uint32_t index) {
    auto at = kRoot;
    for (const char byte : name) {
      auto found = child(at, byte);
      if (found == kNone) {
        found = static_cast<std::uint32_t>(states_.size());
        states_.push_back(State{.nextSibling = states_[at].firstChild, .byte = byte});
        states_[at].firstChild = found;
      }
      at = found;
    }
    if (at != kRoot) states_[at].name = index;
  }

  void linkSuffixes() {
    std::vector<std::uint32_t> pending{kRoot};  // breadth first: shorter states are linked before
    for (std::size_t i = 0; i < pending.size(); ++i) {
      const auto parent = pending[i];
      for (auto at = states_[parent].firstChild; at != kNone; at = states_[at].nextSibling) {
        if (parent != kRoot) states_[at].suffix = next(states_[parent].suffix, states_[at].byte);
        pending.push_back(at);
      }
    }
  }

  const std::vector<String>& names_;
  std::vector<State> states_{State{}};
};

}  // namespace

std::vector<std::size_t> firstOccurrences(std::string_view text, const std::vector<String>& names) {
  return NameTree(names).search(text);
}

}  // namespace tarnkit::detail
