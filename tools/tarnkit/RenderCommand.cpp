#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/platform/text/ASCII.h"
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
  std::string format;
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

// Of the name where none was given; a name without an ending is that of a picture.
std::string formatOf(const RenderOptions& options) {
  if (!options.format.empty()) return options.format;
  const std::string name = options.output.substr(options.output.rfind('/') + 1);
  const auto point = name.rfind('.');
  if (point == std::string::npos || point == 0) return "svg";
  std::string ending = name.substr(point + 1);
  for (char& c : ending) c = detail::lowerCaseOf(c);
  if (ending == "svg") return "svg";
  if (ending == "html" || ending == "htm") return "html";
  throw CLI::ValidationError(
      "-o", fmt::format("what \"{}\" ends in is no form that is drawn; name it .svg or .html, or "
                        "say which with --format",
                        oneLine(name)));
}

void render(const RenderOptions& options) {
  const std::string format = formatOf(options);
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
    if (format == "html") {
      writeFileInPieces("render", options.output, [&](OutputPieces pieces) {
        writeGraphPage(*group, picture.theme, pieces, &report);
      });
    } else {
      writeFile("render", options.output, bytesOf(graphPicture(*group, picture, &report)));
    }
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
                   "svg: one picture; html: a page to look around in, with every group below "
                   "(default: after the ending of OUT)")
      ->check(CLI::IsMember({"svg", "html"}).description(""))
      ->type_name("svg|html");
  command->add_option("--theme", options->theme, "Colours")
      ->check(CLI::IsMember({"light", "dark"}).description(""))
      ->type_name("light|dark");
  command->callback([options] { render(*options); });
}

}  // namespace tarnkit::tool
