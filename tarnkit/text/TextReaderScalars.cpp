#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <limits>

#include "tarnkit/platform/numbers/RealText.h"
#include "tarnkit/text/TextReader.h"
#include "tarnkit/text/TextWords.h"

// What a single value of a text may be, and where it stands when it is not that.

namespace tarnkit::detail {

bool TextReader::fail(Index at, std::string sentence) {
  return failFor(at, at, std::move(sentence));
}

bool TextReader::failFor(Index at, Index path, std::string sentence) {
  if (!failure_.empty()) return false;
  const std::string where = pathOf(path);
  failure_ =
      fmt::format("line {}: {}{}{}", tree_->line(at), where, where.empty() ? "" : ": ", sentence);
  return false;
}

// "nodes[3].values", found from the top, since only a failure asks for it.
std::string TextReader::pathOf(Index value) const {
  std::string path;
  for (Index at = tree_->root(); at != value;) {
    Index inner = kNone;
    std::size_t place = 0;
    std::size_t count = 0;
    for (const Index child : tree_->children(at)) {
      if (child > value) break;
      inner = child;
      place = count++;
    }
    if (inner == kNone) break;
    if (tree_->kind(at) == Kind::array) {
      path += fmt::format("[{}]", place);
    } else {
      path +=
          fmt::format("{}{}", path.empty() ? "" : ".", beginningOf(tree_->key(inner), kShownWord));
    }
    at = inner;
  }
  return path;
}

bool TextReader::expect(Index value, Kind kind) {
  if (tree_->kind(value) == kind) return true;
  return fail(value, fmt::format("{} where {} is expected", JSONTree::nameOf(tree_->kind(value)),
                                 JSONTree::nameOf(kind)));
}

bool TextReader::readText(Index value, String& into, bool mayBeNull) {
  if (mayBeNull && tree_->kind(value) == Kind::null) {
    into = nullptr;
    return true;
  }
  if (!expect(value, Kind::string)) return false;
  into = shared(tree_->text(value));
  return true;
}

// Keys and classes stand in a text again and again.
String TextReader::shared(std::string_view text) {
  constexpr std::size_t kLong = 64;
  if (text.size() > kLong) return String(text);
  auto& known = shared_[text];
  if (known.isNil()) known = String(text);
  return known;
}

bool TextReader::readBool(Index value, bool& into) {
  if (!expect(value, Kind::boolean)) return false;
  into = tree_->boolean(value);
  return true;
}

bool TextReader::readInt64(Index value, std::int64_t& into) {
  if (!expect(value, Kind::number)) return false;
  const auto digits = tree_->text(value);
  const char* const last = digits.data() + digits.size();
  const auto [end, error] = std::from_chars(digits.data(), last, into);
  if (error == std::errc() && end == last) return true;
  return fail(value, fmt::format("{} is no whole number that fits", shown(digits)));
}

bool TextReader::readInt(Index value, std::int32_t& into) {
  using Limits = std::numeric_limits<std::int32_t>;
  std::int64_t wide = 0;
  if (!readInt64(value, wide)) return false;
  if (wide < Limits::min() || wide > Limits::max()) {
    return fail(value, fmt::format("{} does not fit 32 bits", wide));
  }
  into = static_cast<std::int32_t>(wide);
  return true;
}

bool TextReader::readFloat(Index value, float& into) {
  const auto digits = tree_->text(value);
  const char* const last = digits.data() + digits.size();
  if (tree_->kind(value) == Kind::string) {
    constexpr std::string_view kBits = "nan:";
    std::uint32_t bits = 0;
    if (digits == "inf" || digits == "-inf") {
      into = digits == "inf" ? std::numeric_limits<float>::infinity()
                             : -std::numeric_limits<float>::infinity();
      return true;
    }
    if (digits == "nan") {
      into = std::bit_cast<float>(0x7FC00000U);
      return true;
    }
    if (digits.starts_with(kBits) && digits.size() == kBits.size() + 8) {
      const auto [end, error] = std::from_chars(digits.data() + kBits.size(), last, bits, 16);
      if (error == std::errc() && end == last && (bits & 0x7FFFFFFFU) > 0x7F800000U) {
        into = std::bit_cast<float>(bits);
        return true;
      }
    }
    return fail(value, fmt::format("{} is no number; a number, \"inf\", \"-inf\" or \"nan\"",
                                   shown(digits)));
  }
  if (!expect(value, Kind::number)) return false;
  const auto [end, error] = detail::readReal(digits.data(), last, into);
  if (error == std::errc::result_out_of_range) {
    // What is nearer to zero than any number is zero.
    double wide = 0;
    const auto read = detail::readReal(digits.data(), last, wide);
    if (read.ec == std::errc::result_out_of_range) wide = 0;
    const bool isSmall = digits.find("e-") != digits.npos || digits.find("E-") != digits.npos ||
                         (wide > -1 && wide < 1 && read.ec == std::errc());
    if (!isSmall) return fail(value, fmt::format("{} is too large", shown(digits)));
    into = digits.front() == '-' ? -0.0F : 0.0F;
    return true;
  }
  return (error == std::errc() && end == last) || fail(value, "this is no number");
}

bool TextReader::readFloats(Index value, float* into, std::size_t count) {
  if (!expect(value, Kind::array)) return false;
  if (tree_->count(value) != count) {
    return fail(value, fmt::format("{} numbers are expected", count));
  }
  for (const Index element : tree_->children(value)) {
    if (!readFloat(element, *into++)) return false;
  }
  return true;
}

bool TextReader::readColor(Index value, RGBA& into) {
  float components[4];
  if (!readFloats(value, components, 4)) return false;
  into = {components[0], components[1], components[2], components[3]};
  return true;
}

bool TextReader::readCode(Index value, std::string_view one, std::string_view two,
                          std::int32_t& into) {
  if (tree_->kind(value) != Kind::string) return readInt(value, into);
  const auto word = tree_->text(value);
  if (word != one && word != two) {
    return fail(value, fmt::format("{} is neither \"{}\" nor \"{}\"", shown(word), one, two));
  }
  into = word == one ? 1 : 2;
  return true;
}

template <std::size_t count>
bool TextReader::readMembers(Index object, const std::array<std::string_view, count>& names,
                             std::array<Index, count>& members) {
  members.fill(kNone);
  if (!expect(object, Kind::object)) return false;
  for (const Index member : tree_->children(object)) {
    const auto key = tree_->key(member);
    const auto found = std::find(names.begin(), names.end(), key);
    if (found == names.end()) {
      return failFor(member, object,
                     fmt::format("there is no member {}{}", shown(key), nearest(key, names)));
    }
    members[static_cast<std::size_t>(found - names.begin())] = member;
  }
  return true;
}
template bool TextReader::readMembers(Index, const std::array<std::string_view, 2>&,
                                      std::array<Index, 2>&);
template bool TextReader::readMembers(Index, const std::array<std::string_view, 3>&,
                                      std::array<Index, 3>&);
template bool TextReader::readMembers(Index, const std::array<std::string_view, 4>&,
                                      std::array<Index, 4>&);
template bool TextReader::readMembers(Index, const std::array<std::string_view, 5>&,
                                      std::array<Index, 5>&);
template bool TextReader::readMembers(Index, const std::array<std::string_view, 7>&,
                                      std::array<Index, 7>&);

}  // namespace tarnkit::detail
