#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarnkit::detail {

/// The order of ids in a text: by what stands before the number at the end, then by the number, so
/// that "node_9" comes before "node_10".
bool isIdBefore(std::string_view a, std::string_view b) noexcept;

/// Of a sequence of different numbers, which of them may stay when the others are told apart: those
/// of a longest part that ascends. One entry for each position.
std::vector<bool> keptInOrder(const std::vector<std::uint32_t>& sequence);

/// The candidate that is most like the word; empty when none is like it.
class NearestName {
 public:
  explicit NearestName(std::string_view wanted);
  void consider(std::string_view candidate);
  /// `; "candidate"?`, or nothing.
  std::string suggestion() const;

 private:
  std::string wanted_;
  std::string best_;
  std::size_t distance_;
};

}  // namespace tarnkit::detail
