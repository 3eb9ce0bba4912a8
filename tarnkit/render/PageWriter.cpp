#include "tarnkit/render/PageWriter.h"

#include <vector>

#include "tarnkit/model/HXNode.h"
#include "tarnkit/render/ConnectionIndex.h"
#include "tarnkit/render/GroupScene.h"
#include "tarnkit/render/Markup.h"
#include "tarnkit/render/PageData.h"
#include "tarnkit/render/PageParts.h"
#include "tarnkit/render/SceneDifference.h"
#include "tarnkit/render/SceneWriter.h"

namespace tarnkit::detail {

namespace {

// Of more the picture would be longer than the data of the whole page.
constexpr std::size_t kMostNodesWithoutScripts = 250;
constexpr std::size_t kPiece = std::size_t{1} << 16;

struct PageGroup {
  const HXGroup* group;
  std::size_t parent;  // index; its own for the first
};

// The group and those below it, nearest first. `all` is false when there are too many.
std::vector<PageGroup> groupsOfPage(const PageSource& source, bool& all) {
  std::vector<PageGroup> groups{{&source.group, 0}};
  const auto* const difference = source.difference;
  for (std::size_t at = 0; at < groups.size(); ++at) {
    const HXGroup& group = *groups[at].group;
    const auto enter = [&](const HXNode& node) {
      const auto& inner = node.subnodeGroup();
      if (!inner) return;
      if (groups.size() == kMostGroupsOfPage) {
        all = false;
      } else {
        groups.push_back({inner.get(), at});
      }
    };
    const bool isGone = difference && difference->isGone(group);
    for (const auto& entry : group.subnodesInForce()) {
      // What went elsewhere from a group that is gone is to be seen there.
      if (!isGone || difference->isGone(*entry.value)) enter(*entry.value);
    }
    if (!difference) continue;
    for (const auto* node : difference->nodesGoneFrom(group)) enter(*node);
  }
  return groups;
}

// What stands in the page for readers without scripts.
std::string pictureOf(const GroupScene& scene, HXPictureReport& report) {
  HXPictureOptions options;
  options.embedded = true;
  options.caption = false;
  options.idPrefix = "g-";  // beside the page's own
  std::string svg;
  SceneWriter writer(scene, options, svg);
  report = {writer.width(), writer.height(), scene.laidOut, scene.notes};
  if (scene.boxes.size() > kMostNodesWithoutScripts) {
    return "<p class=\"bare\">The graph is drawn by a script of this page, which this browser does "
           "not "
           "run.</p>\n";
  }
  writer.write();
  return svg;
}

void appendHead(std::string& out, const PageSource& source) {
  out += "<!doctype html>\n<html lang=\"en\" data-theme=\"";
  out += source.theme == HXPictureTheme::dark ? "dark" : "light";
  out +=
      "\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width,initial-scale=1\">\n<title>";
  appendEscaped(out, titleOfGroup(source.group));
  out += "</title>\n<style>\n:root{";
  out += pictureColors(HXPictureTheme::light);
  out += "}\n:root[data-theme=dark]{color-scheme:dark;";
  out += pictureColors(HXPictureTheme::dark);
  out += "}\n";
  out += pictureStyle();
  out += '\n';
  out += kPageStyle;
  if (source.difference) out += kChangesStyle;
  out += "</style>\n</head>\n";
}

}  // namespace

void writePage(const PageSource& source, HXPagePieces pieces, HXPictureReport* report) {
  bool all = true;
  const auto* const difference = source.difference;
  const std::vector<PageGroup> groups = groupsOfPage(source, all);
  const ConnectionIndex connections(source.group);
  PageTables tables;
  std::string piece;
  std::size_t laidOut = 0;
  HXPictureReport first;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    const HXGroup& group = *groups[i].group;
    const bool isGone = difference && difference->isGone(group);
    const GroupScene scene(group, isGone ? difference->oldConnections() : connections, difference);
    if (i == 0) {
      appendHead(piece, source);
      piece += kPageBodyStart;
      piece.append("<noscript>").append(pictureOf(scene, first)) += "</noscript>\n";
      piece += kPageBodyEnd;
      piece += source.list;
    } else {
      laidOut += scene.laidOut ? 1 : 0;
    }
    piece += "<script type=\"application/json\" data-parent=\"";
    appendNumber(piece, groups[i].parent);
    piece += "\" data-group=\"";
    appendEscaped(piece, scene.keyOf(group));
    piece += "\">";
    appendPageData(piece, scene, tables);
    piece += "</script>\n";
    if (piece.size() < kPiece) continue;
    pieces(piece);
    piece.clear();
  }
  pieces(piece);
  pieces("<script type=\"application/json\" id=\"tables\">");
  tables.write(pieces);
  pieces("</script>\n<script>\n");
  for (const auto script : {kPictureScript, kLargeScript, kPageScript}) pieces(script);
  pieces("</script>\n</body>\n</html>\n");
  if (!report) return;
  *report = std::move(first);
  if (laidOut > 0) {
    report->notes.push_back(std::to_string(laidOut) +
                            (laidOut == 1 ? " group below was" : " groups below were") +
                            " laid out by layers.");
  }
  if (!all) {
    report->notes.push_back("The page holds the pictures of the nearest " +
                            std::to_string(kMostGroupsOfPage) + " groups only.");
  }
}

}  // namespace tarnkit::detail
