#include "tools/tarnkit/CatalogueCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/CatalogueShapes.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Output.h"

namespace tarnkit::tool {

namespace {

struct CatalogueOptions {
  bool json = false;
  bool all = false;
  std::string category;
  std::vector<std::string> classes;
};

using PatchClasses = std::vector<const HXRNodeClass*>;

bool hasCategory(const HXRNodeClass& patchClass, const std::string& category) {
  return category.empty() || patchClass.libraryCategory() == std::string_view(category);
}

/// By category and then by display name; those of no category last.
bool standsBefore(const HXRNodeClass* a, const HXRNodeClass* b) {
  const String& first = a->libraryCategory();
  const String& second = b->libraryCategory();
  if (first.isNil() != second.isNil()) return second.isNil();
  if (first != second) return first < second;
  if (a->defaultName() != b->defaultName()) return a->defaultName() < b->defaultName();
  return a->name() < b->name();
}

PatchClasses namedClasses(const std::vector<std::string>& names) {
  PatchClasses classes;
  for (const std::string& name : names) {
    const auto* const patchClass = patchClassNamed(name);
    if (!patchClass) {
      throw CommandFailure("catalogue", name, "there is no patch definition of that name");
    }
    classes.push_back(patchClass);
  }
  return classes;
}

PatchClasses chosenClasses(const CatalogueOptions& options) {
  PatchClasses classes = options.classes.empty() ? catalogue() : namedClasses(options.classes);
  const bool hiddenToo = options.all || !options.classes.empty();
  const auto isLeftOut = [&](const HXRNodeClass* patchClass) {
    return !hasCategory(*patchClass, options.category) ||
           (!hiddenToo && patchClass->hiddenInLibrary());
  };
  classes.erase(std::remove_if(classes.begin(), classes.end(), isLeftOut), classes.end());
  std::sort(classes.begin(), classes.end(), standsBefore);
  classes.erase(std::unique(classes.begin(), classes.end()), classes.end());
  if (classes.empty()) {
    throw CommandFailure("catalogue", options.category,
                         "no patch definition to be listed is in that category");
  }
  return classes;
}

void printJson(const PatchClasses& classes) {
  JSONWriter json(writeToStandardOutput);
  json.beginArray();
  for (const auto* const patchClass : classes) writePatchClass(json, *patchClass);
  json.endArray();
  json.endLine();
  json.flush();
}

std::string flagsOf(const HXRNodeClass& patchClass) {
  std::string flags;
  if (patchClass.hiddenInLibrary()) flags += ", hidden";
  if (patchClass.secretInLibrary()) flags += ", secret";
  if (patchClass.allowsSubnodes()) flags += ", holds nodes";
  return flags;
}

void printList(const PatchClasses& classes) {
  std::string text;
  const HXRNodeClass* before = nullptr;
  for (const auto* const patchClass : classes) {
    const String& category = patchClass->libraryCategory();
    if (!before || before->libraryCategory() != category) {
      if (before) text += '\n';
      text += category.isNil() ? "(no category)" : category.characters();
      text += '\n';
    }
    text += fmt::format("  {:<24} {}{}\n", patchClass->defaultName().view(), patchClass->name(),
                        flagsOf(*patchClass));
    before = patchClass;
  }
  writeToStandardOutput(text);
}

void printDetails(const PatchClasses& classes) {
  std::string text;
  for (const auto* const patchClass : classes) {
    if (!text.empty()) text += '\n';
    appendPatchClass(text, *patchClass);
  }
  writeToStandardOutput(text);
}

void listCatalogue(const CatalogueOptions& options) {
  const auto classes = chosenClasses(options);
  if (options.json) {
    printJson(classes);
  } else if (options.classes.empty()) {
    printList(classes);
  } else {
    printDetails(classes);
  }
}

}  // namespace

void addCatalogueCommand(CLI::App& app) {
  auto options = std::make_shared<CatalogueOptions>();
  auto* const command = app.add_subcommand("catalogue", "List the patch definitions");
  command->add_option("CLASS", options->classes, "Only these classes, with their ports")
      ->type_name("");
  command->add_option("--category", options->category, "Only the patches of this category")
      ->type_name("NAME");
  command->add_flag("--all", options->all, "List hidden patches too");
  command->add_flag("--json", options->json, "Print one JSON document, ports and all");
  command->callback([options] { listCatalogue(*options); });
}

}  // namespace tarnkit::tool
