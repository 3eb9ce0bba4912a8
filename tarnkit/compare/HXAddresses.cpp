#include "tarnkit/compare/HXAddresses.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <unordered_set>
#include <vector>

#include "tarnkit/model/HXGroup.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/platform/text/JSONWriter.h"

namespace tarnkit {

namespace {

// Up to so many ports are compared one by one.
constexpr std::uint32_t kFewPorts = 64;

// What a node goes by as long as nothing else tells it apart.
std::string_view ownName(const HXNode& node) {
  if (node.name()) return node.name().view();
  if (node.unknownPatchClass()) return node.unknownPatchClass().view();
  const String& name = node.patchClass().defaultName();
  return name ? name.view() : "Untitled";
}

}  // namespace

std::string HXAddresses::escaped(std::string_view name) {
  std::string text;
  JSONWriter::appendEscaped(text, name);
  return text;
}

std::string HXAddresses::quoted(const String& name) {
  return name.isNil() ? "no name" : "\"" + escaped(name.view()) + "\"";
}

void HXAddresses::count(const HXGroup& group) {
  // A label that is given may be the own name of a later node ("Page [2]"), which then moves on.
  std::unordered_map<std::string_view, std::uint32_t> numbers;
  std::unordered_set<std::string> taken;
  for (const auto& subnode : group.subnodesInForce()) {
    const HXNode& node = *subnode.value;
    const std::string_view name = ownName(node);
    std::uint32_t& number = numbers[name];
    std::string label;
    do {
      ++number;
      label = number == 1 ? escaped(name) : fmt::format("{} [{}]", escaped(name), number);
    } while (!taken.insert(label).second);
    labels_[&node] = std::move(label);
  }
}

const std::string& HXAddresses::labelOf(const HXNode& node) {
  if (const auto found = labels_.find(&node); found != labels_.end()) return found->second;
  if (const HXGroup* group = node.parentGroup()) count(*group);
  const auto [entry, isNew] = labels_.try_emplace(&node);
  if (isNew) entry->second = escaped(ownName(node));
  return entry->second;
}

std::string HXAddresses::of(const HXNode& node) {
  std::vector<const HXNode*> path;
  for (const HXNode* place = &node; place->enclosingNode(); place = place->enclosingNode()) {
    path.push_back(place);
  }
  if (path.empty()) return "/";
  std::string address;
  for (auto place = path.rbegin(); place != path.rend(); ++place) {
    if (!address.empty()) address += " / ";
    address += labelOf(**place);
  }
  return address;
}

const HXAddresses::PortsByName& HXAddresses::portsByName(const HXNode& node, bool inputs) {
  const auto [entry, isNew] = (inputs ? inputs_ : outputs_).try_emplace(&node);
  if (!isNew) return entry->second;
  for (const Ref<HXPort>& port : inputs ? node.inputPorts() : node.outputPorts()) {
    const String name = port->displayName();
    if (!name) continue;
    const auto [known, isFirst] = entry->second.try_emplace(name.toStdString(), port.get());
    if (!isFirst) known->second = nullptr;
  }
  return entry->second;
}

bool HXAddresses::sharesName(const HXPort& port, const String& name) {
  const HXNode* node = port.node();
  if (!node) return false;
  const bool isInput = port.orientation() == HXOrientationInput;
  const bool hasFew =
      node->portsInForce().size() <= kFewPorts &&
      node->symbolicPortsInForce(isInput ? HXOrientationInput : HXOrientationOutput).count() == 0;
  if (!hasFew) {
    const auto& ports = portsByName(*node, isInput);
    const auto found = ports.find(name.toStdString());
    return found != ports.end() && found->second != &port;
  }
  const auto isAnother = [&](const HXPort& other) {
    return &other != &port && other.orientation() == port.orientation() &&
           other.displayName() == name;
  };
  // Hidden ports are asked, too, since listing what is shown costs more; names are seldom shared.
  const auto& all = node->portsInForce();
  if (std::none_of(all.begin(), all.end(), [&](const auto& e) { return isAnother(*e.value); })) {
    return false;
  }
  const auto shown = isInput ? node->inputPorts() : node->outputPorts();
  return std::any_of(shown.begin(), shown.end(), [&](const auto& e) { return isAnother(*e); });
}

std::string HXAddresses::labelOf(const HXPort& port) {
  const String name = port.displayName();
  return escaped(!name || sharesName(port, name) ? port.uniqueKey().view() : name.view());
}

std::string HXAddresses::of(const HXPort& port) {
  const HXNode* node = port.node();
  return node ? of(*node) + ": " + labelOf(port) : escaped(port.uniqueKey().view());
}

}  // namespace tarnkit
