#include "tools/tarnkit/CatalogueCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/text/ASCII.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/CatalogueShapes.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Suggestion.h"

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

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = detail::lowerCaseOf(c);
  return lower;
}

// The class of that key; without one the patches that people call so, and without these the ones of
// which that is a part of the name or of the key. In any case but for the first.
PatchClasses classesCalled(const std::string& name) {
  if (const auto* const patchClass = patchClassNamed(name)) return {patchClass};
  const std::string wanted = lowerCase(name);
  PatchClasses whole, parts;
  std::vector<std::string_view> names;
  for (const auto* const patchClass : catalogue()) {
    const std::string displayName = lowerCase(patchClass->defaultName().view());
    const std::string key = lowerCase(patchClass->name());
    if (displayName == wanted || key == wanted) whole.push_back(patchClass);
    if (displayName.find(wanted) != std::string::npos || key.find(wanted) != std::string::npos) {
      parts.push_back(patchClass);
    }
    names.push_back(patchClass->defaultName().view());
    names.push_back(patchClass->name());
  }
  if (!whole.empty()) return whole;
  if (parts.empty() || wanted.empty()) {
    throw CommandFailure("catalogue", name,
                         "there is no patch of that name or key" + didYouMean(name, names));
  }
  return parts;
}

PatchClasses namedClasses(const std::vector<std::string>& names) {
  PatchClasses classes;
  for (const std::string& name : names) {
    const auto called = classesCalled(name);
    classes.insert(classes.end(), called.begin(), called.end());
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
  command
      ->add_option("CLASS", options->classes,
                   "Only these, with their ports: keys, names, or parts of them")
      ->type_name("");
  command->add_option("--category", options->category, "Only the patches of this category")
      ->type_name("NAME");
  command->add_flag("--all", options->all, "List hidden patches too");
  command->add_flag("--json", options->json, "Print one JSON document, ports and all");
  command->callback([options] { listCatalogue(*options); });
}

}  // namespace tarnkit::tool
