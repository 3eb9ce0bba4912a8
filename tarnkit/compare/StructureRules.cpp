#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>

#include "tarnkit/compare/CheckRules.h"
#include "tarnkit/compare/HXAddresses.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/patches/HXRTypedPorts.h"

namespace tarnkit::detail {

namespace {

using Code = HXFindingCode;

void findUnknownPatch(CheckReport& report, const CheckedNode& checked) {
  const String& name = checked.node->unknownPatchClass();
  if (!name) return;
  report.add(Code::patchUnknown, *checked.node,
             fmt::format("nobody knows the patch {}; the device is told of one that does nothing",
                         HXAddresses::escaped(name.view())),
             "load the plug-in that brings it, or replace it");
}

bool hasPatch(const HXNode& node) { return !node.unknownPatchClass().isNil() || node.patch(); }
bool hasNodes(const HXNode& node) {
  return node.subnodeGroup() && !node.subnodeGroup()->subnodesInForce().empty();
}

void findNoPatch(CheckReport& report, const CheckedNode& checked) {
  if (hasPatch(*checked.node) || checked.node->subnodeGroup()) return;
  report.add(Code::patchMissing, *checked.node, "the node has no patch, and does nothing",
             "give it a patch, or remove it");
}

void findRetired(CheckReport& report, const CheckedNode& checked) {
  if (!checked.traits->isHidden) return;
  report.add(
      Code::patchRetired, *checked.node,
      fmt::format("the patch {} is not offered any more", checked.node->patchClass().name()));
}

void findEmptyGroup(CheckReport& report, const CheckedNode& checked) {
  const HXNode& node = *checked.node;
  if (!node.subnodeGroup() || hasPatch(node) || hasNodes(node) ||
      checked.node == &report.document()) {
    return;
  }
  for (const auto side : kBothSides) {
    if (node.symbolicPortsInForce(side).count() != 0) return;
  }
  report.add(Code::groupEmpty, *checked.node, "the group is empty");
}

void findEmptyContainer(CheckReport& report, const CheckedNode& checked) {
  const PatchTraits& traits = *checked.traits;
  if (!(traits.isReplicator || traits.isLoop || traits.isRemoteGroup) || hasNodes(*checked.node)) {
    return;
  }
  report.add(Code::containerEmpty, *checked.node, "no nodes stand in it that it could work on");
}

void findEmptyDocument(CheckReport& report, HXDocument& document) {
  if (report.nodes().size() > 1) return;
  report.add(Code::documentEmpty, document, "the document is empty");
}

void findUnread(CheckReport& report, const CheckedNode& checked) {
  const HXNode& node = *checked.node;
  if (checked.traits->actsByItself || node.subnodeGroup() || !node.patch()) return;
  bool hasOutputs = false;
  for (const auto& entry : node.portsInForce()) {
    const HXPatchPort& port = *entry.value;
    if (port.orientation() != HXOrientationOutput) continue;
    if (port.symbolicPort() || !port.connections().isEmpty()) return;
    hasOutputs = true;
  }
  if (!hasOutputs) return;
  report.add(Code::nodeUnread, *checked.node,
             "nothing reads the node, and it does nothing by itself", "join it, or remove it");
}

// A kind of which no value can be typed. A filter or a gesture is left out by choice.
const char* missingKind(const HXRPort& port) {
  const struct {
    const HXRPortClass& kind;
    const char* phrase;
  } kinds[] = {
      {HXRImageInputPort::kClass, "an image"},
      {HXRArrayInputPort::kClass, "an array"},
      {HXRDictionaryInputPort::kClass, "a dictionary"},
      {HXRViewInputPort::kClass, "a remote group"},
  };
  for (const auto& row : kinds) {
    if (&port.isa() == &row.kind) return row.phrase;
  }
  return nullptr;
}

void findMissingInput(CheckReport& report, HXPatchPort& port) {
  if (port.orientation() != HXOrientationInput || !port.connections().isEmpty()) return;
  const HXRPort* definition = port.definition();
  const char* kind = definition ? missingKind(*definition) : nullptr;
  if (!kind) return;
  report.add(Code::inputMissing, port,
             fmt::format("the input takes {} from a wire, and has none", kind));
}

void findOutside(CheckReport& report, const CheckedNode& checked) {
  const bool replicator = checked.traits->asksReplicator && !checked.isInReplicator;
  if (!replicator && !(checked.traits->asksLoop && !checked.isInLoop)) return;
  report.add(Code::variablesOutside, *checked.node,
             fmt::format("the node stands in no {}", replicator ? "replicator" : "loop"));
}

void findUnpaired(CheckReport& report, const CheckedNode& checked) {
  const bool isInput = checked.traits->isStateInput;
  if (!isInput && !checked.traits->isStateOutput) return;
  const HXRPortClass& kind = isInput ? HXRFeedbackInputPort::kClass : HXRFeedbackOutputPort::kClass;
  for (const auto& entry : checked.node->portsInForce()) {
    const HXRPort* definition = entry.value->definition();
    if (!definition || !definition->isKindOf(kind)) continue;
    if (entry.value->symbolicPort() || !entry.value->connections().isEmpty()) return;
  }
  report.add(Code::stateUnpaired, *checked.node,
             isInput ? "no State Output is joined to it, so the value is kept for nobody"
                     : "it is joined to no State Input, so its value never changes");
}

void findSameKeys(CheckReport& report, HXDocument&) {
  std::unordered_set<std::string_view> keys;
  for (const CheckedNode& checked : report.nodes()) {
    const std::string_view key = checked.node->uniqueKey().view();
    if (keys.insert(key).second) continue;
    report.add(Code::keyTwice, *checked.node,
               fmt::format("another node has the key {}, too", HXAddresses::escaped(key)),
               "save the document without keys");
  }
}

constexpr CheckRule<const CheckedNode> kNodes[] = {
    {Code::patchUnknown, findUnknownPatch},     {Code::patchMissing, findNoPatch},
    {Code::patchRetired, findRetired},          {Code::groupEmpty, findEmptyGroup},
    {Code::containerEmpty, findEmptyContainer}, {Code::nodeUnread, findUnread},
    {Code::variablesOutside, findOutside},      {Code::stateUnpaired, findUnpaired},
};
constexpr CheckRule<HXPatchPort> kPorts[] = {
    {Code::inputMissing, findMissingInput},
};
constexpr CheckRule<HXDocument> kDocument[] = {
    {Code::documentEmpty, findEmptyDocument},
    {Code::keyTwice, findSameKeys},
};

}  // namespace

constinit const CheckRules kStructureRules{.document = kDocument, .nodes = kNodes, .ports = kPorts};

}  // namespace tarnkit::detail
