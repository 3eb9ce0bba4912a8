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

struct SendOptions {
  DocumentOptions document;
  std::string output;
  std::string images;
};

void send(const SendOptions& options) {
  const Progress progress("sending " + options.document.file);
  const auto input = openDocument("send", options.document);
  if (options.output == kStandardStream) {
    const auto graph = HXDocumentFile::deviceGraph(*input.document);
    if (!graph) failWithFile("send", options.document.file, graph.status());
    writeFile("send", options.output, *graph);
  } else {
    const auto status = HXDocumentFile::send(*input.document, options.output);
    if (!status) failWithFile("send", options.output, status);
  }
  if (options.images.empty()) return;
  const auto keys = HXDocumentFile::sendImages(*input.document, options.images);
  if (!keys) failWithFile("send", options.images, keys.status());
}

}  // namespace

void addSendCommand(CLI::App& app) {
  auto* command = app.add_subcommand("send", "Write the device graph of a document");
  const auto options = std::make_shared<SendOptions>();
  options->document.addTo(*command);
  command
      ->add_option("-o,--output", options->output,
                   "The file for the device graph; - for standard output")
      ->required()
      ->type_name("OUT");
  command
      ->add_option("--images", options->images,
                   "Write one archive for each image, KEY.plist, into this directory")
      ->type_name("DIR");
  command->callback([options] { send(*options); });
}

}  // namespace tarnkit::tool
