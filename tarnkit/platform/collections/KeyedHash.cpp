#include "tarnkit/platform/collections/KeyedHash.h"

#include <random>

namespace tarnkit::detail {

const HashKeys& hashKeys() noexcept {
  static const HashKeys keys = [] {
    HashKeys fresh{};
    try {
      std::random_device source;
      for (auto& word : fresh.words) {
        word = (std::uint64_t{source()} << 32) ^ source();
      }
    } catch (...) {  // no source of randomness: addresses and a fixed pattern must do
      for (auto& word : fresh.words) word = reinterpret_cast<std::uintptr_t>(&word);
    }
    for (auto& word : fresh.words) word = (word ^ 0xA0761D6478BD642FULL) | 1;
    return fresh;
  }();
  return keys;
}

}  // namespace tarnkit::detail
