#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/text/HXTextFile.h"
#include "tools/tarnkit/DocumentInput.h"
#include "tools/tarnkit/DocumentOutput.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"

namespace tarnkit::tool {

namespace {

struct SaveOptions {
  DocumentOptions document;
  std::string output;
  std::optional<std::int32_t> to;
  std::string format;
  std::string images;
};

DocumentForm formOf(const SaveOptions& options) {
  const std::string name = options.format.empty() ? options.output : "." + options.format;
  return formOfName(name).value_or(DocumentForm::binary);
}

// A text has the unique keys of its own, and may have files beside it.
void checkTextOptions(const SaveOptions& options, DocumentForm form) {
  if (form != DocumentForm::text) {
    if (!options.images.empty()) failWithFile("save", options.output, "--images is for texts only");
    return;
  }
  if (options.to && options.to != HXCodingTypeEditorWithKeys) {
    failWithFile("save", options.output, "a text always keeps unique keys (--to 3)");
  }
  if (!options.images.empty() && options.output == kStandardStream) {
    failWithFile("save", options.output, "--images needs a file beside which they stand");
  }
}

void save(const SaveOptions& options) {
  const Progress progress("saving " + options.output);
  const auto input = openDocument("save", options.document);
  const DocumentForm form = formOf(options);
  checkTextOptions(options, form);
  if (!options.images.empty()) {
    const auto status = HXTextFile::save(*input.document, options.output, options.images);
    if (!status) failWithFile("save", options.output, status);
    return;
  }
  writeDocument("save", options.document.file, options.output, *input.document, form,
                options.to.value_or(input.codingType));
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
  command
      ->add_option("--format", options->format,
                   "binary, xml or json, a text (default: after the ending of OUT, .xml or .json; "
                   "otherwise binary)")
      ->check(CLI::IsMember({"binary", "xml", "json"}).description(""))
      ->type_name("binary|xml|json");
  command
      ->add_option("--images", options->images,
                   "With a text: write the images as files into this folder, below that of OUT")
      ->type_name("DIR");
  command->callback([options] { save(*options); });
}

}  // namespace tarnkit::tool
