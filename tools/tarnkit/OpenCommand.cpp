#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/DocumentInput.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Outline.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"
#include "tools/tarnkit/SeveralFiles.h"
#include "tools/tarnkit/Shapes.h"

namespace tarnkit::tool {

namespace {

struct OpenOptions {
  std::vector<std::string> files;
  DocumentOptions document;
  bool json = false;
};

void open(DocumentOptions options, const std::string& file, bool asJSON) {
  const Progress progress("opening " + file);
  options.file = file;
  const auto input = openDocument("open", options);
  if (!asJSON) {
    writeOutline(*input.document, writeToStandardOutput);
    return;
  }
  requireShape("open", file, *input.document);
  JSONWriter json(writeToStandardOutput);
  writeNode(json, *input.document);
  json.endLine();
  json.flush();
}

}  // namespace

void addOpenCommand(CLI::App& app) {
  auto* command = app.add_subcommand("open", "Open a document and print it");
  const auto options = std::make_shared<OpenOptions>();
  addDocumentFiles(*command, options->files);
  options->document.addCodingTypeTo(*command);
  options->document.addWithoutImagesTo(*command);
  command->add_flag("--json", options->json, "Print the document's shape as JSON");
  command->callback([options] {
    printEach(options->files, options->json,
              [&](const std::string& file) { open(options->document, file, options->json); });
  });
}

}  // namespace tarnkit::tool
