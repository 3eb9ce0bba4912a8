#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>

#include "tarnkit/archive/HXArchiveReader.h"
#include "tarnkit/archive/HXArchiveText.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tarnkit/text/HXTextFile.h"
#include "tools/tarnkit/DocumentInput.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Outline.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"
#include "tools/tarnkit/Shapes.h"

namespace tarnkit::tool {

namespace {

struct InspectOptions {
  std::string file;
  bool json = false;
};

void printArchive(const HXArchiveReader& archive, bool asJson) {
  const auto print = [](std::string_view text) { writeToStandardOutput(text); };
  if (asJson) {
    HXArchiveText::writeJSON(archive, print);
  } else {
    HXArchiveText::writeIndented(archive, print);
  }
}

void printDocument(const DocumentInput& input, const InspectOptions& options) {
  if (!options.json) {
    writeToStandardOutput("editor document, ");
    writeOutline(*input.document, writeToStandardOutput);
    return;
  }
  requireShape("inspect", options.file, *input.document);
  JSONWriter json(writeToStandardOutput);
  json.beginObject().key("kind").value("editorDocument").key("document");
  writeNode(json, *input.document);
  json.endObject().endLine();
  json.flush();
}

void inspect(const InspectOptions& options) {
  const Progress progress("inspecting " + options.file);
  const auto bytes = readFile("inspect", options.file);
  DocumentOptions document;
  document.file = options.file;
  if (HXTextFile::isText(bytes)) {
    return printDocument(openDocument("inspect", document, bytes), options);
  }
  HXArchiveReader archive;
  if (archive.open(bytes)) return printArchive(archive, options.json);
  const auto list = PropertyListReader::read(bytes);
  if (!list) failWithFile("inspect", options.file, list.status());
  if (HXArchiveReader::sniff(*list) != HXArchiveKind::editorDocument) {
    failWithFile("inspect", options.file,
                 "it is no editor document, device graph or image archive");
  }
  printDocument(openDocument("inspect", document, *list), options);
}

}  // namespace

void addInspectCommand(CLI::App& app) {
  auto* command = app.add_subcommand("inspect", "Tell what a file is and print it");
  const auto options = std::make_shared<InspectOptions>();
  command
      ->add_option("FILE", options->file,
                   "An editor document, a device graph or an image archive; - for standard input")
      ->required()
      ->type_name("");
  command->add_flag("--json", options->json, "Print it as JSON");
  command->callback([options] { inspect(*options); });
}

}  // namespace tarnkit::tool
