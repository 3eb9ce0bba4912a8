#include "tarnkit/platform/text/Base64.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace tarnkit::detail {

void appendBase64(std::string& out, ByteSpan bytes) {
  constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  out.reserve(out.size() + (bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t group = std::uint32_t{bytes[i]} << 16;
    if (count > 1) group |= std::uint32_t{bytes[i + 1]} << 8;
    if (count > 2) group |= bytes[i + 2];
    for (std::size_t j = 0; j < 4; ++j) {
      out += j <= count ? kAlphabet[group >> (18 - 6 * j) & 63] : '=';
    }
  }
}

}  // namespace tarnkit::detail
