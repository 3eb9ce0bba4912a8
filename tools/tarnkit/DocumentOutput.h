#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "tarnkit/model/HXDocument.h"
#include "tools/tarnkit/DocumentInput.h"

namespace tarnkit::tool {

/// The form that the ending of a file's name asks for: .json a text, .xml the XML list; none for
/// another one.
std::optional<DocumentForm> formOfName(std::string_view path) noexcept;

/// The document as a file of that form; of an archive under that coding type. `path` is the
/// document's file, for the sentence. A text holds the images that stand in no file beside it.
/// Throws CommandFailure.
std::vector<std::uint8_t> documentBytes(std::string_view what, const std::string& path,
                                        const HXDocument& document, DocumentForm form,
                                        std::int32_t codingType,
                                        const HXTextFile::ImageFiles& imageFiles = {});
/// The same into a file, or to standard output.
void writeDocument(std::string_view what, const std::string& path, const std::string& output,
                   const HXDocument& document, DocumentForm form, std::int32_t codingType,
                   const HXTextFile::ImageFiles& imageFiles = {});

}  // namespace tarnkit::tool
