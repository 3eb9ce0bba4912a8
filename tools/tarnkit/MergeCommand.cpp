#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tarnkit/compare/HXDocumentMerge.h"
#include "tarnkit/platform/system/File.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/DocumentInput.h"
#include "tools/tarnkit/DocumentOutput.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"

namespace tarnkit::tool {

namespace {

struct MergeOptions {
  std::string base;
  std::string ours;
  std::string theirs;
  std::string output;
  std::string path;
  std::vector<std::string> favored;
  bool json = false;
};

HXDocumentMerge::Options optionsOf(const std::vector<std::string>& favored) {
  HXDocumentMerge::Options options;
  for (const auto& text : favored) {
    const auto colon = text.find(':');
    const std::string side = text.substr(0, colon);
    if (side != "ours" && side != "theirs") {
      throw CommandFailure("merge: --favor takes ours or theirs, with :ADDRESS or without");
    }
    const auto favoredSide = side == "ours" ? HXMergeSide::ours : HXMergeSide::theirs;
    if (colon == std::string::npos) {
      options.preference = favoredSide;
      options.isPreferenceDecided = true;
    } else {
      options.favored[text.substr(colon + 1)] = favoredSide;
    }
  }
  return options;
}

// Git hands over an empty file as the base of what both branches have added.
DocumentInput opened(const std::string& file, const MergeOptions& merge) {
  struct stat info {};
  if (::stat(file.c_str(), &info) == 0 && S_ISREG(info.st_mode) && info.st_size == 0) {
    DocumentInput empty;
    empty.document = make<HXDocument>();
    return empty;
  }
  DocumentOptions options;
  options.file = file;
  if (!merge.path.empty()) {
    options.imageFolder = File::directoryOf(merge.path);
    options.mayLackImages = true;
  }
  return openDocument("merge", options);
}

void writeJSON(const std::vector<HXMergeConflict>& conflicts) {
  JSONWriter json(writeToStandardOutput);
  json.beginObject().key("conflicts").beginArray();
  for (const auto& conflict : conflicts) {
    json.beginObject();
    json.key("conflict").value(nameOf(conflict.kind));
    json.key("address").value(conflict.address);
    json.key("subject").value(conflict.subject);
    json.key("ours").value(conflict.ours);
    json.key("theirs").value(conflict.theirs);
    json.key("taken").value(conflict.taken);
    json.key("decided").value(conflict.isDecided);
    json.endObject();
  }
  json.endArray().endObject();
  json.endLine();
  json.flush();
}

// Those that stand beside what is written as they stood beside what was read.
HXTextFile::ImageFiles imageFilesOf(const MergeOptions& options, const DocumentInput& ours,
                                    const DocumentInput& theirs) {
  HXTextFile::ImageFiles files;
  const auto add = [&](const std::string& file, const DocumentInput& input) {
    const bool isBeside = File::directoryOf(file) == File::directoryOf(options.output);
    if (isBeside || !options.path.empty()) {
      files.insert(input.imageFiles.begin(), input.imageFiles.end());
    }
  };
  add(options.ours, ours);
  add(options.theirs, theirs);
  return files;
}

// An address that settles nothing is mistyped, most often.
void tellUnused(const HXDocumentMerge::Options& options,
                const std::vector<HXMergeConflict>& conflicts) {
  for (const auto& favored : options.favored) {
    const bool isUsed =
        std::any_of(conflicts.begin(), conflicts.end(), [&](const HXMergeConflict& conflict) {
          return conflict.address == favored.first ||
                 conflict.address + ": " + conflict.subject == favored.first;
        });
    if (!isUsed) complain("merge: --favor: nothing conflicts at \"" + favored.first + "\"");
  }
}

int merge(const MergeOptions& options) {
  const Progress progress("merging " + options.theirs);
  auto mergeOptions = optionsOf(options.favored);
  const auto base = opened(options.base, options);
  const auto ours = opened(options.ours, options);
  const auto theirs = opened(options.theirs, options);
  if (base.codingType != 3 || ours.codingType != 3 || theirs.codingType != 3) {
    mergeOptions.keys = HXNodeMatching::Keys::ignored;
  }
  auto outcome =
      HXDocumentMerge::merge(*base.document, *ours.document, *theirs.document, mergeOptions);
  if (!outcome) failWithFile("merge", options.ours, outcome.status());
  const auto form = formOfName(options.output).value_or(ours.form);
  writeDocument("merge", options.output, options.output, *outcome->document, form, ours.codingType,
                imageFilesOf(options, ours, theirs));
  if (options.json) writeJSON(outcome->conflicts);
  for (const auto& conflict : outcome->conflicts) {
    if (!conflict.isDecided) complain("conflict: " + conflict.description());
  }
  tellUnused(mergeOptions, outcome->conflicts);
  return outcome->hasOpenConflicts() ? 1 : 0;
}

}  // namespace

void addMergeCommand(CLI::App& app) {
  auto* command = app.add_subcommand(
      "merge", "Merge what two branches made of a document (exit status 1: with conflicts)");
  const auto options = std::make_shared<MergeOptions>();
  command->add_option("BASE", options->base, "What both began with")->required()->type_name("");
  command->add_option("OURS", options->ours, "Our document")->required()->type_name("");
  command->add_option("THEIRS", options->theirs, "Theirs")->required()->type_name("");
  command->add_option("-o,--output", options->output, "The file to write; - for standard output")
      ->required()
      ->type_name("OUT");
  command
      ->add_option("--favor", options->favored,
                   "ours or theirs: what is taken where they conflict; with :ADDRESS, or "
                   ":\"ADDRESS: PROPERTY\", there only")
      ->take_all()
      ->allow_extra_args(false)
      ->type_name("SIDE");
  command
      ->add_option(
          "--path", options->path,
          "Where the document stands when the files stand elsewhere, as git's do: beside it "
          "are the images of a text")
      ->type_name("FILE");
  command->add_flag("--json", options->json, "Print the conflicts as JSON");
  command->callback([options] { endWithStatus([&] { return merge(*options); }); });
}

}  // namespace tarnkit::tool
