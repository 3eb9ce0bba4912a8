#include "tools/tarnkit/DocumentInput.h"

#include <CLI/CLI.hpp>

#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Shapes.h"

namespace tarnkit::tool {

void DocumentOptions::addTo(CLI::App& command) {
  command.add_option("FILE", file, "An editor document; - for standard input")
      ->required()
      ->type_name("");
  command
      .add_option("--coding-type", codingType,
                  "Read as 0 or 1: draw fresh unique keys; 3: keep those of the file (default: as "
                  "it was written)")
      ->type_name("N");
}

DocumentInput openDocument(std::string_view what, const DocumentOptions& options,
                           const PropertyList& list, std::vector<HXNodeLosses>* losses) {
  DocumentInput input;
  input.codingType = options.codingType ? *options.codingType : HXDocumentFile::codingTypeOf(list);
  auto document = HXDocumentFile::document(list, input.codingType, losses);
  if (!document) failWithFile(what, options.file, document.status());
  input.document = *std::move(document);
  return input;
}

DocumentInput openDocument(std::string_view what, const DocumentOptions& options,
                           std::vector<HXNodeLosses>* losses) {
  const auto bytes = readFile(what, options.file);
  const auto list = PropertyListReader::read(bytes);
  if (!list) failWithFile(what, options.file, list.status());
  return openDocument(what, options, *list, losses);
}

void requireShape(std::string_view what, const std::string& path, const HXDocument& document) {
  try {
    checkShapeDepth(document);
  } catch (const CommandFailure& failure) {
    failWithFile(what, path, failure.what());
  }
}

}  // namespace tarnkit::tool
