#include "tools/tarnkit/DocumentInput.h"

#include <CLI/CLI.hpp>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/platform/PropertyListReader.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Shapes.h"

namespace tarnkit::tool {

namespace {

// Only a document that keeps its unique keys has this key. Looking for its characters first saves
// reading most documents twice.
bool keepsUniqueKeys(ByteSpan bytes) {
  constexpr std::string_view kKey = "HXGroup.subnodesByUniqueKey";
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (text.find(kKey) == std::string_view::npos) return false;
  PropertyList list;
  return PropertyListReader::read(bytes, list) && list.keyNamed(kKey) != PropertyList::kNoKey;
}

}  // namespace

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

DocumentInput openDocument(std::string_view what, const DocumentOptions& options, ByteSpan bytes) {
  DocumentInput input;
  input.codingType = options.codingType       ? *options.codingType
                     : keepsUniqueKeys(bytes) ? HXCodingTypeEditorWithKeys
                                              : HXCodingTypeEditor;
  std::string error;
  input.document = HXDocumentFile::document(bytes, input.codingType, error);
  if (!input.document) failWithFile(what, options.file, error);
  return input;
}

DocumentInput openDocument(std::string_view what, const DocumentOptions& options) {
  return openDocument(what, options, readFile(what, options.file));
}

void requireShape(std::string_view what, const std::string& path, const HXDocument& document) {
  try {
    checkShapeDepth(document);
  } catch (const CommandFailure& failure) {
    failWithFile(what, path, failure.what());
  }
}

}  // namespace tarnkit::tool
