#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

namespace tarnkit {

/// An immutable set of Unicode characters. Copying shares it; asking costs one look-up; safe on any
/// thread.
class CharacterSet {
 public:
  /// White space and line ends as Unicode defines them, no-break spaces included.
  static const CharacterSet& whitespaceAndNewline();
  /// The decimal digits of every script.
  static const CharacterSet& decimalDigit();
  /// Exactly the characters of the text.
  static CharacterSet charactersInString(std::string_view utf8);

  /// Everything that is not in this set.
  CharacterSet inverted() const;
  bool contains(std::uint32_t codePoint) const noexcept;

 private:
  struct Members;
  explicit CharacterSet(std::shared_ptr<const Members> members) noexcept;

  std::shared_ptr<const Members> members_;
};

}  // namespace tarnkit
