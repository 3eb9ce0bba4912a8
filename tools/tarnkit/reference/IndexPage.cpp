#include "tools/tarnkit/reference/IndexPage.h"

#include <fmt/format.h>

#include <iterator>
#include <set>
#include <vector>

#include "tarnkit/patches/HXRNode.h"
#include "tools/tarnkit/reference/ExpressionsPage.h"
#include "tools/tarnkit/reference/Html.h"
#include "tools/tarnkit/reference/PageFrame.h"
#include "tools/tarnkit/reference/PatchPage.h"
#include "tools/tarnkit/reference/PatchSummary.h"
#include "tools/tarnkit/reference/PortKinds.h"
#include "tools/tarnkit/reference/ReferencePages.h"
#include "tools/tarnkit/reference/ReferenceParts.h"
#include "tools/tarnkit/reference/ValueHtml.h"

namespace tarnkit::tool {

namespace {

struct Category {
  std::string id;
  std::string_view name;
  std::vector<const HXRNodeClass*> patches;
};

// Other characters than letters and digits as numbers, so that every category has an id of its own.
std::string categoryId(const HXRNodeClass& patch) {
  if (!patch.libraryCategory()) return "page.uncategorised";
  std::string id = "category.";
  for (const char c : patch.libraryCategory().view()) {
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) {
      id += c;
    } else {
      fmt::format_to(std::back_inserter(id), "_{:02X}", static_cast<unsigned char>(c));
    }
  }
  return id;
}

std::vector<Category> categoriesOf(const ReferencePages& pages) {
  std::vector<Category> categories;
  for (const auto* const patch : pages.patches()) {
    std::string id = categoryId(*patch);
    if (categories.empty() || categories.back().id != id) {
      categories.push_back({std::move(id), categoryOf(*patch), {}});
    }
    categories.back().patches.push_back(patch);
  }
  return categories;
}

/// What the search finds a patch by beside its name and text: its classes, its category and the
/// names of its ports.
std::string searchWords(const HXRNodeClass& patch) {
  std::string words =
      fmt::format("{} {} {}", patch.name(), patch.processClassName().view(), categoryOf(patch));
  std::set<std::string_view> names;
  for (const auto& [key, port] : patch.prototype().portLayout().ports()) {
    if (names.insert(port->name()).second) words.append(1, ' ').append(port->name());
  }
  return words;
}

std::string entryOf(const HXRNodeClass& patch, const ReferencePages& pages) {
  return fmt::format(
      "<li data-words=\"{}\" style=\"--patch:{}\"><a href=\"{}\">{}</a>{}<p>{}</p></li>\n",
      escaped(searchWords(patch)), hexText(patch.defaultColor()), pages.linkToPatch(patch),
      escaped(titleOf(patch)), flagsHtml(patch), escaped(firstSentence(summaryOf(patch))));
}

std::string categoryLinks(const std::vector<Category>& categories) {
  std::string html = "<nav class=\"categories\" aria-label=\"Categories\">\n<ul>\n";
  for (const Category& category : categories) {
    html += fmt::format("<li><a href=\"#{}\">{}</a> <span class=\"count\">{}</span></li>\n",
                        category.id, escaped(category.name), category.patches.size());
  }
  return html + "</ul>\n</nav>\n";
}

std::string sectionOf(const Category& category, const ReferencePages& pages) {
  std::string html =
      fmt::format("<section class=\"category\" id=\"{}\">\n<h2>{}</h2>\n<ul class=\"entries\">\n",
                  category.id, escaped(category.name));
  for (const auto* const patch : category.patches) html += entryOf(*patch, pages);
  return html + "</ul>\n</section>\n";
}

std::string legend() {
  std::string html =
      "<section class=\"kinds\" id=\"page.kinds\">\n<h2>What ports carry</h2>\n<dl>\n";
  for (const auto& [kind, text] : kindDescriptions()) {
    html += fmt::format("<dt>{}</dt><dd>{}</dd>\n", kind, text);
  }
  return html + "</dl>\n</section>\n";
}

constexpr const char* kSearchForm =
    "<form class=\"search\" role=\"search\" hidden>\n"
    "<label for=\"page.search\">Search</label>\n"
    "<input id=\"page.search\" type=\"search\" autocomplete=\"off\" spellcheck=\"false\""
    " placeholder=\"Name, class or port\">\n"
    "<p id=\"page.found\" role=\"status\"></p>\n"
    "</form>\n";

}  // namespace

std::string indexPage(const ReferencePages& pages) {
  const auto categories = categoriesOf(pages);
  std::string body = "<a class=\"skip\" href=\"#page.list\">Skip to the patches</a>\n";
  body += fmt::format(
      "<header class=\"title\">\n<h1>Patch reference</h1>\n"
      "<p>What each of the {} patches is for, with its ports and parameters. "
      "<a href=\"#page.kinds\">What ports carry</a> stands at the end; what formulas are made of, "
      "on "
      "<a href=\"{}\">a page of its own</a>.</p>\n{}</header>\n",
      pages.patches().size(), kExpressionsPage, kSearchForm);
  body += "<div class=\"columns\">\n" + categoryLinks(categories) + "<main id=\"page.list\">\n";
  for (const Category& category : categories) body += sectionOf(category, pages);
  body += legend() + "</main>\n</div>\n" + pageFooter();
  body += fmt::format("<script>\n{}</script>\n", kSearchScript);
  return pageFrame("Patch reference", "Every patch by category, with its ports and parameters.",
                   body);
}

std::string linkToCategory(const HXRNodeClass& patch) {
  return fmt::format("{}#{}", ReferencePages::kIndex, categoryId(patch));
}

}  // namespace tarnkit::tool
