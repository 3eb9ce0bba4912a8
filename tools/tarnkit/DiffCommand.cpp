#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tarnkit/compare/HXDocumentDifference.h"
#include "tarnkit/platform/system/File.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tarnkit/render/HXDifferencePage.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/DocumentInput.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"
#include "tools/tarnkit/Terminal.h"

namespace tarnkit::tool {

namespace {

using Change = HXDocumentChange;

struct DiffOptions {
  std::vector<std::string> files;
  DocumentOptions document;
  std::string page;
  bool json = false;
  bool viewState = false;
  bool quiet = false;
};

// How git calls an external diff: PATH, OLD-FILE OLD-HEX OLD-MODE, NEW-FILE NEW-HEX NEW-MODE, and
// what it says of a rename.
constexpr std::size_t kGitArguments = 7;

/// What is told of a difference: without `--view-state` the positions of a group's nodes in one
/// line, and nothing else of how the documents are looked at.
std::vector<Change> toldChanges(const HXDocumentDifference& difference, bool viewState) {
  std::vector<Change> told;
  std::vector<std::pair<std::string, std::size_t>> moved;
  for (const auto& change : difference.changes()) {
    if (viewState || !change.isViewState()) {
      told.push_back(change);
      continue;
    }
    if (change.kind != Change::Kind::position) continue;
    if (moved.empty() || moved.back().first != change.place) moved.emplace_back(change.place, 0);
    ++moved.back().second;
  }
  for (const auto& [place, count] : moved) {
    Change summary;
    summary.kind = Change::Kind::position;
    summary.address = summary.place = place;
    summary.newText = fmt::format("{} node{}", count, count == 1 ? "" : "s");
    told.push_back(std::move(summary));
  }
  return told;
}

bool isSummary(const Change& change) {
  return change.kind == Change::Kind::position && change.oldText.empty();
}

class TextReport {
 public:
  void add(const Change& change) {
    const std::string& place = isSummary(change) ? change.place : change.address;
    if (place != place_ || text_.empty()) {
      place_ = place;
      text_ += colored("1", place) + "\n";
    }
    const char sign = change.sign();
    const std::string what =
        isSummary(change) ? change.newText + " in other positions" : change.description();
    text_ += colored(sign == '+'   ? "32"
                     : sign == '-' ? "31"
                                   : "33",
                     fmt::format("  {} {}", sign, what)) +
             "\n";
    for (const auto& consequence : change.consequences) {
      text_ += fmt::format("      {}\n", consequence);
    }
  }
  const std::string& text() const { return text_; }

 private:
  static std::string colored(const char* style, const std::string& text) {
    return styled(STDOUT_FILENO, style, text);
  }

  std::string place_;
  std::string text_;
};

void writeKeyOrNull(JSONWriter& json, const char* name, const String& key) {
  json.key(name);
  if (key.isNil()) {
    json.null();
  } else {
    json.value(key.view());
  }
}

void writeJSON(const std::vector<Change>& changes) {
  JSONWriter json(writeToStandardOutput);
  json.beginObject();
  json.key("changes");
  json.beginArray();
  for (const auto& change : changes) {
    json.beginObject();
    json.key("change");
    json.value(nameOf(change.kind));
    json.key("address");
    json.value(change.address);
    json.key("group");
    json.value(change.place);
    writeKeyOrNull(json, "oldNode", change.oldKey);
    writeKeyOrNull(json, "newNode", change.newKey);
    json.key("subject");
    json.value(change.subject);
    writeKeyOrNull(json, "key", change.subjectKey);
    json.key("old");
    json.value(change.oldText);
    json.key("new");
    json.value(change.newText);
    json.key("viewState");
    json.value(change.isViewState());
    json.key("with");
    json.beginArray();
    for (const auto& consequence : change.consequences) json.value(consequence);
    json.endArray();
    json.endObject();
  }
  json.endArray();
  json.endObject();
  json.endLine();
  json.flush();
}

Ref<HXDocument> opened(const std::string& file, DocumentOptions options, std::int32_t& codingType) {
  // Git hands over an empty file, or this one, for what is not there.
  if (file == "/dev/null") {
    codingType = 0;
    return make<HXDocument>();
  }
  options.file = file;
  const auto input = openDocument("diff", options);
  codingType = input.codingType;
  return input.document;
}

int diff(const DiffOptions& options) {
  const bool isCalledByGit = options.files.size() >= kGitArguments;
  const std::string& older = options.files[isCalledByGit ? 1 : 0];
  const std::string& newer = options.files[isCalledByGit ? 4 : 1];
  const Progress progress("comparing " + newer);
  std::int32_t oldType = 0;
  std::int32_t newType = 0;
  // Git's files stand elsewhere than the document, whose path it tells.
  DocumentOptions document = options.document;
  document.mayLackImages = isCalledByGit;
  if (isCalledByGit) document.imageFolder = File::directoryOf(options.files[0]);
  const auto oldDocument = opened(older, document, oldType);
  const auto newDocument = opened(newer, document, newType);
  const auto keys = oldType == newType && oldType == 3 ? HXNodeMatching::Keys::whereTheyAgree
                                                       : HXNodeMatching::Keys::ignored;
  const HXDocumentDifference difference(*oldDocument, *newDocument, keys);
  const auto told = toldChanges(difference, options.viewState);
  if (!options.page.empty()) {
    HXDifferencePageOptions page;
    page.viewState = options.viewState;
    writeFileInPieces("diff", options.page, [&](OutputPieces pieces) {
      writeDifferencePage(*oldDocument, *newDocument, difference, page, pieces);
    });
  }
  if (options.json) {
    writeJSON(told);
  } else if (!options.quiet && options.page != kStandardStream) {
    TextReport report;
    for (const auto& change : told) report.add(change);
    if (isCalledByGit && !told.empty()) {
      writeToStandardOutput(oneLine(options.files[0]) + "\n");
    }
    writeToStandardOutput(report.text());
  }
  // For git a difference is no failure of its driver.
  return told.empty() || isCalledByGit ? 0 : 1;
}

}  // namespace

void addDiffCommand(CLI::App& app) {
  auto* command = app.add_subcommand(
      "diff", "Tell what leads from one document to another (exit status 0: nothing, 1: changes)");
  const auto options = std::make_shared<DiffOptions>();
  command
      ->add_option("FILES", options->files,
                   "The old document and the new one; or the arguments of git's external diff")
      ->required()
      ->expected(2, 9)
      ->type_name("OLD NEW");
  auto* json = command->add_flag("--json", options->json, "Print the changes as JSON");
  command
      ->add_option("--html", options->page,
                   "Write a page of the new document in which the changes are marked, with a list "
                   "to walk through them; - for standard output, and nothing else there")
      ->type_name("OUT");
  options->document.addWithoutImagesTo(*command);
  command->add_flag("--view-state", options->viewState,
                    "Tell each position, selection, panel, canvas centre and collapse flag, too");
  command->add_flag("--quiet", options->quiet, "Print nothing; the exit status tells");
  command->callback([options, json] {
    if (options->page == kStandardStream && json->count() > 0) {
      endWithTrouble("diff: standard output is either the page or JSON");
    }
    if (options->files.size() != 2 && options->files.size() < kGitArguments) {
      endWithTrouble("diff: two files are compared");
    }
    endWithStatus([&] { return diff(*options); });
  });
}

}  // namespace tarnkit::tool
