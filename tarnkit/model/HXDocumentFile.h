#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXNodeReport.h"
#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit {

class PropertyList;

/// What becomes of images whose key cannot name a file; a document from elsewhere may hold any key.
enum class HXUnnamableImages { refuse, leaveOut };

/// Documents as bytes and as files. Nothing here throws for bad input, and a failure leaves no
/// half-made document behind. For one thread.
class HXDocumentFile {
 public:
  /// A document in the editor's format. `codingType` is that under which it was written: 0 and 1
  /// draw fresh unique keys, 3 keeps those of the file. A failure for anything that is not a
  /// readable document; the bytes need not be trusted. What a document holds and this library
  /// cannot keep (under another type than its own: its nodes) is told in the log, one line each.
  /// What nodes lost of that because their patch has changed is handed out in `losses`, too.
  static Result<Ref<HXDocument>> document(ByteSpan bytes, std::int32_t codingType,
                                          std::vector<HXNodeLosses>* losses = nullptr);
  /// The same of a property list that was read already, whose bytes are still there.
  static Result<Ref<HXDocument>> document(const PropertyList& list, std::int32_t codingType,
                                          std::vector<HXNodeLosses>* losses = nullptr);
  /// The coding type under which a document was written, as far as that matters to a reader: 3 when
  /// it holds unique keys, otherwise 0. Costs a few look-ups.
  static std::int32_t codingTypeOf(const PropertyList& list);
  /// The document in the editor's format; a failure under a coding type that is not an editor's.
  static Result<std::vector<std::uint8_t>> dataWithDocument(const HXDocument& document,
                                                            std::int32_t codingType);
  /// The device graph of the document; a failure when something in it cannot be archived.
  static Result<std::vector<std::uint8_t>> deviceGraph(const HXDocument& document);

  /// The same with files. A file is written whole or not at all.
  static Result<Ref<HXDocument>> open(const std::string& path, std::int32_t codingType,
                                      std::vector<HXNodeLosses>* losses = nullptr);
  static Status save(const HXDocument& document, const std::string& path, std::int32_t codingType);
  static Status send(const HXDocument& document, const std::string& path);
  /// Writes one archive for each image, "KEY.plist", into the directory, which is made at need. The
  /// keys are returned in the order of sending, ascending. A key that cannot name a file (a
  /// document from elsewhere may hold any) is refused before anything is written.
  static Result<std::vector<String>> sendImages(const HXDocument& document,
                                                const std::string& directory);
  /// The same with the pictures themselves, "KEY.png". An image without a picture is left out.
  static Result<std::vector<String>> saveImages(
      const HXDocument& document, const std::string& directory,
      HXUnnamableImages unnamable = HXUnnamableImages::refuse);
};

}  // namespace tarnkit
