#include "tarnkit/foundation/MD5.h"

#include <openssl/evp.h>

#include <array>
#include <string_view>

namespace tarnkit {

String md5StringRepresentation(ByteSpan bytes) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int size = 0;
  if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &size, EVP_md5(), nullptr) != 1) {
    return nullptr;
  }
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::array<char, 2 * EVP_MAX_MD_SIZE> text{};
  for (unsigned int i = 0; i < size; ++i) {
    text[2 * i] = kDigits[digest[i] >> 4];
    text[2 * i + 1] = kDigits[digest[i] & 15];
  }
  return String(std::string_view(text.data(), 2 * size));
}

}  // namespace tarnkit
