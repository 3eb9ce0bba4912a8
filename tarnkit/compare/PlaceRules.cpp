#include <fmt/format.h>

#include <cmath>
#include <map>
#include <utility>

#include "tarnkit/compare/CheckRules.h"
#include "tarnkit/compare/HXAddresses.h"
#include "tarnkit/model/HXGroup.h"

namespace tarnkit::detail {

namespace {

using Code = HXFindingCode;

// Beyond this distance the editor's canvas and the pictures of the library lay out anew.
constexpr float kFar = 100'000;

bool isFinite(HXPoint point) { return std::isfinite(point.x) && std::isfinite(point.y); }

void findNoNumber(CheckReport& report, const CheckedNode& checked) {
  const HXNode& node = *checked.node;
  const HXPoint position = node.position();
  if (!isFinite(position)) {
    report.add(Code::positionNoNumber, *checked.node,
               fmt::format("the position is ({}, {})", position.x, position.y));
  }
  if (node.subnodeGroup() && !isFinite(node.subnodeGroup()->canvasCenter())) {
    const HXPoint center = node.subnodeGroup()->canvasCenter();
    report.add(Code::positionNoNumber, *checked.node,
               fmt::format("the middle of its canvas is at ({}, {})", center.x, center.y));
  }
}

void findFar(CheckReport& report, const CheckedNode& checked) {
  const HXPoint position = checked.node->position();
  if (!isFinite(position) || (std::fabs(position.x) <= kFar && std::fabs(position.y) <= kFar)) {
    return;
  }
  report.add(Code::positionFar, *checked.node,
             fmt::format("the node stands at ({}, {})", position.x, position.y));
}

void findShared(CheckReport& report, const CheckedNode& checked) {
  if (!checked.node->subnodeGroup()) return;
  std::map<std::pair<float, float>, std::pair<HXNode*, std::size_t>> places;
  for (const auto& entry : checked.node->subnodeGroup()->subnodesInForce()) {
    const HXPoint position = entry.value->position();
    if (!isFinite(position)) continue;
    ++places.try_emplace({position.x, position.y}, entry.value.get(), 0).first->second.second;
  }
  for (const auto& place : places) {
    const auto& [first, count] = place.second;
    if (count < 2) continue;
    report.add(Code::positionShared, *first,
               fmt::format("{} nodes of the group stand at ({}, {})", count, place.first.first,
                           place.first.second));
  }
}

void findUnreadableName(CheckReport& report, const CheckedNode& checked) {
  const String& name = checked.node->name();
  if (name.isNil()) return;
  const std::string_view text = name.view();
  const bool isBlank = text.find_first_not_of(" \t\r\n") == std::string_view::npos;
  bool hasControls = false;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    hasControls = hasControls || byte < 0x20U || byte == 0x7FU;
  }
  if (!isBlank && !hasControls) return;
  report.add(
      Code::nameUnreadable, *checked.node,
      isBlank ? "the name of the node is blank" : "the name of the node holds control characters",
      "give it a name");
}

constexpr CheckRule<const CheckedNode> kNodes[] = {
    {Code::positionNoNumber, findNoNumber},
    {Code::positionFar, findFar},
    {Code::positionShared, findShared},
    {Code::nameUnreadable, findUnreadableName},
};

}  // namespace

constinit const CheckRules kPlaceRules{.nodes = kNodes};

}  // namespace tarnkit::detail
