#include "tools/tarnkit/DocumentOutput.h"

#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/propertylist/PropertyListXMLWriter.h"
#include "tarnkit/text/HXTextFile.h"
#include "tools/tarnkit/Output.h"

namespace tarnkit::tool {

namespace {

template <class T>
const T& required(std::string_view what, const std::string& path, const Result<T>& result) {
  if (!result) failWithFile(what, path, result.status());
  return *result;
}

std::vector<std::uint8_t> copyOf(std::string_view text) {
  const ByteSpan bytes = bytesOf(text);
  return {bytes.begin(), bytes.end()};
}

}  // namespace

std::optional<DocumentForm> formOfName(std::string_view path) noexcept {
  if (path.ends_with(".json")) return DocumentForm::text;
  if (path.ends_with(".xml")) return DocumentForm::xml;
  return std::nullopt;
}

std::vector<std::uint8_t> documentBytes(std::string_view what, const std::string& path,
                                        const HXDocument& document, DocumentForm form,
                                        std::int32_t codingType,
                                        const HXTextFile::ImageFiles& imageFiles) {
  if (form == DocumentForm::text) {
    return copyOf(required(what, path, HXTextFile::textWithDocument(document, imageFiles)));
  }
  auto bytes = HXDocumentFile::dataWithDocument(document, codingType);
  required(what, path, bytes);
  if (form == DocumentForm::binary) return *std::move(bytes);
  const auto list = PropertyListReader::read(*bytes);
  return copyOf(required(what, path, PropertyListXMLWriter::write(required(what, path, list))));
}

// An archive never stands in memory as a whole.
void writeDocument(std::string_view what, const std::string& path, const std::string& output,
                   const HXDocument& document, DocumentForm form, std::int32_t codingType,
                   const HXTextFile::ImageFiles& imageFiles) {
  if (form != DocumentForm::binary || output == kStandardStream) {
    writeFile(what, output, documentBytes(what, path, document, form, codingType, imageFiles));
    return;
  }
  const auto status = HXDocumentFile::save(document, output, codingType);
  if (!status) failWithFile(what, status.path().empty() ? path : output, status);
}

}  // namespace tarnkit::tool
