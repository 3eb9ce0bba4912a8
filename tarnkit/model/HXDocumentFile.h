#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/platform/objects/Data.h"

namespace tarnkit {

class PropertyList;

/// Documents as bytes and as files. Nothing here throws for bad input: a failure is a null or false
/// result with the reason, and leaves no half-made document behind. For one thread.
class HXDocumentFile {
 public:
  /// A document in the editor's format. `codingType` is that under which it was written: 0 and 1
  /// draw fresh unique keys, 3 keeps those of the file. Null, with the reason, for anything that is
  /// not a readable document; the bytes need not be trusted. What a document holds and this library
  /// cannot keep (under another type than its own: its nodes) is told in the log, one line each.
  static Ref<HXDocument> document(ByteSpan bytes, std::int32_t codingType, std::string& error);
  /// The same of a property list that was read already, whose bytes are still there.
  static Ref<HXDocument> document(const PropertyList& list, std::int32_t codingType,
                                  std::string& error);
  /// The coding type under which a document was written, as far as that matters to a reader: 3 when
  /// it holds unique keys, otherwise 0. Costs a few look-ups.
  static std::int32_t codingTypeOf(const PropertyList& list);
  /// The document in the editor's format; empty, with the reason, under a coding type that is not
  /// an editor's.
  static std::vector<std::uint8_t> dataWithDocument(const HXDocument& document,
                                                    std::int32_t codingType, std::string& error);
  /// The device graph of the document.
  static std::vector<std::uint8_t> deviceGraph(const HXDocument& document);

  /// The same with files, named in the reason. A file is written whole or not at all.
  static Ref<HXDocument> open(const std::string& path, std::int32_t codingType, std::string& error);
  static bool save(const HXDocument& document, const std::string& path, std::int32_t codingType,
                   std::string& error);
  static bool send(const HXDocument& document, const std::string& path, std::string& error);
  /// Writes one archive for each image, "KEY.plist", into the directory, which is made at need. The
  /// keys are returned in the order of sending, ascending. A key that cannot name a file (a
  /// document from elsewhere may hold any) is refused before anything is written.
  static bool sendImages(const HXDocument& document, const std::string& directory,
                         std::vector<String>& keys, std::string& error);
};

}  // namespace tarnkit
