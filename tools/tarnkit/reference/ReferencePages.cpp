#include "tools/tarnkit/reference/ReferencePages.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>

#include "tarnkit/patches/HXRNodeClass.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/reference/ExpressionsPage.h"
#include "tools/tarnkit/reference/Html.h"

namespace tarnkit::tool {

namespace {

constexpr std::string_view kExtension = ".html";
constexpr std::size_t kLongestName = 255;  // what common file systems take

std::string lowerCased(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

/// Why the name cannot be that of a page, or "".
std::string_view faultOf(std::string_view name) {
  if (name.empty()) return "it has no name";
  if (name.find_first_of("/\\:") != std::string_view::npos) {
    return "it is to be a file of the reference's own folder";
  }
  if (std::any_of(name.begin(), name.end(), isControl)) return "its name has control characters";
  if (name.front() == '.' || name.front() == '-') return "its name starts with a sign";
  if (name.size() > kLongestName) return "its name is too long";
  const std::string lower = lowerCased(name);
  if (lower == ReferencePages::kIndex) return "that is the index";
  if (lower == kExpressionsPage) return "that is the page of the expressions";
  if (!lower.ends_with(kExtension)) return "its name does not end with .html";
  return {};
}

bool comesBefore(const HXRNodeClass* a, const HXRNodeClass* b) {
  const String& first = a->libraryCategory();
  const String& second = b->libraryCategory();
  if (!first != !second) return !second;
  if (first && first != second) return first < second;
  if (standsApart(*a) != standsApart(*b)) return standsApart(*b);
  if (titleOf(*a) != titleOf(*b)) return titleOf(*a) < titleOf(*b);
  return a->name() < b->name();
}

/// The patch that gave the page its name goes first.
void putNamesakeFirst(ReferencePage& page) {
  const auto isNamesake = [&](const HXRNodeClass* patch) {
    return page.fileName.size() == patch->name().size() + kExtension.size() &&
           page.fileName.starts_with(patch->name());
  };
  const auto found = std::find_if(page.patches.begin(), page.patches.end(), isNamesake);
  if (found != page.patches.end()) std::rotate(page.patches.begin(), found, found + 1);
}

}  // namespace

ReferencePages::ReferencePages(const std::vector<const HXRNodeClass*>& patches)
    : patches_(patches) {
  std::sort(patches_.begin(), patches_.end(), comesBefore);
  patches_.erase(std::unique(patches_.begin(), patches_.end()), patches_.end());
  std::map<std::string, std::size_t> pageByName;  // in lower case, as some file systems see it
  for (const auto* const patch : patches_) {
    const std::string fileName = patch->libraryDescription().toStdString();
    const auto complain = [&](std::string_view why) {
      throw CommandFailure("reference",
                           fmt::format("help page \"{}\" of {}", fileName, patch->name()), why);
    };
    if (const auto fault = faultOf(fileName); !fault.empty()) complain(fault);
    const auto [place, isNew] = pageByName.try_emplace(lowerCased(fileName), pages_.size());
    if (isNew) pages_.push_back({fileName, {}});
    ReferencePage& page = pages_[place->second];
    if (page.fileName != fileName) {
      complain(fmt::format("only the case of letters tells it from \"{}\"", page.fileName));
    }
    page.patches.push_back(patch);
    pageOfPatch_[patch] = place->second;
  }
  for (ReferencePage& page : pages_) putNamesakeFirst(page);
}

const ReferencePage* ReferencePages::pageOf(const HXRNodeClass& patch) const {
  const auto found = pageOfPatch_.find(&patch);
  return found == pageOfPatch_.end() ? nullptr : &pages_[found->second];
}

std::string ReferencePages::linkToPatch(const HXRNodeClass& patch) const {
  const ReferencePage* const page = pageOf(patch);
  if (!page) return {};
  std::string link = linkTo(page->fileName);
  if (page->patches.front() != &patch) link += "#" + anchorOf(patch);
  return link;
}

std::string_view titleOf(const HXRNodeClass& patch) {
  const std::string_view name = patch.defaultName();
  return name.find_first_not_of(" \t\n\r") == std::string_view::npos ? patch.name() : name;
}

std::string_view categoryOf(const HXRNodeClass& patch) {
  const String& category = patch.libraryCategory();
  return category ? category.view() : std::string_view("No category");
}

bool standsApart(const HXRNodeClass& patch) {
  return patch.hiddenInLibrary() || patch.secretInLibrary();
}

// A full stop never stands for itself, so no two patches share an anchor, and none meets an id of
// the page's own, which has one before lower-case letters.
std::string anchorOf(const HXRNodeClass& patch) {
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  std::string anchor;
  for (const char c : patch.name()) {
    if (isLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '_') {
      anchor += c;
    } else {
      fmt::format_to(std::back_inserter(anchor), ".{:02X}", static_cast<unsigned char>(c));
    }
  }
  if (anchor.empty() || !isLetter(anchor.front())) anchor.insert(0, "patch.");
  return anchor;
}

}  // namespace tarnkit::tool
