#include "tarnkit/text/TextOrder.h"

#include <fmt/format.h>

#include <algorithm>

namespace tarnkit::detail {

namespace {

// Longer words are compared in their beginnings.
constexpr std::size_t kComparedLength = 80;

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
char lower(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

std::size_t startOfNumber(std::string_view id) noexcept {
  std::size_t start = id.size();
  while (start > 0 && isDigit(id[start - 1])) --start;
  return start;
}

std::string_view withoutZeros(std::string_view digits) noexcept {
  while (digits.size() > 1 && digits.front() == '0') digits.remove_prefix(1);
  return digits;
}

std::string comparable(std::string_view word) {
  std::string text(word.substr(0, kComparedLength));
  std::transform(text.begin(), text.end(), text.begin(), lower);
  return text;
}

std::size_t editDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      row[j] = std::min({above + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0U : 1U)});
      diagonal = above;
    }
  }
  return row.back();
}

}  // namespace

bool isIdBefore(std::string_view a, std::string_view b) noexcept {
  const std::size_t numberOfA = startOfNumber(a);
  const std::size_t numberOfB = startOfNumber(b);
  if (const int order = a.substr(0, numberOfA).compare(b.substr(0, numberOfB)); order != 0) {
    return order < 0;
  }
  const auto digitsOfA = withoutZeros(a.substr(numberOfA));
  const auto digitsOfB = withoutZeros(b.substr(numberOfB));
  if (digitsOfA.size() != digitsOfB.size()) return digitsOfA.size() < digitsOfB.size();
  if (const int order = digitsOfA.compare(digitsOfB); order != 0) return order < 0;
  return a < b;
}

std::vector<bool> keptInOrder(const std::vector<std::uint32_t>& sequence) {
  std::vector<bool> kept(sequence.size(), true);
  if (std::is_sorted(sequence.begin(), sequence.end())) return kept;
  constexpr std::uint32_t kNone = 0xFFFFFFFFU;
  // For each length the position at which the part of that length ends that ends lowest.
  std::vector<std::uint32_t> ends;
  std::vector<std::uint32_t> before(sequence.size(), kNone);
  for (std::uint32_t i = 0; i < sequence.size(); ++i) {
    const auto at = std::lower_bound(
        ends.begin(), ends.end(), sequence[i],
        [&](std::uint32_t position, std::uint32_t value) { return sequence[position] < value; });
    if (at != ends.begin()) before[i] = *(at - 1);
    if (at == ends.end()) {
      ends.push_back(i);
    } else {
      *at = i;
    }
  }
  kept.assign(sequence.size(), false);
  for (std::uint32_t i = ends.back(); i != kNone; i = before[i]) kept[i] = true;
  return kept;
}

NearestName::NearestName(std::string_view wanted)
    : wanted_(comparable(wanted)), distance_(wanted_.size() / 3 + 1) {}

void NearestName::consider(std::string_view candidate) {
  const std::string text = comparable(candidate);
  const auto difference =
      text.size() > wanted_.size() ? text.size() - wanted_.size() : wanted_.size() - text.size();
  // As a part of the candidate, the word is rather short for it than wrong.
  const bool isPart = wanted_.size() >= 3 && text.find(wanted_) != std::string::npos;
  if (!isPart && difference > distance_) return;
  const std::size_t distance =
      isPart ? std::min(difference, wanted_.size() / 3) : editDistance(wanted_, text);
  const bool isAsNear = distance == distance_ && candidate.size() < best_.size();
  if (distance >= distance_ && !isAsNear) return;
  distance_ = distance;
  best_ = candidate;
}

std::string NearestName::suggestion() const {
  return best_.empty() ? std::string() : fmt::format("; \"{}\"?", best_);
}

}  // namespace tarnkit::detail
