#include "tarnkit/render/NodeBox.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/collections/MembersOf.h"

namespace tarnkit::detail {

namespace {

constexpr double kTitleRoom = 190;
constexpr double kLeastWidth = 100;
constexpr double kColumnGap = 18;

double valueWidth(const PortValue& value) {
  switch (value.kind) {
    case PortValue::Kind::none:
      return 0;
    case PortValue::Kind::boolean:
      return NodeBox::kSwitchWidth;
    case PortValue::Kind::color:
      return NodeBox::kSwatchWidth;
    case PortValue::Kind::text:
      return value.text.width + 2 * NodeBox::kChipPadding;
  }
  return 0;
}

}  // namespace

String titleOfNode(const HXNode& node) {
  // Without a patch a node that was opened is named after the root of all definitions.
  const String& byPatch = node.patchClass().defaultName();
  if (node.name() && (node.patch() || node.name() != byPatch)) return node.name();
  static const String untitled = String::interned("Untitled");
  return node.patch() ? byPatch : untitled;
}

String titleOfGroup(const HXGroup& group) {
  const HXNode* const node = group.node();
  if (!node) return String::interned("Group");
  // A document takes its name from its patch, which says nothing to anybody.
  const bool unnamed = !node->name() || node->name() == node->patchClass().defaultName();
  return as<HXDocument>(node) && unnamed ? String::interned("Document") : titleOfNode(*node);
}

String titleOfPort(const HXPort& port) {
  String name = port.displayName();
  return name ? name : port.uniqueKey();
}

String patchNameOfNode(const HXNode& node) {
  return node.patch() ? node.patch()->isa().nameString() : node.unknownPatchClass();
}

void eachPortOfGroup(const HXNode& node, const HXPortGroup& group,
                     FunctionRef<void(const HXPort&)> visit) {
  if (const auto* symbolic = as<HXSymbolicPortGroup>(&group)) {
    if (!symbolic->symbolicPorts()) return;
    for (const auto& port : membersOf<HXPort>(*symbolic->symbolicPorts())) visit(port);
    return;
  }
  const Ref<const OrderedSet> keys = group.portKeys();
  if (!keys) return;
  for (const auto& key : *keys) {
    if (const auto* port = node.portsInForce().find(String::from(key.get()))) visit(**port);
  }
}

NodeBox::NodeBox(const HXNode& drawn, IsConnected isConnected, PortIsAt portIsAt) : node(&drawn) {
  double room = kTitleRoom;
  // Every view patch may hold nodes; one that holds none is not marked.
  const auto& group = drawn.subnodeGroup();
  if (group && (!drawn.patch() || !group->subnodesInForce().empty())) {
    const std::string count = std::to_string(group->subnodesInForce().size());
    countText = Label(String(count), kCountFont, kTitleRoom);
    room -= badgeWidth() + kGap;
  }
  assert(room > 0);
  title = Label(titleOfNode(drawn), kTitleFont, room);
  if (!drawn.unknownPatchClass().isNil()) {
    const std::string text = "Unknown patch " + drawn.unknownPatchClass().toStdString();
    complaint = Label(String(text), kValueFont, kTitleRoom);
  } else if (!drawn.patch() && !drawn.subnodeGroup()) {
    static const String missing = String::interned("No patch");
    complaint = Label(missing, kValueFont, kTitleRoom);
  }
  addLines(inputs, HXOrientationInput, isConnected, portIsAt);
  addLines(outputs, HXOrientationOutput, isConnected, portIsAt);
  measure();
}

void NodeBox::addPortLine(std::vector<PortLine>& lines, const HXPort& port, IsConnected isConnected,
                          PortIsAt portIsAt) {
  if (!portIsAt(port, lineY(lines.size()))) return;
  PortLine& line = lines.emplace_back();
  line.port = &port;
  line.connected = isConnected(port);
  line.label = Label(titleOfPort(port), kNameFont, kNameRoom);
  if (!line.connected) line.value = valueOfPort(port, kValueRoom);
}

void NodeBox::addLines(std::vector<PortLine>& lines, std::int32_t orientation,
                       IsConnected isConnected, PortIsAt portIsAt) {
  const auto groups =
      orientation == HXOrientationInput ? node->inputPortGroups() : node->outputPortGroups();
  for (const auto& group : groups) {
    if (group->hidden()) continue;
    const bool named = group->groupKey() && group->groupKey() != HXRDefaultPortGroupKey;
    if (group->collapsedCanvasGroup()) {
      PortLine line;
      line.kind = PortLine::Kind::collapsed;
      line.group = group.get();
      static const String ports = String::interned("Ports");
      line.label = Label(named ? group->groupKey() : ports, kHeadingFont, kNameRoom);
      bool any = false;
      eachPortOfGroup(*node, *group, [&](const HXPort& port) {
        any |= portIsAt(port, lineY(lines.size()));
        line.connected |= isConnected(port);
      });
      if (any) lines.push_back(std::move(line));
      continue;
    }
    const std::size_t before = lines.size();
    if (named) {
      PortLine& line = lines.emplace_back();
      line.kind = PortLine::Kind::heading;
      line.group = group.get();
      line.label = Label(group->groupKey(), kHeadingFont, kNameRoom + kValueRoom);
    }
    const std::size_t heading = lines.size();
    eachPortOfGroup(*node, *group,
                    [&](const HXPort& port) { addPortLine(lines, port, isConnected, portIsAt); });
    if (lines.size() == heading) lines.resize(before);
  }
  // The ports of a patch that is not here stand in no group.
  if (node->patch()) return;
  for (const auto& entry : node->portsInForce()) {
    if (entry.value->orientation() == orientation) {
      addPortLine(lines, *entry.value, isConnected, portIsAt);
    }
  }
}

void NodeBox::measure() {
  double names = 0;
  double values = 0;
  double headings = 0;
  for (const PortLine& line : inputs) {
    if (line.kind == PortLine::Kind::port) {
      names = std::max(names, line.label.width);
      values = std::max(values, valueWidth(line.value));
    } else {
      headings = std::max(headings, line.label.width + kChevronWidth);
    }
  }
  double right = 0;
  for (const PortLine& line : outputs) {
    const double chevron = line.kind == PortLine::Kind::collapsed ? kChevronWidth : 0;
    right = std::max(right, line.label.width + chevron);
  }
  valueX = kInset + names + kGap;
  const double left = std::max(values > 0 ? names + kGap + values : names, headings);
  const double columns = left + right + (left > 0 && right > 0 ? kColumnGap : 0);
  const double head = title.width + (hasBadge() ? badgeWidth() + kGap : 0);
  width = std::ceil(std::max(
      {kLeastWidth, head + 2 * kInset, columns + 2 * kInset, complaint.width + 2 * kInset}));
  const std::size_t lines =
      std::max(inputs.size(), outputs.size()) + (complaint.full.isNil() ? 0U : 1U);
  height = kTitleHeight;
  if (lines > 0) height += 2 * kPadding + static_cast<double>(lines) * kLineHeight;
}

}  // namespace tarnkit::detail
