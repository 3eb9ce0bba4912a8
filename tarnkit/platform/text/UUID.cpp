#include "tarnkit/platform/text/UUID.h"

#include <fmt/format.h>

#include <array>
#include <cstdint>
#include <random>

namespace tarnkit {

String newUUIDString() {
  std::random_device source;
  std::array<std::uint32_t, 4> words{source(), source(), source(), source()};
  words[1] = (words[1] & 0xFFFF0FFFU) | 0x00004000U;  // version 4
  words[2] = (words[2] & 0x3FFFFFFFU) | 0x80000000U;  // the RFC's variant
  return String(fmt::format("{:08X}-{:04X}-{:04X}-{:04X}-{:04X}{:08X}", words[0], words[1] >> 16,
                            words[1] & 0xFFFFU, words[2] >> 16, words[2] & 0xFFFFU, words[3]));
}

}  // namespace tarnkit
