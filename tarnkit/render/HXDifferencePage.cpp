#include "tarnkit/render/HXDifferencePage.h"

#include "tarnkit/compare/HXDocumentDifference.h"
#include "tarnkit/render/Markup.h"
#include "tarnkit/render/PageWriter.h"
#include "tarnkit/render/SceneDifference.h"

namespace tarnkit {

namespace {

using namespace detail;

const char* classOf(const HXDocumentChange& change) {
  switch (change.sign()) {
    case '+':
      return "is-added";
    case '-':
      return "is-removed";
    default:
      return "is-changed";
  }
}

void appendChange(std::string& out, const HXDocumentChange& change,
                  const SceneDifference& difference) {
  const auto place = difference.placeOf(change);
  out += "<li><button type=\"button\" class=\"change ";
  out += classOf(change);
  out += "\" data-group=\"";
  appendEscaped(out, difference.keyOf(*place.group));
  if (place.node) {
    out += "\" data-node=\"";
    appendEscaped(out, difference.keyOf(*place.node));
  }
  out += "\"><b aria-hidden=\"true\">";
  out += change.sign() == '-' ? "−" : std::string(1, change.sign());
  out += "</b><span dir=\"auto\">";
  appendEscaped(out, change.description());
  for (const auto& consequence : change.consequences) {
    out += "<small>";
    appendEscaped(out, consequence);
    out += "</small>";
  }
  out += "</span></button></li>\n";
}

// Under headings, as the changes are told.
std::string listOf(const std::vector<HXDocumentChange>& changes,
                   const SceneDifference& difference) {
  std::string out = "<nav class=\"changes\" id=\"changes\" aria-label=\"Changes\">\n<h2>";
  appendNumber(out, changes.size());
  out += changes.size() == 1 ? " change" : " changes";
  out +=
      "</h2>\n<p class=\"legend\"><span class=\"is-added\"><b>+</b> added</span> "
      "<span class=\"is-removed\"><b>−</b> removed</span> "
      "<span class=\"is-changed\"><b>~</b> changed</span></p>\n"
      "<p class=\"legend needs-script\"><kbd>n</kbd> next <kbd>p</kbd> previous</p>\n";
  const std::string* heading = nullptr;
  for (const auto& change : changes) {
    if (!heading || *heading != change.address) {
      out += heading ? "</ul>\n<h3 dir=\"auto\">" : "<h3 dir=\"auto\">";
      appendEscaped(out, change.address == "/" ? "Document" : change.address);
      out += "</h3>\n<ul>\n";
    }
    heading = &change.address;
    appendChange(out, change, difference);
  }
  if (heading) out += "</ul>\n";
  out += "</nav>\n";
  return out;
}

}  // namespace

void writeDifferencePage(const HXDocument& oldDocument, const HXDocument& newDocument,
                         const HXDocumentDifference& difference,
                         const HXDifferencePageOptions& options, HXPagePieces pieces,
                         HXPictureReport* report) {
  std::vector<HXDocumentChange> changes;
  for (const auto& change : difference.changes()) {
    if (options.viewState || !change.isViewState()) changes.push_back(change);
  }
  const SceneDifference scene(oldDocument, newDocument, difference.matching(), changes);
  writePage({*newDocument.subnodeGroup(), options.theme, &scene, listOf(changes, scene)}, pieces,
            report);
}

std::string differencePage(const HXDocument& oldDocument, const HXDocument& newDocument,
                           const HXDocumentDifference& difference,
                           const HXDifferencePageOptions& options, HXPictureReport* report) {
  std::string page;
  writeDifferencePage(
      oldDocument, newDocument, difference, options, [&](std::string_view piece) { page += piece; },
      report);
  return page;
}

}  // namespace tarnkit
