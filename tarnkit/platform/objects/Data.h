#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "tarnkit/platform/objects/Object.h"

namespace tarnkit {

using ByteSpan = std::span<const std::uint8_t>;

inline ByteSpan bytesOf(std::string_view text) noexcept {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// A growable byte buffer. Equal when the bytes are. One thread at a time may change it.
class Data final : public Object {
  TARNKIT_CLASS
 public:
  Data() = default;
  explicit Data(std::vector<std::uint8_t> bytes) noexcept : bytes_(std::move(bytes)) {}
  explicit Data(ByteSpan bytes) : bytes_(bytes.begin(), bytes.end()) {}

  ByteSpan bytes() const noexcept { return bytes_; }
  std::size_t size() const noexcept { return bytes_.size(); }
  std::vector<std::uint8_t>& mutableBytes() noexcept { return bytes_; }
  /// Replaces the whole contents.
  void setBytes(std::vector<std::uint8_t> bytes) noexcept { bytes_ = std::move(bytes); }

  bool isEqual(const Object& other) const override;
  std::uint64_t hash() const override;
  CodingKind codingKind() const noexcept override { return CodingKind::data; }

 private:
  std::vector<std::uint8_t> bytes_;
};

}  // namespace tarnkit
