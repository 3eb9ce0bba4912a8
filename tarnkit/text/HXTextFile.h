#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXNodeReport.h"
#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit {

/// Documents as text: JSON in UTF-8, for repositories, for people and for scripts. What every
/// member means stands in docs/formats/text.md, what is well formed in docs/document.schema.json.
///
/// The text holds whatever the editor's format holds under the coding type that keeps unique keys:
/// a document that was opened from either is the same, byte for byte, when it is saved under that
/// type. What equals the definition's default is left out, and nothing depends on the order in
/// which things were made unless the document itself keeps that order; so an edit changes the lines
/// that are about it. Reading asks less than writing gives: patches, ports and parameters may be
/// called by the names that people see, and whatever has a default may be missing.
///
/// Nothing here throws for bad input, and a failure leaves no half-made document behind; it says in
/// which line, at which path and what would be right. Work is linear in the text, but for sorting.
/// For one thread.
class HXTextFile {
 public:
  /// Image files beside a text: by the keys of the images in the document's store, their paths from
  /// the text's folder downward.
  using ImageFiles = std::unordered_map<String, std::string>;
  /// What becomes of an image whose file is not there.
  enum class AbsentImages : std::uint8_t {
    refused,  // with its text
    leftOut,  // it has no picture, for whoever only looks at the document
  };

  /// Whether the bytes begin as a text does, and no other form of a document: with a "{", after
  /// white space.
  static bool isText(ByteSpan bytes) noexcept;

  /// The document as text, its images within, but for those that stand in files already. A failure
  /// of a document that no file can hold: with nodes of a class of the host's, or an image that
  /// cannot be written.
  static Result<std::string> textWithDocument(const HXDocument& document,
                                              const ImageFiles& files = {});
  /// A document out of a text that need not be trusted. The unique keys are those of the text;
  /// under the coding types 0 and 1 fresh ones are drawn instead. Image files beside the text are
  /// read from below `folder`, and told of in `files`; with an empty one none is there. `losses` as
  /// of `HXDocumentFile::document`.
  static Result<Ref<HXDocument>> document(std::string_view text,
                                          std::int32_t codingType = HXCodingTypeEditorWithKeys,
                                          const std::string& folder = {},
                                          std::vector<HXNodeLosses>* losses = nullptr,
                                          ImageFiles* files = nullptr,
                                          AbsentImages absent = AbsentImages::refused);

  /// The same with files. A file is written whole or not at all. `imageFolder` that is not empty
  /// takes the images, as "KEY.png" each: a folder below the file's own, which is made at need, and
  /// written first. An image whose key cannot name a file stays within the text.
  static Result<Ref<HXDocument>> open(const std::string& path,
                                      std::int32_t codingType = HXCodingTypeEditorWithKeys,
                                      std::vector<HXNodeLosses>* losses = nullptr);
  static Status save(const HXDocument& document, const std::string& path,
                     const std::string& imageFolder = {});
};

}  // namespace tarnkit
