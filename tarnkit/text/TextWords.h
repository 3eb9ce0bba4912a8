#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>

#include "tarnkit/platform/text/UTF8.h"
#include "tarnkit/text/TextOrder.h"

/// How the reader of texts shows the words of a text in its sentences.
namespace tarnkit::detail {

/// In quotation marks, as far as `kShownWord`.
inline constexpr std::size_t kShownWord = 80;
inline std::string shown(std::string_view word) {
  const auto beginning = beginningOf(word, kShownWord);
  return fmt::format("\"{}{}\"", beginning, beginning.size() < word.size() ? "…" : "");
}

/// The end of a sentence that suggests the nearest of the names; empty where none is near.
template <class Names>
std::string nearest(std::string_view word, const Names& names) {
  NearestName nearest(word);
  for (const auto& name : names) nearest.consider(name);
  return nearest.suggestion();
}

}  // namespace tarnkit::detail
