#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/platform/collections/MembersOf.h"
#include "tarnkit/text/TextFormat.h"
#include "tarnkit/text/TextWriter.h"

namespace tarnkit::detail {

namespace {

bool isInUse(const HXPatchPort& port) {
  return port.staticValue() || port.symbolicPort() || !port.connections().isEmpty();
}

std::size_t sideIndex(std::int32_t orientation) noexcept {
  return orientation == HXOrientationInput ? 0 : 1;
}

// The keys of the groups of published ports, in their order.
std::vector<String> publishedGroups(const HXNode& node, std::int32_t orientation) {
  std::vector<String> keys;
  std::unordered_set<std::string_view> met;
  for (const auto& port : membersOf<HXSymbolicPort>(node.symbolicPortsInForce(orientation))) {
    if (met.insert(port.groupKey().view()).second) keys.push_back(port.groupKey());
  }
  return keys;
}

}  // namespace

// Whether whoever reads the text finds the port by its key, and as what it is.
bool TextWriter::goesWithoutSaying(const Node& entry, const HXPatchPort& port) {
  const auto fits = [&](const PatchShape::Port* known) {
    return known && known->orientation == port.orientation() &&
           known->relationship == port.connectionRelationship();
  };
  const auto key = port.uniqueKey();
  if (const auto* known = entry.shape->portForKey(key)) return fits(known);
  if (const auto* replicator = as<HXReplicatorNode>(entry.node)) {
    for (const auto& output : replicator->replicatorArrayOutputPortKeyForPort()) {
      if (output.value != key) continue;
      return port.orientation() == HXOrientationOutput &&
             port.connectionRelationship() == HXConnectionRelationshipMany;
    }
  }
  return fits(shapes_.of(*entry.shape->patch, told_).portForKey(key));
}

void TextWriter::writePorts(const Node& entry) {
  std::vector<const HXPatchPort*> told;
  for (const auto& port : entry.node->portsInForce()) {
    if (entry.shape && (!isInUse(*port.value) || goesWithoutSaying(entry, *port.value))) continue;
    if (!entry.shape && !entry.isExplicit && !isInUse(*port.value)) continue;
    told.push_back(port.value.get());
  }
  if (told.empty() && !entry.isExplicit) return;
  lines_.member(text::kPorts);
  lines_.open('[');
  for (const auto* port : told) {
    lines_.element();
    InlineObject object(lines_);
    object.member(text::kKey);
    lines_.text(port->uniqueKey());
    object.member(text::kOrientation);
    lines_.integer(port->orientation());
    if (port->connectionRelationship() != text::usualRelationship(port->orientation())) {
      object.member(text::kRelationship);
      lines_.integer(port->connectionRelationship());
    }
    object.end();
  }
  lines_.close(']');
}

void TextWriter::writePortGroups(const Node& entry, std::int32_t orientation) {
  const HXNode& node = *entry.node;
  const auto published = publishedGroups(node, orientation);
  const bool isReplicator = as<HXReplicatorNode>(&node) != nullptr;
  bool isOpen = false;
  for (const auto& [key, group] : node.portGroupsInForce(orientation)) {
    const bool isPublished = as<HXSymbolicPortGroup>(group.get()) != nullptr;
    const bool isExpectedPublished =
        std::find(published.begin(), published.end(), key) != published.end();
    const bool startsHidden =
        isExpectedPublished
            ? isReplicator && orientation == HXOrientationOutput
            : entry.shape && entry.shape->patch->hiddenPortGroupKeys().contains(key.object().get());
    if (!entry.isExplicit && isPublished == isExpectedPublished &&
        group->hidden() == startsHidden && !group->collapsedCanvasGroup() &&
        !group->collapsedSidebarGroup() && group->groupKey() == key &&
        group->orientation() == orientation) {
      continue;
    }
    if (!isOpen) {
      lines_.member(text::kPortGroups[sideIndex(orientation)]);
      lines_.open('[');
      isOpen = true;
    }
    lines_.element();
    InlineObject object(lines_);
    object.member(text::kKey);
    lines_.text(key);
    const auto flag = [&](std::string_view name, bool value, bool usual) {
      if (value == usual) return;
      object.member(name);
      lines_.boolean(value);
    };
    flag(text::kIsPublished, isPublished, isExpectedPublished);
    // Whoever knows the patch may have another opinion of what is hidden.
    flag(text::kHidden, group->hidden(), entry.isExplicit ? !group->hidden() : startsHidden);
    flag(text::kCollapsedCanvas, group->collapsedCanvasGroup(), false);
    flag(text::kCollapsedSidebar, group->collapsedSidebarGroup(), false);
    if (group->groupKey() != key) {
      object.member(text::kGroupKey);
      lines_.textOrNull(group->groupKey().isNil(), group->groupKey());
    }
    if (group->orientation() != orientation) {
      object.member(text::kOrientation);
      lines_.integer(group->orientation());
    }
    object.end();
  }
  if (isOpen) lines_.close(']');
  writePortGroupOrder(entry, orientation);
}

void TextWriter::writePortGroupOrder(const Node& entry, std::int32_t orientation) {
  std::vector<String> expected;
  if (entry.shape) expected = entry.shape->groupKeys[orientation];
  for (const auto& key : publishedGroups(*entry.node, orientation)) {
    if (std::find(expected.begin(), expected.end(), key) == expected.end()) {
      expected.push_back(key);
    }
  }
  std::vector<String> actual;
  const auto& collection = orientation == HXOrientationInput
                               ? entry.node->inputPortGroupCollection()
                               : entry.node->outputPortGroupCollection();
  const auto keys = collection->portGroupKeys();
  for (const auto& key : *keys) actual.push_back(String::from(key.get()));
  if (actual == expected && !entry.isExplicit) return;
  lines_.member(text::kPortGroupOrder[sideIndex(orientation)]);
  text::writeTexts(lines_, actual);
}

void TextWriter::writeValues(const Node& entry) {
  bool isOpen = false;
  for (const auto& port : entry.node->portsInForce()) {
    if (!port.value->staticValue()) continue;
    if (!isOpen) {
      lines_.member(text::kValues);
      lines_.open('{');
      isOpen = true;
    }
    lines_.member(graph_.memberOf(*port.value));
    writeValue(entry, *port.value);
  }
  if (isOpen) lines_.close('}');
}

void TextWriter::writeValue(const Node& entry, const HXPatchPort& port) {
  const PMRPrimitive& value = *port.staticValue();
  const auto kind = value.storageType();
  const auto [earlier, isNew] = values_.try_emplace(&value, &port);
  const bool isNumber = kind >= PMRPrimitive::index && kind <= PMRPrimitive::degrees;
  const auto* known = entry.shape ? entry.shape->portForKey(port.uniqueKey()) : nullptr;
  const auto usual = text::usualNumber(known ? known->valueKind : PMRPrimitive::nil);
  const auto writePayload = [&] {
    switch (kind) {
      case PMRPrimitive::boolean:
        return lines_.boolean(value.booleanValue());
      case PMRPrimitive::index:
        return lines_.integer(value.indexValue());
      case PMRPrimitive::number:
        return lines_.number(value.numberValue());
      case PMRPrimitive::radians:
        return lines_.number(value.radiansValue());
      case PMRPrimitive::degrees:
        return lines_.number(value.degreesValue());
      case PMRPrimitive::color: {
        const RGBA color = value.colorValue();
        return lines_.numbers({color.red, color.green, color.blue, color.alpha});
      }
      default:
        return lines_.textOrNull(value.stringValue().isNil(), value.stringValue());
    }
  };
  const bool isPlain =
      isNew && !(isNumber && entry.isExplicit) &&
      (isNumber
           ? kind == usual && (kind == PMRPrimitive::index || std::isfinite(value.numberValue()))
           : kind == PMRPrimitive::boolean || kind == PMRPrimitive::color ||
                 (kind == PMRPrimitive::string && !value.stringValue().isNil()));
  if (isPlain) return writePayload();
  InlineObject object(lines_);
  if (!isNew) {
    object.member(text::kSameAs);
    lines_.text(graph_.addressOf(earlier->second));
  } else {
    object.member(text::kKind);
    if (kind < 0 || kind > PMRPrimitive::string) {
      lines_.integer(kind);
    } else {
      lines_.text(text::kValueKinds[static_cast<std::size_t>(kind)]);
      if (kind != PMRPrimitive::nil) {
        object.member(text::kValue);
        writePayload();
      }
    }
  }
  object.end();
}

String TextWriter::publishedName(const HXPort& port) const {
  if (const auto* symbolic = as<HXSymbolicPort>(&port)) return symbolic->name();
  const auto& shape = graph_.nodes()[graph_.indexOf(port.node())].shape;
  const auto* known = shape ? shape->portForKey(port.uniqueKey()) : nullptr;
  return known ? known->name : String();
}

void TextWriter::writePublications(const Node& entry, std::int32_t orientation) {
  bool isOpen = false;
  for (const auto& port :
       membersOf<HXSymbolicPort>(entry.node->symbolicPortsInForce(orientation))) {
    if (!isOpen) {
      lines_.member(text::kPublished[sideIndex(orientation)]);
      lines_.open('[');
      isOpen = true;
    }
    lines_.element();
    writePublication(port, orientation);
  }
  if (isOpen) lines_.close(']');
}

void TextWriter::writePublication(const HXSymbolicPort& port, std::int32_t orientation) {
  const HXPort* const inner = graph_.isHeld(port.port()) ? port.port() : nullptr;
  const auto usual = inner ? inner->connectionRelationship() : text::usualRelationship(orientation);
  const bool hasName = port.name() != (inner ? publishedName(*inner) : String());
  const bool isLinked = inner && inner->symbolicPort() == &port;
  const bool isLinkTold = inner && isLinked != graph_.isFirstPublication(port);
  if (inner && !hasName && !isLinkTold && port.orientation() == orientation &&
      port.connectionRelationship() == usual) {
    return writeAddress(inner);
  }
  InlineObject object(lines_);
  object.member(text::kPort);
  writeAddress(inner);
  if (hasName) {
    object.member(text::kName);
    lines_.textOrNull(port.name().isNil(), port.name());
  }
  if (port.orientation() != orientation) {
    object.member(text::kOrientation);
    lines_.integer(port.orientation());
  }
  if (port.connectionRelationship() != usual) {
    object.member(text::kRelationship);
    lines_.integer(port.connectionRelationship());
  }
  if (isLinkTold) {
    object.member(text::kLinked);
    lines_.boolean(isLinked);
  }
  object.end();
}

void TextWriter::writeArrayOutputs(const Node& entry) {
  const auto* replicator = as<HXReplicatorNode>(entry.node);
  if (!replicator) return;
  const auto outputs = replicator->replicatorArrayOutputPortKeyForPort();
  if (outputs.empty()) return;
  lines_.member(text::kArrayOutputs);
  lines_.open('[');
  for (const auto& output : outputs) {
    lines_.element();
    InlineObject object(lines_);
    object.member(text::kKey);
    lines_.text(output.value);
    object.member(text::kPort);
    writeAddress(output.key.get());
    object.end();
  }
  lines_.close(']');
}

void TextWriter::writeAddress(const HXPort* port) {
  const bool isHere = graph_.isHeld(port);
  lines_.textOrNull(!isHere, isHere ? graph_.addressOf(port) : std::string());
}

// Of several at one input each has a line.
void TextWriter::writeWires(std::uint32_t index) {
  const auto& wires = graph_.wires();
  const auto isHere = [&](std::size_t at) {
    return at < wires.size() && wires[at].isRegular && wires[at].node == index;
  };
  if (!isHere(nextWire_)) return;
  const auto write = [&](const Wire& wire) {
    const auto* const from = wire.connection->displayOutputPort();
    if (wire.outputPlace < 0 && wire.inputPlace < 0) return writeAddress(from);
    InlineObject object(lines_);
    object.member(text::kFrom);
    writeAddress(from);
    writePlaces(object, wire);
    object.end();
  };
  lines_.member(text::kConnections);
  lines_.open('{');
  while (isHere(nextWire_)) {
    const std::string& member = wires[nextWire_].member;
    const std::size_t first = nextWire_;
    while (isHere(nextWire_) && wires[nextWire_].member == member) ++nextWire_;
    lines_.member(member);
    if (nextWire_ == first + 1) {
      write(wires[first]);
      continue;
    }
    lines_.open('[');
    for (std::size_t at = first; at < nextWire_; ++at) {
      lines_.element();
      write(wires[at]);
    }
    lines_.close(']');
  }
  lines_.close('}');
}

void TextWriter::writePlaces(InlineObject& object, const Wire& wire) {
  if (wire.outputPlace >= 0) {
    object.member(text::kOutputPlace);
    lines_.integer(wire.outputPlace);
  }
  if (wire.inputPlace >= 0) {
    object.member(text::kInputPlace);
    lines_.integer(wire.inputPlace);
  }
}

void TextWriter::writeOtherWires() {
  const auto& wires = graph_.wires();
  if (nextWire_ == wires.size()) return;
  lines_.member(text::kOtherConnections);
  lines_.open('[');
  for (; nextWire_ < wires.size(); ++nextWire_) {
    const Wire& wire = wires[nextWire_];
    const HXConnection& connection = *wire.connection;
    lines_.element();
    InlineObject object(lines_);
    const auto end = [&](std::string_view key, const HXPort* port) {
      object.member(key);
      writeAddress(port);
    };
    end(text::kOutput, connection.outputPort());
    end(text::kInput, connection.inputPort());
    end(text::kShownOutput, connection.displayOutputPort());
    end(text::kShownInput, connection.displayInputPort());
    object.member(text::kHeldBy);
    lines_.text(wire.heldByInput && wire.heldByOutput ? text::kBoth
                : wire.heldByInput                    ? text::kInput
                                                      : text::kOutput);
    writePlaces(object, wire);
    object.end();
  }
  lines_.close(']');
}

}  // namespace tarnkit::detail
