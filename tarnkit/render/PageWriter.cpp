#include "tarnkit/render/PageWriter.h"

#include <vector>

#include "tarnkit/model/HXNode.h"
#include "tarnkit/render/ConnectionIndex.h"
#include "tarnkit/render/GroupScene.h"
#include "tarnkit/render/HXGraphPage.h"
#include "tarnkit/render/Markup.h"
#include "tarnkit/render/PageData.h"
#include "tarnkit/render/PageParts.h"
#include "tarnkit/render/SceneDifference.h"
#include "tarnkit/render/SceneWriter.h"

namespace tarnkit::detail {

namespace {

// Of more nodes than these the page's script shows only what is to be seen (`isLarge`).
constexpr std::size_t kLargeGroup = 800;

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

std::string pictureOf(const GroupScene& scene, std::size_t index, HXPictureReport* report) {
  HXPictureOptions options;
  options.embedded = true;
  options.caption = false;
  // Keys of a file need not be unique.
  options.idPrefix = "g" + std::to_string(index) + "-";
  std::string svg;
  SceneWriter writer(scene, options, svg);
  // Its texts would be set only to be too small to read.
  if (scene.boxes.size() > kLargeGroup) writer.addClasses(" is-distant is-far");
  writer.write();
  if (report) *report = {writer.width(), writer.height(), scene.laidOut, scene.notes};
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

std::string makePage(const PageSource& source, HXPictureReport* report) {
  bool all = true;
  const auto* const difference = source.difference;
  const std::vector<PageGroup> groups = groupsOfPage(source, all);
  const ConnectionIndex connections(source.group);
  std::string page;
  std::string data;
  std::string pictures;
  std::size_t laidOut = 0;
  HXPictureReport first;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    const HXGroup& group = *groups[i].group;
    const bool isGone = difference && difference->isGone(group);
    const GroupScene scene(group, isGone ? difference->oldConnections() : connections, difference);
    if (i == 0) {
      appendHead(page, source);
      page += kPageBodyStart;
      page += pictureOf(scene, i, &first);
      page += kPageBodyEnd;
      page += source.list;
    } else {
      laidOut += scene.laidOut ? 1 : 0;
      pictures += "<template data-picture>";
      pictures += pictureOf(scene, i, nullptr);
      pictures += "</template>\n";
    }
    data += "<script type=\"application/json\" data-parent=\"";
    appendNumber(data, groups[i].parent);
    data += "\" data-group=\"";
    appendEscaped(data, scene.keyOf(group));
    data += "\">";
    appendPageData(data, scene);
    data += "</script>\n";
  }
  page += pictures;
  page += data;
  page += "<script>\n";
  page += kPageScript;
  page += "</script>\n</body>\n</html>\n";
  if (report) {
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
  return page;
}

}  // namespace tarnkit::detail
