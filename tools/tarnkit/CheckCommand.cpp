#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tarnkit/compare/HXDocumentCheck.h"
#include "tarnkit/compare/HXDocumentRepair.h"
#include "tarnkit/compare/HXOpeningRecord.h"
#include "tools/tarnkit/CheckOutput.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/DocumentInput.h"
#include "tools/tarnkit/DocumentOutput.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"

namespace tarnkit::tool {

namespace {

struct CheckOptions {
  std::vector<std::string> files;
  std::vector<std::string> only;
  std::vector<std::string> ignored;
  std::size_t limit = HXCheckOptions::kAll;
  bool json = false;
  bool sarif = false;
  bool strict = false;
  bool fix = false;
};

std::vector<HXFindingCode> codesOf(const std::vector<std::string>& names) {
  std::vector<HXFindingCode> codes;
  for (const std::string& name : names) codes.push_back(findingKindNamed(name)->code);
  return codes;
}

std::string checkCount(const std::string& text) {
  const bool isCount = text.find_first_not_of("0123456789") == std::string::npos;
  return isCount ? "" : "'" + oneLine(text) + "' is no number of findings";
}

std::string checkCode(const std::string& name) {
  if (findingKindNamed(name)) return {};
  std::string names;
  for (const HXFindingKind& kind : findingKinds()) {
    names += (names.empty() ? "" : ", ") + std::string(kind.name);
  }
  return "'" + oneLine(name) + "' is no code; there are " + names;
}

bool hasLosses(const HXOpeningRecord& opening) {
  return std::any_of(opening.losses().begin(), opening.losses().end(), [](const auto& losses) {
    return HXNodeReport{{}, losses.dropped, {}, {}}.losesAnything();
  });
}

// Writes the file again as it was, when something was answered. What opening it lost is still in
// the file and would be gone from it, so such a file is left alone.
void fix(CheckedFile& checked, const DocumentInput& input, const HXOpeningRecord& opening,
         const HXCheckOptions& wanted) {
  if (hasLosses(opening)) {
    complain("check, " + checked.file +
             ", nothing is fixed, since saving the file would lose what opening it has lost");
    return;
  }
  auto answered = HXDocumentRepair::repair(*input.document, wanted);
  if (answered.empty()) return;
  writeDocument("check", checked.file, checked.file, *input.document, input.form, input.codingType,
                input.imageFiles);
  checked.fixed = std::move(answered);
}

CheckedFile checkFile(const std::string& file, const CheckOptions& options,
                      const HXCheckOptions& wanted) {
  CheckedFile checked;
  checked.file = file;
  DocumentOptions document;
  document.file = file;
  HXOpeningRecord opening;
  DocumentInput input;
  try {
    input = openDocument("check", document, opening.losses());
  } catch (const CommandFailure& failure) {
    checked.result =
        HXDocumentCheck::ofFailure(Status::failure(StatusCode::damaged, failure.why()), wanted);
    return checked;
  }
  opening.end();
  if (options.fix) fix(checked, input, opening, wanted);
  checked.result = HXDocumentCheck::check(*input.document, wanted, &opening);
  return checked;
}

int check(const CheckOptions& options) {
  HXCheckOptions wanted;
  wanted.only = codesOf(options.only);
  wanted.ignored = codesOf(options.ignored);
  wanted.limit = options.limit;
  std::vector<CheckedFile> files;
  std::size_t errors = 0, warnings = 0;
  {
    Progress progress("checking");
    for (const std::string& file : options.files) {
      progress.setCount(files.size());
      files.push_back(checkFile(file, options, wanted));
      errors += files.back().result.count(HXFindingSeverity::error);
      warnings += files.back().result.count(HXFindingSeverity::warning);
    }
  }
  const std::size_t hidden = keepWorst(files, options.limit);
  if (options.json) {
    writeFindingsAsJSON(files);
  } else if (options.sarif) {
    writeFindingsAsSARIF(files);
  } else {
    writeFindings(files, hidden);
  }
  return errors != 0 || (options.strict && warnings != 0) ? 1 : 0;
}

}  // namespace

void addCheckCommand(CLI::App& app) {
  auto* command = app.add_subcommand("check", "Tell what is wrong in documents");
  const auto options = std::make_shared<CheckOptions>();
  addDocumentFiles(*command, options->files);
  const auto addCodes = [&](const char* name, std::vector<std::string>& codes, const char* what) {
    return command->add_option(name, codes, what)
        ->take_all()
        ->allow_extra_args(false)
        ->check(CLI::Validator(checkCode, ""))
        ->type_name("CODE");
  };
  addCodes("--only", options->only, "Look for this only; as often as needed");
  addCodes("--ignore", options->ignored, "Do not look for this; as often as needed");
  command->add_option("--limit", options->limit, "Show the worst N; all are counted")
      ->check(CLI::Validator(checkCount, ""))
      ->type_name("N");
  auto* json = command->add_flag("--json", options->json, "Print a JSON document");
  command->add_flag("--sarif", options->sarif, "Print a SARIF 2.1.0 log")->excludes(json);
  command->add_flag("--strict", options->strict, "Let warnings count as errors do");
  command->add_flag("--fix", options->fix,
                    "Give the one safe answer where there is one, and write the file again");
  command->callback([options] {
    const auto stream = std::find(options->files.begin(), options->files.end(), kStandardStream);
    if (options->fix && stream != options->files.end()) {
      throw CLI::ValidationError("--fix", "standard input cannot be written again");
    }
    endWithStatus([&] { return check(*options); });
  });
}

}  // namespace tarnkit::tool
