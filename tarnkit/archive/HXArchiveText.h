#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tarnkit/platform/objects/FunctionRef.h"

namespace tarnkit {

class HXArchiveReader;

/// Archives as text for people and tools. Both forms show the tree from the root with references
/// resolved; an object that is met again is only named, an absent one is shown as nil. Linear in
/// the archive, and however deep it is nested nothing recurses. The text is handed out in pieces,
/// so that its length costs no memory.
class HXArchiveText {
 public:
  using Sink = FunctionRef<void(std::string_view)>;

  /// How many levels the indented form tells apart; what lies deeper stands at the last one.
  static constexpr std::size_t kMaximumIndentation = 40;
  /// A string of more bytes than this that stands at several places of the file is written whole
  /// once and then by its beginning and "…".
  static constexpr std::size_t kLongText = 256;

  /// One line an entry:
  ///
  ///     device graph, version 1.2.0, 12 objects
  ///     $object-0 PMGraph
  ///       PMNode.uniqueKey: "node_0"
  ///       PMNode.subnodeGroup: $object-1 PMGroup
  static void writeIndented(const HXArchiveReader& archive, Sink sink);
  static std::string indented(const HXArchiveReader& archive);

  /// {"kind":"deviceGraph"|"imageArchive","version":…,"objects":N,"root":VALUE}. An object is
  /// {"id":…,"class":…,"values":{…}}, a map the same without "class", a list
  /// {"id":…,"elements":[…]}; what stands inline has no "id". An object met again is
  /// {"reference":ID}, an absent one null, bytes are {"data":COUNT}, an inline container met again
  /// is {"repeated":true}. Infinite and not-a-number reals are the strings "inf", "-inf", "nan".
  static void writeJSON(const HXArchiveReader& archive, Sink sink);
  static std::string json(const HXArchiveReader& archive);
};

}  // namespace tarnkit
