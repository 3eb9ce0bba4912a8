#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tarnkit/archive/HXArchiveReader.h"
#include "tarnkit/archive/HXArchiveText.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tarnkit/text/HXTextFile.h"
#include "tools/tarnkit/DocumentInput.h"
#include "tools/tarnkit/FileKind.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Outline.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"
#include "tools/tarnkit/SeveralFiles.h"
#include "tools/tarnkit/Shapes.h"

namespace tarnkit::tool {

namespace {

struct InspectOptions {
  std::vector<std::string> files;
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

void printDocument(const DocumentInput& input, const std::string& file, bool asJSON) {
  if (!asJSON) {
    writeToStandardOutput("editor document, ");
    writeOutline(*input.document, writeToStandardOutput);
    return;
  }
  requireShape("inspect", file, *input.document);
  JSONWriter json(writeToStandardOutput);
  json.beginObject().key("kind").value("editorDocument").key("document");
  writeNode(json, *input.document);
  json.endObject().endLine();
  json.flush();
}

void inspect(const std::string& file, bool asJSON) {
  const Progress progress("inspecting " + file);
  const auto bytes = readFile("inspect", file);
  DocumentOptions document;
  document.file = file;
  if (HXTextFile::isText(bytes)) {
    return printDocument(openDocument("inspect", document, bytes), file, asJSON);
  }
  auto list = PropertyListReader::read(bytes);
  if (!list) {
    const std::string other = describeOther(fileKindOf(bytes));
    if (!other.empty()) failWithFile("inspect", file, other);
    failWithFile("inspect", file, list.status());
  }
  if (HXArchiveReader::sniff(*list) == HXArchiveKind::editorDocument) {
    return printDocument(openDocument("inspect", document, *list), file, asJSON);
  }
  HXArchiveReader archive;
  if (!archive.open(*std::move(list))) {
    failWithFile("inspect", file, "it is no editor document, device graph or image archive");
  }
  printArchive(archive, asJSON);
}

}  // namespace

void addInspectCommand(CLI::App& app) {
  auto* command = app.add_subcommand("inspect", "Tell what a file is and print it");
  const auto options = std::make_shared<InspectOptions>();
  command
      ->add_option("FILE", options->files,
                   "Editor documents, device graphs, image archives; - for standard input")
      ->required()
      ->type_name("");
  command->add_flag("--json", options->json, "Print it as JSON");
  command->callback([options] {
    printEach(options->files, options->json,
              [&](const std::string& file) { inspect(file, options->json); });
  });
}

}  // namespace tarnkit::tool
