#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXNodeReport.h"

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

  void addTo(CLI::App& command);
};

/// A document that a command opened.
struct DocumentInput {
  Ref<HXDocument> document;
  /// The coding type under which it was read.
  std::int32_t codingType = 0;
};

/// Opens an editor document out of a file or standard input; `what` is the command. Without a
/// coding type it is read as it was written: with the unique keys of the file when it holds any
/// (3), otherwise with fresh ones (0). What nodes lost is handed out in `losses`. Throws
/// CommandFailure.
DocumentInput openDocument(std::string_view what, const DocumentOptions& options,
                           std::vector<HXNodeLosses>* losses = nullptr);

/// The same of a property list that was read already.
DocumentInput openDocument(std::string_view what, const DocumentOptions& options,
                           const PropertyList& list, std::vector<HXNodeLosses>* losses = nullptr);

/// Throws CommandFailure when the document is nested too deep for its shape to be written.
void requireShape(std::string_view what, const std::string& path, const HXDocument& document);

}  // namespace tarnkit::tool
