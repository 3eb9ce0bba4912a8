#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tarnkit::fuzz {

/// A session of random edits with a history, as bytes say: the document is undone and redone in
/// between and, in the end, back to its beginning and forward again. After every step it must be
/// byte for byte what it was at that point, and fit together.
///
/// Returns what is wrong; nothing when all is well.
std::vector<std::string> faultsOfHistorySession(const std::uint8_t* bytes, std::size_t size);

}  // namespace tarnkit::fuzz
