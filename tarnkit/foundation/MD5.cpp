#include "tarnkit/foundation/MD5.h"

#include <md5.h>

#include <array>
#include <string_view>

namespace tarnkit {

String md5StringRepresentation(ByteSpan bytes) {
  std::array<std::uint8_t, MD5_DIGEST_LENGTH> digest{};
  MD5_CTX context;
  MD5Init(&context);
  MD5Update(&context, bytes.data(), bytes.size());
  MD5Final(digest.data(), &context);
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::array<char, 2 * MD5_DIGEST_LENGTH> text{};
  for (std::size_t i = 0; i < digest.size(); ++i) {
    text[2 * i] = kDigits[digest[i] >> 4];
    text[2 * i + 1] = kDigits[digest[i] & 15];
  }
  return String(std::string_view(text.data(), text.size()));
}

}  // namespace tarnkit
