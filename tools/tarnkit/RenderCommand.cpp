#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "tarnkit/render/HXGraphPage.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/DocumentInput.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"

namespace tarnkit::tool {

namespace {

struct RenderOptions {
  std::string file;
  std::string output;
  std::string group;
  std::string format = "svg";
  std::string theme = "light";
  std::optional<std::int32_t> codingType;
};

// The group of that key, or the group of the node of that key; null when there is neither.
const HXGroup* groupForKey(const HXDocument& document, std::string_view key) {
  std::vector<const HXGroup*> pending{document.subnodeGroup().get()};
  if (document.uniqueKey() == key) return pending.back();
  while (!pending.empty()) {
    const HXGroup* const group = pending.back();
    pending.pop_back();
    if (group->uniqueKey() == key) return group;
    for (const auto& entry : group->subnodesByUniqueKey()) {
      const auto& inner = entry.value->subnodeGroup();
      if (!inner) continue;
      if (entry.value->uniqueKey() == key) return inner.get();
      pending.push_back(inner.get());
    }
  }
  return nullptr;
}

void render(const RenderOptions& options) {
  HXPictureReport report;
  {
    const Progress progress("drawing " + options.file);
    const auto input = openDocument("render", options.file, options.codingType);
    const HXGroup* const group = options.group.empty()
                                     ? input.document->subnodeGroup().get()
                                     : groupForKey(*input.document, options.group);
    if (!group) throw CommandFailure("render", options.file, "it has no group " + options.group);
    HXPictureOptions picture;
    picture.theme = options.theme == "dark" ? HXPictureTheme::dark : HXPictureTheme::light;
    const std::string text = options.format == "html" ? graphPage(*group, picture.theme, &report)
                                                      : graphPicture(*group, picture, &report);
    writeFile("render", options.output, bytesOf(text));
  }
  std::string file = options.file;
  for (char& c : file) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  for (const std::string& note : report.notes) {
    fmt::print(stderr, "tarnkit: render, {}, {}\n", file, note);
  }
}

}  // namespace

void addRenderCommand(CLI::App& app) {
  auto* command = app.add_subcommand("render", "Draw a document, or one group of it");
  const auto options = std::make_shared<RenderOptions>();
  command->add_option("FILE", options->file, "An editor document; - for standard input")
      ->required()
      ->type_name("");
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
  command
      ->add_option("--coding-type", options->codingType,
                   "0 or 1: draw fresh unique keys; 3: keep those of the file")
      ->type_name("N");
  command->callback([options] { render(*options); });
}

}  // namespace tarnkit::tool
