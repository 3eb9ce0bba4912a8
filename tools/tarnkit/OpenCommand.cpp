#include <CLI/CLI.hpp>
#include <memory>

#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/DocumentInput.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Outline.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"
#include "tools/tarnkit/Shapes.h"

namespace tarnkit::tool {

namespace {

struct OpenOptions {
  DocumentOptions document;
  bool json = false;
};

void open(const OpenOptions& options) {
  const Progress progress("opening " + options.document.file);
  const auto input = openDocument("open", options.document);
  if (!options.json) {
    writeOutline(*input.document, writeToStandardOutput);
    return;
  }
  requireShape("open", options.document.file, *input.document);
  JSONWriter json(writeToStandardOutput);
  writeNode(json, *input.document);
  json.endLine();
  json.flush();
}

}  // namespace

void addOpenCommand(CLI::App& app) {
  auto* command = app.add_subcommand("open", "Open a document and print it");
  const auto options = std::make_shared<OpenOptions>();
  options->document.addTo(*command);
  options->document.addWithoutImagesTo(*command);
  command->add_flag("--json", options->json, "Print the document's shape as JSON");
  command->callback([options] { open(*options); });
}

}  // namespace tarnkit::tool
