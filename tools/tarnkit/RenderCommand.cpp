#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/render/HXGraphPage.h"
#include "tools/tarnkit/DocumentInput.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"

namespace tarnkit::tool {

namespace {

struct RenderOptions {
  DocumentOptions document;
  std::string output;
  std::string group;
  std::string format = "svg";
  std::string theme = "light";
};

// The group of that key, or the group of the node of that key; null when there is neither.
const HXGroup* groupForKey(const HXDocument& document, std::string_view key) {
  const auto isNamed = [key](const HXNode& node, const HXGroup& group) {
    return node.uniqueKey() == key || group.uniqueKey() == key;
  };
  const HXGroup* const top = document.subnodeGroup().get();
  if (isNamed(document, *top)) return top;
  for (HXNodeWalk walk(*top); const HXNode* node = walk.next();) {
    const HXGroup* const group = node->subnodeGroup().get();
    if (group && isNamed(*node, *group)) return group;
  }
  return nullptr;
}

void render(const RenderOptions& options) {
  HXPictureReport report;
  {
    const Progress progress("drawing " + options.document.file);
    const auto input = openDocument("render", options.document);
    const HXGroup* const group = options.group.empty()
                                     ? input.document->subnodeGroup().get()
                                     : groupForKey(*input.document, options.group);
    if (!group) failWithFile("render", options.document.file, "it has no group " + options.group);
    HXPictureOptions picture;
    picture.theme = options.theme == "dark" ? HXPictureTheme::dark : HXPictureTheme::light;
    const std::string text = options.format == "html" ? graphPage(*group, picture.theme, &report)
                                                      : graphPicture(*group, picture, &report);
    writeFile("render", options.output, bytesOf(text));
  }
  for (const std::string& note : report.notes) {
    complain(fmt::format("render, {}, {}", options.document.file, note));
  }
}

}  // namespace

void addRenderCommand(CLI::App& app) {
  auto* command = app.add_subcommand("render", "Draw a document, or one group of it");
  const auto options = std::make_shared<RenderOptions>();
  options->document.addTo(*command);
  command->add_option("-o,--output", options->output, "The picture; - for standard output")
      ->required()
      ->type_name("OUT");
  command
      ->add_option("--group", options->group,
                   "The unique key of the group to draw, or of the node that holds it; the "
                   "document's own group when absent")
      ->type_name("KEY");
  command
      ->add_option("--format", options->format,
                   "svg: one picture; html: a page to look around in, with every group below")
      ->check(CLI::IsMember({"svg", "html"}))
      ->type_name("svg|html");
  command->add_option("--theme", options->theme, "Colours")
      ->check(CLI::IsMember({"light", "dark"}))
      ->type_name("light|dark");
  command->callback([options] { render(*options); });
}

}  // namespace tarnkit::tool
