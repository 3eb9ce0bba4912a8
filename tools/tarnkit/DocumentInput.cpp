#include "tools/tarnkit/DocumentInput.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/system/File.h"
#include "tarnkit/text/HXTextFile.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/FileKind.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Shapes.h"

namespace tarnkit::tool {

void DocumentOptions::addTo(CLI::App& command) {
  command.add_option("FILE", file, "An editor document; - for standard input")
      ->required()
      ->type_name("");
  addCodingTypeTo(command);
}

void addDocumentFiles(CLI::App& command, std::vector<std::string>& files) {
  command.add_option("FILE", files, "Editor documents; - for standard input")
      ->required()
      ->type_name("");
}

void DocumentOptions::addCodingTypeTo(CLI::App& command) {
  command
      .add_option("--coding-type", codingType,
                  "Read as 0 or 1: draw fresh unique keys; 3: keep those of the file (default: as "
                  "it was written)")
      ->type_name("N");
}

void DocumentOptions::addWithoutImagesTo(CLI::App& command) {
  command.add_flag("--without-images", leavesOutImages,
                   "Leave out the images that stand in files beside a text");
}

namespace {

// Empty: none is read.
std::string imageFolderOf(const DocumentOptions& options) {
  if (options.leavesOutImages) return {};
  if (!options.imageFolder.empty()) return options.imageFolder;
  return options.file == kStandardStream ? std::string() : File::directoryOf(options.file);
}

void refuseOther(std::string_view what, const std::string& path, FileKind kind) {
  const bool isDocument = kind == FileKind::document || kind == FileKind::textDocument;
  if (!isDocument && kind != FileKind::unknown) failWithFile(what, path, describeOther(kind));
}

}  // namespace

DocumentInput openDocument(std::string_view what, const DocumentOptions& options,
                           const PropertyList& list, std::vector<HXNodeLosses>* losses) {
  refuseOther(what, options.file, fileKindOf(HXArchiveReader::sniff(list)));
  DocumentInput input;
  input.codingType = options.codingType ? *options.codingType : HXDocumentFile::codingTypeOf(list);
  auto document = HXDocumentFile::document(list, input.codingType, losses);
  if (!document) failWithFile(what, options.file, document.status());
  input.document = *std::move(document);
  return input;
}

DocumentInput openDocument(std::string_view what, const DocumentOptions& options,
                           std::vector<HXNodeLosses>* losses) {
  return openDocument(what, options, readFile(what, options.file), losses);
}

DocumentForm formOf(ByteSpan bytes) noexcept {
  constexpr std::string_view kBinary = "bplist";
  if (HXTextFile::isText(bytes)) return DocumentForm::text;
  const bool isBinary =
      bytes.size() >= kBinary.size() && std::equal(kBinary.begin(), kBinary.end(), bytes.begin());
  return isBinary ? DocumentForm::binary : DocumentForm::xml;
}

DocumentInput openDocument(std::string_view what, const DocumentOptions& options, ByteSpan bytes,
                           std::vector<HXNodeLosses>* losses) {
  const DocumentForm form = formOf(bytes);
  if (form == DocumentForm::text) {
    DocumentInput input;
    input.form = form;
    input.codingType = options.codingType.value_or(HXCodingTypeEditorWithKeys);
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const bool mayLackImages = options.mayLackImages || options.leavesOutImages;
    auto document = HXTextFile::document(
        text, input.codingType, imageFolderOf(options), losses, &input.imageFiles,
        mayLackImages ? HXTextFile::AbsentImages::leftOut : HXTextFile::AbsentImages::refused);
    if (!document) {
      refuseOther(what, options.file, fileKindOf(bytes));
      failWithFile(what, options.file, document.status());
    }
    input.document = *std::move(document);
    return input;
  }
  const auto list = PropertyListReader::read(bytes);
  if (!list) {
    refuseOther(what, options.file, fileKindOf(bytes));
    failWithFile(what, options.file, list.status());
  }
  auto input = openDocument(what, options, *list, losses);
  input.form = form;
  return input;
}

void requireShape(std::string_view what, const std::string& path, const HXDocument& document) {
  try {
    checkShapeDepth(document);
  } catch (const CommandFailure& failure) {
    failWithFile(what, path, failure.what());
  }
}

}  // namespace tarnkit::tool
