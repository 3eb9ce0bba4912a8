#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "tarnkit/model/HXDocumentFile.h"
#include "tools/tarnkit/DocumentInput.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"

namespace tarnkit::tool {

namespace {

struct ImagesOptions {
  DocumentOptions document;
  std::string directory;
};

void saveImages(const ImagesOptions& options) {
  const Progress progress("writing images of " + options.document.file);
  const auto input = openDocument("images", options.document);
  const auto keys = HXDocumentFile::saveImages(*input.document, options.directory);
  if (!keys) failWithFile("images", options.directory, keys.status());
}

}  // namespace

void addImagesCommand(CLI::App& app) {
  auto* command = app.add_subcommand("images", "Write the images of a document as PNG files");
  const auto options = std::make_shared<ImagesOptions>();
  options->document.addTo(*command);
  command
      ->add_option("-o,--output", options->directory,
                   "The directory for the files, KEY.png; it is made at need")
      ->required()
      ->type_name("DIR");
  command->callback([options] { saveImages(*options); });
}

}  // namespace tarnkit::tool
