#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tarnkit/model/HXDocument.h"

namespace tarnkit::tool {

/// A document that a command opened.
struct DocumentInput {
  Ref<HXDocument> document;
  /// The coding type under which it was read.
  std::int32_t codingType = 0;
};

/// Opens an editor document out of a file or standard input; `what` is the command. Without a
/// coding type it is read as it was written: with the unique keys of the file when it holds any
/// (3), otherwise with fresh ones (0). Throws CommandFailure.
DocumentInput openDocument(std::string_view what, const std::string& path,
                           std::optional<std::int32_t> codingType);

/// The same of bytes that were read already.
DocumentInput openDocument(std::string_view what, const std::string& path, ByteSpan bytes,
                           std::optional<std::int32_t> codingType);

}  // namespace tarnkit::tool
