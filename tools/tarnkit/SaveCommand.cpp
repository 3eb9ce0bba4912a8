#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>

#include "tarnkit/model/HXDocumentFile.h"
#include "tools/tarnkit/DocumentInput.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"

namespace tarnkit::tool {

namespace {

struct SaveOptions {
  DocumentOptions document;
  std::string output;
  std::optional<std::int32_t> to;
};

void save(const SaveOptions& options) {
  const Progress progress("saving " + options.output);
  const auto input = openDocument("save", options.document);
  const auto bytes =
      HXDocumentFile::dataWithDocument(*input.document, options.to.value_or(input.codingType));
  if (!bytes) failWithFile("save", options.document.file, bytes.status());
  writeFile("save", options.output, *bytes);
}

}  // namespace

void addSaveCommand(CLI::App& app) {
  auto* command = app.add_subcommand("save", "Open a document and write it again");
  const auto options = std::make_shared<SaveOptions>();
  options->document.addTo(*command);
  command->add_option("-o,--output", options->output, "The file to write; - for standard output")
      ->required()
      ->type_name("OUT");
  command
      ->add_option("--to", options->to,
                   "Write as 0 or 1: without unique keys; 3: with them (default: as it was read)")
      ->type_name("N");
  command->callback([options] { save(*options); });
}

}  // namespace tarnkit::tool
