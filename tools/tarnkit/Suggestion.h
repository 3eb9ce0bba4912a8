#pragma once

#include <span>
#include <string>
#include <string_view>

namespace tarnkit::tool {

/// The candidate that was probably meant by a word that is none of them: one that differs by a slip
/// of the keyboard or two, by case, or that the word begins. "" where none is near. Costs a table
/// of the two lengths for each candidate.
std::string_view nearestName(std::string_view word, std::span<const std::string_view> candidates);

/// `; did you mean "NAME"?`, to be put behind a message; "" where no candidate is near.
std::string didYouMean(std::string_view word, std::span<const std::string_view> candidates);

}  // namespace tarnkit::tool
