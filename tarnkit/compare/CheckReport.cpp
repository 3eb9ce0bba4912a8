#include "tarnkit/compare/CheckReport.h"

#include <algorithm>
#include <utility>

#include "tarnkit/compare/HXAddresses.h"
#include "tarnkit/model/HXImageStoreEntry.h"
#include "tarnkit/model/HXLookup.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/HXRTypedPorts.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/patches/catalogue/math/HXRMathExpressionNode.h"
#include "tarnkit/patches/catalogue/utility/HXRJavascriptExpressionNode.h"

namespace tarnkit::detail {

namespace {

PatchTraits makeTraits(const HXRNodeClass& patch) {
  PatchTraits traits;
  traits.isView = patch.isKindOf(HXRViewNode) || patch.isKindOf(HXRRemoteGroupProcessorNode);
  traits.isHidden = patch.hiddenInLibrary();
  traits.isPlugIn = HXRNode::hx_isExternalClass(patch);
  traits.isReplicator = patch.isKindOf(HXRReplicatorNode);
  traits.isLoop = patch.isKindOf(HXRLoopNode);
  traits.isRemoteGroup = patch.isKindOf(HXRRemoteGroupNode);
  traits.isStateInput = patch.isKindOf(HXRStateInputNode);
  traits.isStateOutput = patch.isKindOf(HXRStateOutputNode);
  traits.asksReplicator = patch.isKindOf(HXRReplicatorVariablesNode);
  traits.asksLoop = patch.isKindOf(HXRLoopVariablesNode) || patch.isKindOf(HXRLoopControlNode);
  traits.isMathExpression = patch.isKindOf(HXRMathExpressionNode::kClass);
  traits.isScript = patch.isKindOf(HXRJavascriptExpressionNode::kClass);
  traits.actsByItself =
      traits.isView || traits.isPlugIn || traits.isScript || patch.isKindOf(HXRStatusBarNode);
  return traits;
}

std::string addressOf(HXAddresses& addresses, const Object* place) {
  if (const auto* node = as<HXNode>(place)) return addresses.of(*node);
  if (const auto* port = as<HXPort>(place)) return addresses.of(*port);
  if (const auto* parameter = as<HXParameter>(place)) {
    const HXNode* node = parameter->node();
    const String name = parameter->name() ? parameter->name() : parameter->uniqueKey();
    const std::string own = name ? HXAddresses::escaped(name.view()) : "a parameter";
    return node ? addresses.of(*node) + ": " + own : own;
  }
  if (const auto* image = as<HXImageStoreEntry>(place)) {
    return "/: image " + HXAddresses::escaped(image->key().view());
  }
  return "/";
}

std::string keyOf(const Object* place) {
  if (const auto* node = as<HXNode>(place)) return node->uniqueKey().toStdString();
  if (const auto* port = as<HXPort>(place)) return HXLookup::addressOf(port);
  if (const auto* image = as<HXImageStoreEntry>(place)) return image->key().toStdString();
  const auto* parameter = as<HXParameter>(place);
  if (!parameter || !parameter->node()) return {};
  const auto node = parameter->node()->uniqueKey().toStdString();
  const String key = parameter->uniqueKey();
  return key ? node + "/" + key.toStdString() : node;
}

}  // namespace

CheckReport::CheckReport(HXDocument& document, const Wanted& wanted)
    : document_(document), wanted_(wanted) {
  gatherNodes();
  gatherWires();
  gatherPublications();
}

const PatchTraits& CheckReport::traitsOf(const HXNode& node) {
  const auto [entry, isNew] = traits_.try_emplace(&node.patchClass());
  if (isNew) entry->second = makeTraits(node.patchClass());
  return entry->second;
}

void CheckReport::gatherNodes() {
  HXNodeWalk walk(document_);
  while (HXNode* node = walk.next()) {
    CheckedNode checked{node, &traitsOf(*node), false, false};
    if (const HXNode* around = node == &document_ ? nullptr : node->enclosingNode()) {
      if (const auto found = numbers_.find(around); found != numbers_.end()) {
        const CheckedNode& outer = nodes_[found->second];
        checked.isInReplicator = outer.isInReplicator || outer.traits->isReplicator;
        checked.isInLoop = outer.isInLoop || outer.traits->isLoop;
      }
    }
    numbers_.emplace(node, static_cast<std::uint32_t>(nodes_.size()));
    nodes_.push_back(checked);
  }
}

// The node finds the port under its key, too: one whose place another one took is gone.
bool CheckReport::isThere(const HXPort* port) const {
  if (const auto* published = as<HXSymbolicPort>(port)) return isPublished(*published);
  const HXNode* node = port ? port->node() : nullptr;
  if (!node || !holds(*node)) return false;
  const auto* own = node->portsInForce().find(port->uniqueKey());
  return own && own->get() == port;
}

bool CheckReport::isPublished(const HXSymbolicPort& port) const {
  const HXNode* node = port.node();
  const auto orientation = port.orientation();
  return node && holds(*node) &&
         (orientation == HXOrientationInput || orientation == HXOrientationOutput) &&
         node->symbolicPortsInForce(orientation).contains(&port);
}

// A wire is met at its output; at its input only when the output does not know of it.
void CheckReport::gatherWires() {
  for (const CheckedNode& checked : nodes_) {
    for (const auto& entry : checked.node->portsInForce()) {
      HXPatchPort& port = *entry.value;
      port.connections().forEach([&](HXConnection& connection) {
        HXPort* const output = connection.outputPort();
        HXPort* const input = connection.inputPort();
        const bool isOutput = output == &port;
        const bool outputIsThere = isOutput || isThere(output);
        const bool outputHolds =
            isOutput || (outputIsThere && output->connections().contains(&connection));
        if (!isOutput && outputHolds) return;
        const bool inputIsThere = input == &port || isThere(input);
        const bool inputHolds =
            input == &port || (inputIsThere && input->connections().contains(&connection));
        wires_.push_back(
            {connection, output, input, outputIsThere, inputIsThere, outputHolds, inputHolds});
        for (const HXPort* shown :
             {connection.displayOutputPort(), connection.displayInputPort()}) {
          if (shown && shown != output && shown != input) joined_.insert(shown);
        }
      });
    }
  }
}

// From the innermost group outward, so that each is asked one step only however long the chains
// are.
void CheckReport::gatherPublications() {
  for (auto checked = nodes_.rbegin(); checked != nodes_.rend(); ++checked) {
    for (const auto side : kBothSides) {
      for (const auto& member : checked->node->symbolicPortsInForce(side)) {
        const auto& published = static_cast<const HXSymbolicPort&>(*member);
        const HXPort* inner = published.port();
        const auto* further = as<HXSymbolicPort>(inner);
        const HXNode* node = inner ? inner->node() : nullptr;
        bool ends = !isThere(inner);
        if (further && !ends) {
          ends = node->enclosingNode() == checked->node ? nowhere_.contains(inner)
                                                        : !further->resolvedPort();
        }
        if (ends) nowhere_.insert(&published);
      }
    }
  }
}

bool CheckReport::isJoined(const HXSymbolicPort& port) const noexcept {
  return joined_.contains(&port);
}

bool CheckReport::leadsNowhere(const HXSymbolicPort& port) const noexcept {
  return nowhere_.contains(&port);
}

std::uint32_t CheckReport::numberOfPlace(const Object& place) const {
  const HXNode* node = as<HXNode>(&place);
  if (const auto* port = as<HXPort>(&place)) node = port->node();
  if (const auto* parameter = as<HXParameter>(&place)) node = parameter->node();
  const auto found = node ? numbers_.find(node) : numbers_.end();
  return found == numbers_.end() ? static_cast<std::uint32_t>(nodes_.size()) : found->second;
}

HXFinding& CheckReport::add(HXFindingCode code, Object& place, std::string sentence,
                            std::string suggestion) {
  ++counts_[static_cast<std::size_t>(kindOf(code).severity)];
  Entry& entry = entries_.emplace_back();
  entry.finding.code = code;
  entry.finding.sentence = std::move(sentence);
  entry.finding.suggestion = std::move(suggestion);
  entry.finding.place = Ref<Object>(&place);
  entry.node = numberOfPlace(place);
  return entry.finding;
}

std::vector<HXFinding> CheckReport::take(std::size_t limit) {
  std::stable_sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) {
    const auto first = a.finding.severity(), second = b.finding.severity();
    return first != second ? first < second : a.node < b.node;
  });
  if (entries_.size() > limit)
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(limit), entries_.end());
  HXAddresses addresses;
  std::vector<HXFinding> findings;
  findings.reserve(entries_.size());
  for (Entry& entry : entries_) {
    entry.finding.address = addressOf(addresses, entry.finding.place.get());
    entry.finding.key = keyOf(entry.finding.place.get());
    findings.push_back(std::move(entry.finding));
  }
  entries_.clear();
  return findings;
}

}  // namespace tarnkit::detail
