#pragma once

#include <cstdint>
#include <string_view>

#include "tarnkit/platform/collections/KeyedHash.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit::detail {

/// A hash of several things in their order, which nobody outside the process can predict: what is
/// compared may come out of a file that was made to have it collide.
class StateHash {
 public:
  StateHash() noexcept : value_(hashKeys().words[0]) {}

  void add(std::uint64_t value) noexcept {
    value_ = mixed(value_ ^ mixed(value + 0x9E3779B97F4A7C15ULL));
  }
  void add(std::string_view text) noexcept { add(keyedHash(text)); }
  void add(const String& text) noexcept {
    add(text.isNil() ? std::uint64_t{1} : keyedHash(text.view()));
  }
  /// A port as a state names it: its node, how often it is published, its key.
  template <class Port>
  void addPort(const Port& port) noexcept {
    add(static_cast<std::uint64_t>(port.node));
    add(std::uint64_t{port.level});
    add(port.key);
  }
  std::uint64_t value() const noexcept { return value_; }

  static std::uint64_t mixed(std::uint64_t value) noexcept {
    value ^= value >> 30;
    value *= 0xBF58476D1CE4E5B9ULL;
    value ^= value >> 27;
    value *= 0x94D049BB133111EBULL;
    return value ^ (value >> 31);
  }

 private:
  std::uint64_t value_;
};

struct PortHash {
  template <class Port>
  std::size_t operator()(const Port& port) const noexcept {
    StateHash hash;
    hash.addPort(port);
    return hash.value();
  }
};

struct WireHash {
  template <class Connection>
  std::size_t operator()(const Connection& wire) const noexcept {
    StateHash hash;
    for (const auto* port : {&wire.output, &wire.input, &wire.displayOutput, &wire.displayInput}) {
      hash.addPort(*port);
    }
    return hash.value();
  }
};

}  // namespace tarnkit::detail
