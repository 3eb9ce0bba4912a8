#include "tools/tarnkit/Suggestion.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <vector>

#include "tarnkit/platform/text/ASCII.h"

namespace tarnkit::tool {

namespace {

constexpr std::size_t kLongestWord = 64;
constexpr std::size_t kFar = 1000;

// How many letters were put in, left out, changed, or swapped with their neighbour; case is none.
std::size_t slipsBetween(std::string_view a, std::string_view b) {
  if (a.size() > kLongestWord || b.size() > kLongestWord) return kFar;
  using Row = std::array<std::size_t, kLongestWord + 1>;
  Row before{}, last{}, row{};
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const char x = detail::lowerCaseOf(a[i - 1]), y = detail::lowerCaseOf(b[j - 1]);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (x == y ? 0U : 1U)});
      const bool isSwapped = i > 1 && j > 1 && x == detail::lowerCaseOf(b[j - 2]) &&
                             detail::lowerCaseOf(a[i - 2]) == y;
      if (isSwapped) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before = last;
    last = row;
  }
  return last[b.size()];
}

bool begins(std::string_view word, std::string_view candidate) {
  constexpr std::size_t kEnough = 3;
  return word.size() >= kEnough && word.size() < candidate.size() &&
         std::equal(word.begin(), word.end(), candidate.begin(), [](char a, char b) {
           return detail::lowerCaseOf(a) == detail::lowerCaseOf(b);
         });
}

}  // namespace

std::string_view nearestName(std::string_view word, std::span<const std::string_view> candidates) {
  const std::size_t allowed = word.size() < 3 ? 0 : std::max<std::size_t>(1, word.size() / 3);
  std::string_view nearest;
  std::size_t fewest = allowed + 1;
  for (const std::string_view candidate : candidates) {
    const std::size_t slips = slipsBetween(word, candidate);
    const std::size_t counted = begins(word, candidate) ? std::min<std::size_t>(slips, 1) : slips;
    if (counted >= fewest || candidate == word) continue;
    fewest = counted;
    nearest = candidate;
  }
  return nearest;
}

std::string didYouMean(std::string_view word, std::span<const std::string_view> candidates) {
  const auto nearest = nearestName(word, candidates);
  return nearest.empty() ? std::string() : fmt::format("; did you mean \"{}\"?", nearest);
}

}  // namespace tarnkit::tool
