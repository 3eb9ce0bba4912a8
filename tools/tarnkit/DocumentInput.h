#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXNodeReport.h"
#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/text/HXTextFile.h"

namespace CLI {
class App;
}

namespace tarnkit {
class PropertyList;
}

namespace tarnkit::tool {

/// Which document a command is to open: its argument FILE and its option --coding-type.
struct DocumentOptions {
  std::string file;
  std::optional<std::int32_t> codingType;
  /// Where the images' files stand beside a text; empty: in the folder of the file.
  std::string imageFolder;
  /// Whether images whose files are not there are left out, and whether all of those beside are.
  bool mayLackImages = false;
  bool leavesOutImages = false;

  void addTo(CLI::App& command);
  void addCodingTypeTo(CLI::App& command);
  void addWithoutImagesTo(CLI::App& command);
};

/// The argument FILE of a command that takes several documents.
void addDocumentFiles(CLI::App& command, std::vector<std::string>& files);

/// The forms of an editor document as a file.
enum class DocumentForm : std::uint8_t { binary, xml, text };
/// Told by the first bytes.
DocumentForm formOf(ByteSpan bytes) noexcept;

/// A document that a command opened.
struct DocumentInput {
  Ref<HXDocument> document;
  /// The form in which it was read; of a property list that was read already, the binary one.
  DocumentForm form = DocumentForm::binary;
  /// The coding type under which it was read.
  std::int32_t codingType = 0;
  /// The images that stand in files beside a text.
  HXTextFile::ImageFiles imageFiles;
};

/// Opens an editor document out of a file or standard input, an archive or a text, told apart by
/// the first bytes; `what` is the command. Without a coding type it is read as it was written: with
/// the unique keys of the file when it holds any (3), as a text always does, otherwise with fresh
/// ones (0). What nodes lost is handed out in `losses`. Throws CommandFailure.
DocumentInput openDocument(std::string_view what, const DocumentOptions& options,
                           std::vector<HXNodeLosses>* losses = nullptr);

/// The same of the bytes that are in it.
DocumentInput openDocument(std::string_view what, const DocumentOptions& options, ByteSpan bytes,
                           std::vector<HXNodeLosses>* losses = nullptr);

/// The same of a property list that was read already.
DocumentInput openDocument(std::string_view what, const DocumentOptions& options,
                           const PropertyList& list, std::vector<HXNodeLosses>* losses = nullptr);

/// Throws CommandFailure when the document is nested too deep for its shape to be written.
void requireShape(std::string_view what, const std::string& path, const HXDocument& document);

}  // namespace tarnkit::tool
