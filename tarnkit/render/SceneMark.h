#pragma once

#include <cstdint>

namespace tarnkit::detail {

/// What has become of a thing that is drawn, where two documents are compared.
enum class SceneMark : std::uint8_t { none, added, removed, changed };

/// "added", "removed", "changed"; "" for none.
constexpr const char* nameOf(SceneMark mark) noexcept {
  constexpr const char* kNames[] = {"", "added", "removed", "changed"};
  return kNames[static_cast<std::uint8_t>(mark)];
}

}  // namespace tarnkit::detail
