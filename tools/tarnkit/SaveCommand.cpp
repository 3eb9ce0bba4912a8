#include <CLI/CLI.hpp>
#include <memory>

#include "tarnkit/model/HXDocumentFile.h"
#include "tools/tarnkit/DocumentInput.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"

namespace tarnkit::tool {

namespace {

struct SaveOptions {
  std::string file;
  std::string output;
  std::optional<std::int32_t> codingType;
  std::optional<std::int32_t> to;
};

void save(const SaveOptions& options) {
  const Progress progress("saving " + options.output);
  const auto input = openDocument("save", options.file, options.codingType);
  std::string error;
  const auto bytes = HXDocumentFile::dataWithDocument(*input.document,
                                                      options.to.value_or(input.codingType), error);
  if (bytes.empty()) failWithFile("save", options.file, error);
  writeFile("save", options.output, bytes);
}

}  // namespace

void addSaveCommand(CLI::App& app) {
  auto* command = app.add_subcommand("save", "Open a document and write it again");
  const auto options = std::make_shared<SaveOptions>();
  command->add_option("FILE", options->file, "An editor document; - for standard input")
      ->required()
      ->type_name("");
  command->add_option("-o,--output", options->output, "The file to write; - for standard output")
      ->required()
      ->type_name("OUT");
  command
      ->add_option("--coding-type", options->codingType,
                   "Read as 0 or 1: draw fresh unique keys; 3: keep those of the file")
      ->type_name("N");
  command
      ->add_option("--to", options->to,
                   "Write as 0 or 1: without unique keys; 3: with them (default: as it was read)")
      ->type_name("N");
  command->callback([options] { save(*options); });
}

}  // namespace tarnkit::tool
