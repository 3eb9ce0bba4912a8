#include "tools/tarnkit/reference/PatchPage.h"

#include <fmt/format.h>

#include <string_view>
#include <vector>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXGroup.h"
#include "tarnkit/patches/HXRNodeClass.h"
#include "tarnkit/render/HXGraphPicture.h"
#include "tools/tarnkit/reference/ExpressionsPage.h"
#include "tools/tarnkit/reference/Html.h"
#include "tools/tarnkit/reference/IndexPage.h"
#include "tools/tarnkit/reference/PageFrame.h"
#include "tools/tarnkit/reference/PatchSummary.h"
#include "tools/tarnkit/reference/PatchTables.h"
#include "tools/tarnkit/reference/ReferencePages.h"
#include "tools/tarnkit/reference/RelatedPatches.h"

namespace tarnkit::tool {

namespace {

using Patches = std::vector<const HXRNodeClass*>;

std::string patchLink(const HXRNodeClass& patch, const ReferencePages& pages) {
  return fmt::format("<a href=\"{}\">{}</a>{}", pages.linkToPatch(patch), escaped(titleOf(patch)),
                     flagsHtml(patch));
}

std::string pictureOf(const HXRNodeClass& patch) {
  const auto document = patch.documentGraph();
  auto& drawn = *as<HXDocument>(document.get());
  drawn.setName(String(titleOf(patch)));  // what the picture is called for those who hear it
  HXPictureOptions options;
  options.embedded = true;
  options.caption = false;
  options.idPrefix = anchorOf(patch) + ".";
  return fmt::format("<figure class=\"picture\">\n{}\n</figure>\n",
                     graphPicture(*drawn.subnodeGroup(), options));
}

std::string fact(const char* name, const std::string& value) {
  return fmt::format("<dt>{}</dt><dd>{}</dd>\n", name, value);
}

std::string factsOf(const HXRNodeClass& patch, const ReferencePages& pages) {
  std::string html = "<dl class=\"facts\">\n";
  html += fact("Category", fmt::format("<a href=\"{}\">{}</a>", linkToCategory(patch),
                                       escaped(categoryOf(patch))));
  html += fact("Class", codeHtml(patch.name()));
  html += fact("Device class", codeHtml(patch.processClassName()));
  const auto* const base = patch.base();
  if (base && pages.pageOf(*base)) html += fact("A kind of", patchLink(*base, pages));
  if (patch.allowsSubnodes()) html += fact("Holds", "other patches");
  if (patch.hiddenInLibrary()) html += fact("Library", "does not list it; documents may hold it");
  if (patch.secretInLibrary()) html += fact("Library", "keeps it a secret");
  return html + "</dl>\n";
}

/// One patch of the page, under a heading of that level; `links` stand below its text.
std::string partOf(const HXRNodeClass& patch, const ReferencePages& pages, int level,
                   const std::string& links) {
  std::string html =
      fmt::format("<article class=\"patch\" id=\"{}\">\n<h{}>{}{}</h{}>\n", anchorOf(patch), level,
                  escaped(titleOf(patch)), flagsHtml(patch), level);
  html += fmt::format("<p class=\"lead\">{}</p>\n", escaped(summaryOf(patch)));
  html += expressionsLink(patch);
  html +=
      links + "<div class=\"overview\">\n" + pictureOf(patch) + factsOf(patch, pages) + "</div>\n";
  html += patchTables(patch, pages, level + 1);
  return html + "</article>\n";
}

std::string variantsOf(const ReferencePage& page, const ReferencePages& pages) {
  if (page.patches.size() < 2) return {};
  std::string html =
      "<nav class=\"variants\" aria-label=\"Patches on this page\">\n"
      "<span>Also on this page</span>\n<ul>\n";
  for (std::size_t i = 1; i < page.patches.size(); ++i) {
    html += fmt::format("<li>{}</li>\n", patchLink(*page.patches[i], pages));
  }
  return html + "</ul>\n</nav>\n";
}

std::string linkList(std::string_view name, const Patches& patches, const ReferencePages& pages) {
  if (patches.empty()) return {};
  std::string html = fmt::format("<dt>{}</dt><dd><ul>\n", name);
  for (const auto* const patch : patches) {
    html += fmt::format("<li>{}</li>\n", patchLink(*patch, pages));
  }
  return html + "</ul></dd>\n";
}

std::string relatedLinks(const ReferencePage& page, const ReferencePages& pages,
                         const RelatedPatches& related) {
  const Relations relations = related.relationsOf(page);
  const std::string lists =
      linkList("A kind of", relations.bases, pages) +
      linkList("Kinds of it", relations.derived, pages) +
      linkList("Goes with", relations.partners, pages) +
      linkList("Similar", relations.similar, pages) +
      linkList(fmt::format("More in {}", escaped(categoryOf(*page.patches.front()))),
               relations.neighbours, pages);
  if (lists.empty()) return {};
  return fmt::format(
      "<nav class=\"related\" aria-labelledby=\"page.related\">\n"
      "<h2 id=\"page.related\">Related</h2>\n<dl>\n{}</dl>\n</nav>\n",
      lists);
}

}  // namespace

std::string patchPage(const ReferencePage& page, const ReferencePages& pages,
                      const RelatedPatches& related) {
  const HXRNodeClass& first = *page.patches.front();
  std::string body = fmt::format(
      "<nav class=\"top\" aria-label=\"Where this page stands\">\n"
      "<a href=\"{}\">Patch reference</a>\n<a href=\"{}\">{}</a>\n</nav>\n<main>\n",
      ReferencePages::kIndex, linkToCategory(first), escaped(categoryOf(first)));
  for (const auto* const patch : page.patches) {
    const bool isFirst = patch == &first;
    body += partOf(*patch, pages, isFirst ? 1 : 2, isFirst ? variantsOf(page, pages) : "");
  }
  body += "</main>\n" + relatedLinks(page, pages, related) + pageFooter();
  return pageFrame(fmt::format("{} – Patch reference", titleOf(first)),
                   firstSentence(summaryOf(first)), body);
}

std::string flagsHtml(const HXRNodeClass& patch) {
  std::string html;
  if (patch.hiddenInLibrary()) html += " <span class=\"flag\">hidden</span>";
  if (patch.secretInLibrary()) html += " <span class=\"flag\">secret</span>";
  return html;
}

}  // namespace tarnkit::tool
