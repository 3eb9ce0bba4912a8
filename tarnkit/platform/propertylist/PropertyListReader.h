#pragma once

#include <cstddef>
#include <string>

#include "tarnkit/platform/propertylist/PropertyList.h"

namespace tarnkit {

/// Reads property lists, in the binary or the XML form, from bytes that need not be trusted.
///
/// Every offset, count, width and text is checked before it is used; nothing malformed is accepted
/// and nothing is thrown. Work and memory are linear in the file: every object is parsed once, and
/// objects of a binary file may overlap, but come together to at most the space that they share and
/// `kOverlapAllowance`. There is no recursion. Threads may read at the same time.
class PropertyListReader {
 public:
  static constexpr std::size_t kMaximumFileSize = 0x7FFFFFFF;
  static constexpr std::size_t kOverlapAllowance = 65536;
  /// How deep the elements of an XML list may be nested. Binary lists have no such limit.
  static constexpr std::size_t kMaximumXMLDepth = 200000;

  /// Whether the bytes begin as a binary property list does.
  static bool isBinary(ByteSpan bytes) noexcept;

  /// Reads the list into `into`, which points into `bytes` afterwards. On failure `into` is empty
  /// and `error`, if given, gets one sentence.
  static bool read(ByteSpan bytes, PropertyList& into, std::string* error = nullptr);
};

}  // namespace tarnkit
