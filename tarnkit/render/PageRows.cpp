#include "tarnkit/render/PageRows.h"

#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/render/Markup.h"

namespace tarnkit::detail {

PageRows::PageRows(const GroupScene& scene, PageTables& tables) : scene_(scene), tables_(tables) {
  places_.reserve(scene.wires.size());
}

const PortPlace* PageRows::placeOf(const HXPort* port) const {
  const auto at = places_.find(port);
  return at == places_.end() ? nullptr : &at->second;
}

void PageRows::collectTold(const HXNode& node, std::int32_t orientation) {
  told_.clear();
  met_.clear();
  const auto tell = [&](const HXPort& port, const HXPortGroup* group) {
    if (met_.insert(&port).second) told_.push_back({&port, group});
  };
  const bool isInput = orientation == HXOrientationInput;
  for (const auto& group : isInput ? node.inputPortGroups() : node.outputPortGroups()) {
    eachPortOfGroup(node, *group, [&](const HXPort& port) { tell(port, group.get()); });
  }
  for (const auto& entry : node.portsInForce()) {
    if (entry.value->orientation() == orientation) tell(*entry.value, nullptr);
  }
}

// Both orders are kept. They are the same, but for a port that stands in a group that is not shown
// and in one that is: that has two rows.
std::int64_t PageRows::sideOf(std::size_t box, std::int32_t orientation) {
  const NodeBox& drawn = scene_.boxes[box];
  const auto& lines = orientation == HXOrientationInput ? drawn.inputs : drawn.outputs;
  box_ = static_cast<std::int32_t>(box);
  count_ = 0;
  json_.assign(1, '[');
  collectTold(*drawn.node, orientation);
  drawn_.clear();
  for (const PortLine& line : lines) {
    if (line.port) drawn_.emplace(line.port, &line);
  }
  auto line = lines.begin();
  for (const Told& told : told_) {
    const bool hasLine = drawn_.erase(told.port) > 0;
    while (hasLine && line != lines.end() && line->port != told.port) addLine(*line++);
    if (hasLine && line != lines.end()) {
      addPort(*told.port, told.group, &*line++, true);
    } else {
      addPort(*told.port, told.group, nullptr, true);
    }
  }
  while (line != lines.end()) addLine(*line++);
  if (json_.back() == ',') json_.pop_back();
  json_ += ']';
  return tables_.sides.numberOf(json_);
}

void PageRows::addRow(std::int64_t row) {
  appendInteger(json_, row);
  json_ += ',';
  ++count_;
}

void PageRows::addLine(const PortLine& line) {
  if (line.port) {
    drawn_.erase(line.port);
    return addPort(*line.port, nullptr, &line, false);
  }
  std::int64_t flags =
      line.kind == PortLine::Kind::collapsed ? PageTables::kCollapsed : PageTables::kHeading;
  if (line.connected) flags |= PageTables::kConnected;
  addRow(tables_.rows.numberOf({flags, tables_.label(line.label)}));
}

std::int64_t PageRows::descriptionOf(const HXPort& port, const HXPortGroup* group,
                                     const PortLine* line) {
  const Label label =
      line ? line->label : Label(titleOfPort(port), NodeBox::kNameFont, NodeBox::kNameRoom);
  const bool isNamed = group && group->groupKey() != HXRDefaultPortGroupKey;
  return tables_.ports.numberOf({tables_.textUnlessNil(port.uniqueKey()), tables_.label(label),
                                 tables_.color(port.defaultColor()),
                                 isNamed ? tables_.text(group->groupKey()) : -1,
                                 group && group->hidden() ? 1 : 0});
}

void PageRows::addPort(const HXPort& port, const HXPortGroup* group, const PortLine* line,
                       bool isTold) {
  std::int64_t flags = isTold ? PageTables::kTold : 0;
  if (line) {
    flags |= PageTables::kDrawn;
    if (line->connected) flags |= PageTables::kConnected;
    if (line->hasChanged) flags |= PageTables::kChanged;
  }
  const PortPlace place{box_, count_, line != nullptr};
  if (const auto [at, isNew] = places_.emplace(&port, place); !isNew && line) at->second = place;
  const std::int64_t description = descriptionOf(port, group, line);
  const std::int64_t value = tables_.value(
      line && !line->connected ? line->value : valueOfPort(port, NodeBox::kValueRoom));
  if (const auto* published = port.symbolicPort()) {
    addRow(tables_.rows.numberOf({flags, description, value, tables_.text(published->name())}));
  } else {
    addRow(tables_.rows.numberOf({flags, description, value}));
  }
}

}  // namespace tarnkit::detail
