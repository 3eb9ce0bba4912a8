#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/system/File.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"
#include "tools/tarnkit/reference/ExpressionsPage.h"
#include "tools/tarnkit/reference/IndexPage.h"
#include "tools/tarnkit/reference/PageFrame.h"
#include "tools/tarnkit/reference/PatchPage.h"
#include "tools/tarnkit/reference/ReferencePages.h"
#include "tools/tarnkit/reference/RelatedPatches.h"
#include "tools/tarnkit/reference/Stylesheet.h"

namespace tarnkit::tool {

namespace {

constexpr const char* kWhat = "reference";

struct ReferenceOptions {
  std::string directory;
  std::string theme;
};

struct OutputFile {
  std::string name;
  std::string text;
};

std::optional<HXPictureTheme> themeNamed(const std::string& name) {
  if (name.empty()) return std::nullopt;
  return name == "dark" ? HXPictureTheme::dark : HXPictureTheme::light;
}

/// The index last, so that it never leads to a page that could not be written.
std::vector<OutputFile> filesOf(const ReferencePages& pages, const ReferenceOptions& options,
                                Progress& progress) {
  const RelatedPatches related(pages);
  std::vector<OutputFile> files;
  files.push_back({std::string(kStylesheet), referenceStylesheet(themeNamed(options.theme))});
  for (const ReferencePage& page : pages.pages()) {
    files.push_back({page.fileName, patchPage(page, pages, related)});
    progress.setCount(files.size());
  }
  files.push_back({std::string(kExpressionsPage), expressionsPage()});
  files.push_back({ReferencePages::kIndex, indexPage(pages)});
  return files;
}

/// What is there under the name of one of our files must be from an earlier reference.
void requireOurs(const std::filesystem::path& path) {
  std::error_code failure;
  if (!std::filesystem::exists(path, failure) && !failure) return;
  std::array<char, 512> start{};
  if (std::filesystem::is_regular_file(path, failure)) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
      failWithFile(kWhat, path.string(), Status::ofSystem(errno));
    }
    file.read(start.data(), start.size());
  }
  if (std::string_view(start.data(), start.size()).find(kReferenceMark) != std::string_view::npos) {
    return;
  }
  throw CommandFailure(
      kWhat, path.string(),
      failure ? failure.message() : "something that no reference wrote is there already");
}

void writeReference(const ReferenceOptions& options) {
  Progress progress("writing the reference");
  const ReferencePages pages(catalogue());
  const auto files = filesOf(pages, options, progress);
  const auto made = File::makeDirectory(options.directory);
  if (!made) failWithFile(kWhat, options.directory, made);
  const std::filesystem::path directory(options.directory);
  for (const OutputFile& file : files) requireOurs(directory / file.name);
  for (const OutputFile& file : files) {
    writeFile(kWhat, (directory / file.name).string(), bytesOf(file.text));
  }
}

}  // namespace

void addReferenceCommand(CLI::App& app) {
  auto* const command = app.add_subcommand("reference", "Write the patch reference as HTML pages");
  const auto options = std::make_shared<ReferenceOptions>();
  command
      ->add_option("-o,--output", options->directory,
                   "The directory for the pages; made at need, other files in it are left alone")
      ->required()
      ->type_name("DIR");
  command
      ->add_option("--theme", options->theme, "Colours; those of the reader's system when absent")
      ->check(CLI::IsMember({"light", "dark"}).description(""))
      ->type_name("light|dark");
  command->callback([options] { writeReference(*options); });
}

}  // namespace tarnkit::tool
