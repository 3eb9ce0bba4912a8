#include <CLI/CLI.hpp>
#include <memory>

#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/DocumentInput.h"
#include "tools/tarnkit/JsonWriter.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Outline.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"
#include "tools/tarnkit/Shapes.h"

namespace tarnkit::tool {

namespace {

struct OpenOptions {
  std::string file;
  std::optional<std::int32_t> codingType;
  bool json = false;
};

void open(const OpenOptions& options) {
  const Progress progress("opening " + options.file);
  const auto input = openDocument("open", options.file, options.codingType);
  if (!options.json) {
    writeOutline(*input.document, writeToStandardOutput);
    return;
  }
  try {
    checkShapeDepth(*input.document);
  } catch (const CommandFailure& failure) {
    throw CommandFailure("open", options.file, failure.what());
  }
  JsonWriter json(writeToStandardOutput);
  writeNode(json, *input.document);
  json.endLine();
  json.flush();
}

}  // namespace

void addOpenCommand(CLI::App& app) {
  auto* command = app.add_subcommand("open", "Open a document and print it");
  const auto options = std::make_shared<OpenOptions>();
  command->add_option("FILE", options->file, "An editor document; - for standard input")
      ->required()
      ->type_name("");
  command
      ->add_option("--coding-type", options->codingType,
                   "0 or 1: draw fresh unique keys; 3: keep those of the file")
      ->type_name("N");
  command->add_flag("--json", options->json, "Print the document's shape as JSON");
  command->callback([options] { open(*options); });
}

}  // namespace tarnkit::tool
