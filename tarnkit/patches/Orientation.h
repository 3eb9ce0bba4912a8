#pragma once

#include <cstdint>

namespace tarnkit {

/// Whether a port receives or sends. Carried as a plain 32-bit integer, because archives may hold
/// other values, which match neither.
inline constexpr std::int32_t HXOrientationInput = 1;
inline constexpr std::int32_t HXOrientationOutput = 2;

/// How many connections a port takes. Any other value takes none.
inline constexpr std::int32_t HXConnectionRelationshipMany = 1;
inline constexpr std::int32_t HXConnectionRelationshipOne = 2;

}  // namespace tarnkit
