#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "tarnkit/compare/HXDocumentSearch.h"
#include "tarnkit/model/HXLookup.h"
#include "tarnkit/model/HXPort.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/DocumentInput.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"

namespace tarnkit::tool {

namespace {

struct FindOptions {
  std::vector<std::string> files;
  std::string patch, name, port, image;
  bool json = false;
  bool count = false;
};

struct FoundFile {
  std::string file;
  std::vector<HXSearchMatch> matches;
};

HXSearchCriteria criteriaOf(const FindOptions& options, const CLI::App& command) {
  const auto given = [&](const char* name, const std::string& text) {
    return command.count(name) != 0 ? String(text) : String();
  };
  HXSearchCriteria criteria;
  criteria.patch = given("--patch", options.patch);
  criteria.name = given("--name", options.name);
  criteria.port = given("--port", options.port);
  criteria.image = given("--uses", options.image);
  return criteria;
}

void writeLines(const std::vector<FoundFile>& files) {
  std::string lines;
  for (const FoundFile& file : files) {
    const std::string before = files.size() > 1 ? file.file + ": " : std::string();
    for (const HXSearchMatch& match : file.matches) {
      lines += oneLine(before + match.address);
      lines += '\n';
    }
  }
  writeToStandardOutput(lines);
}

void writeCounts(const std::vector<FoundFile>& files) {
  std::string lines;
  for (const FoundFile& file : files) {
    const std::string before = files.size() > 1 ? file.file + ": " : std::string();
    lines += oneLine(before + std::to_string(file.matches.size())) + '\n';
  }
  writeToStandardOutput(lines);
}

void writeJSON(const std::vector<FoundFile>& files, bool countOnly) {
  JSONWriter json([](std::string_view text) { writeToStandardOutput(text); });
  std::uint64_t total = 0;
  json.beginObject().key("files").beginArray();
  for (const FoundFile& file : files) {
    total += file.matches.size();
    json.beginObject().key("file").value(file.file);
    json.key("count").value(std::uint64_t{file.matches.size()});
    if (!countOnly) {
      json.key("matches").beginArray();
      for (const HXSearchMatch& match : file.matches) {
        json.beginObject().key("address").value(match.address).key("key");
        json.value(match.port ? HXLookup::addressOf(match.port.get())
                              : match.node->uniqueKey().toStdString());
        json.endObject();
      }
      json.endArray();
    }
    json.endObject();
  }
  json.endArray().key("count").value(total).endObject();
  json.endLine();
  json.flush();
}

int find(const FindOptions& options, const HXSearchCriteria& criteria) {
  std::vector<FoundFile> files;
  bool isFound = false;
  {
    Progress progress("searching");
    for (const std::string& file : options.files) {
      progress.setCount(files.size());
      DocumentOptions document;
      document.file = file;
      const auto input = openDocument("find", document);
      files.push_back({file, HXDocumentSearch::find(*input.document, criteria)});
      isFound = isFound || !files.back().matches.empty();
    }
  }
  if (options.json) {
    writeJSON(files, options.count);
  } else if (options.count) {
    writeCounts(files);
  } else {
    writeLines(files);
  }
  return isFound ? 0 : 1;
}

}  // namespace

void addFindCommand(CLI::App& app) {
  auto* command = app.add_subcommand("find", "Find nodes and ports in documents");
  const auto options = std::make_shared<FindOptions>();
  addDocumentFiles(*command, options->files);
  command
      ->add_option("--patch", options->patch, "Of this patch class, or of the patch of this name")
      ->type_name("CLASS");
  command->add_option("--name", options->name, "Of this name; * is any text, ? any character")
      ->type_name("PATTERN");
  command->add_option("--port", options->port, "Ports of this key, or of this name")
      ->type_name("KEY");
  command->add_option("--uses", options->image, "Showing the image of this key")
      ->type_name("IMAGEKEY");
  command->add_flag("--json", options->json, "Print a JSON document");
  command->add_flag("--count", options->count, "Print how many there are, a line a file");
  command->callback([options, command] {
    endWithStatus([&] { return find(*options, criteriaOf(*options, *command)); });
  });
}

}  // namespace tarnkit::tool
