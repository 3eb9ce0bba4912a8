#pragma once

#include <cstddef>

#include "tarnkit/platform/propertylist/PropertyList.h"
#include "tarnkit/platform/system/Result.h"

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

  /// The list, which points into `bytes`.
  static Result<PropertyList> read(ByteSpan bytes);
};

}  // namespace tarnkit
