#include "fuzz/model/ModelEditor.h"

#include <fmt/format.h>

#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/patches/HXRTypedPorts.h"
#include "tarnkit/patches/HXRValueParameters.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/collections/MembersOf.h"

namespace tarnkit::fuzz {

namespace {

constexpr int kMaximumDepth = 4;
constexpr std::size_t kMaximumNodes = 24;
constexpr std::size_t kMaximumKept = 4;

// Of every kind that the synchronisation tells apart: ports that follow parameters, groups that
// start hidden, containers, views.
constexpr const char* kPatches[] = {
    "HXRClampNode",         "HXRMathNode",           "HXRLogicNode",
    "HXRConditionalNode",   "HXRDictionaryNode",     "HXRMultiplexerNode",
    "HXRDemultiplexerNode", "HXRMathExpressionNode", "HXRJavascriptExpressionNode",
    "HXRSpringNode",        "HXRIndexSwitchNode",    "HXRArrayNode",
    "HXRViewNode",          "HXRImageViewNode",      "HXRRemoteGroupNode",
    "HXRReplicatorNode",    "HXRLoopNode",           "HXRTestSubviewGroupNode",
    "HXRPanGestureNode",    "HXRShadowViewNode",     "HXRInterpolationNode"};

constexpr const char* kNames[] = {"Value",          "A: x",         "A: y",
                                  "B: z",           "__Default: d", "Masking: s",
                                  "Value Range: r", "Shadow: t",    ""};

constexpr const char* kExpressions[] = {"$a+$b",       "$c*$d", "",        "$a",
                                        "$x+$y+$z+$w", "sin(",  "$b+$a+$c"};

std::uint64_t edits = 0;

}  // namespace

template <class T>
void ModelEditor::keep(std::vector<Ref<T>>& kept, const Ref<T>& object) {
  if (keepsDocument_) loose_.emplace_back(object.get());
  if (kept.size() == kMaximumKept) kept.erase(kept.begin());
  kept.push_back(object);
}

std::uint64_t ModelEditor::editCount() noexcept { return edits; }

ModelEditor::ModelEditor(const std::uint8_t* bytes, std::size_t size)
    : next_(bytes),
      end_(bytes + size),
      token_(NotificationCenter::defaultCenter().addObserver(
          nullptr, nullptr, [this](const Notification& notification) { observe(notification); })) {}

ModelEditor::~ModelEditor() { NotificationCenter::defaultCenter().removeObserver(token_); }

std::uint32_t ModelEditor::byte() { return isDone() ? 0 : *next_++; }

void ModelEditor::run() {
  while (!isDone()) {
    if (!document_) document_ = make<HXDocument>();
    edit();
  }
}

void ModelEditor::keepTo(HXDocument& document) {
  document_ = Ref<HXDocument>(&document);
  keepsDocument_ = true;
}

bool ModelEditor::runOne() {
  if (isDone()) return false;
  edit();
  return true;
}

void ModelEditor::observe(const Notification& notification) {
  HXNode* node = as<HXNode>(&notification.object);
  if (const auto* port = as<HXPort>(&notification.object)) node = port->node();
  if (const auto* parameter = as<HXParameter>(&notification.object)) node = parameter->node();
  if (const auto* group = as<HXPortGroup>(&notification.object)) node = group->node();
  if (const auto* group = as<HXGroup>(&notification.object)) {
    node = as<HXNode>(notification.userInfo[HXNodeInfo]);
    if (!node) node = group->node();
  }
  if (node && node->document() && !keepsDocument_) document_ = Ref<HXDocument>(node->document());
  if (paused_ || depth_ >= kMaximumDepth || isDone() || !document_ || byte() % 3 != 0) return;
  const WeakRef<HXNode> outer = std::exchange(toldOf_, WeakRef<HXNode>(node));
  ++depth_;
  edit();
  --depth_;
  toldOf_ = outer;
}

void ModelEditor::edit() {
  if (!document_) return;
  using Edit = void (ModelEditor::*)();
  static constexpr Edit kEdits[] = {
      &ModelEditor::addNode,          &ModelEditor::addNode,      &ModelEditor::moveNode,
      &ModelEditor::setPatch,         &ModelEditor::setPatch,     &ModelEditor::swapGroup,
      &ModelEditor::connect,          &ModelEditor::connect,      &ModelEditor::disconnect,
      &ModelEditor::publish,          &ModelEditor::publish,      &ModelEditor::unpublish,
      &ModelEditor::restore,          &ModelEditor::rename,       &ModelEditor::setValue,
      &ModelEditor::setParameter,     &ModelEditor::setParameter, &ModelEditor::changePortGroup,
      &ModelEditor::changeDefinition, &ModelEditor::changeViews,  &ModelEditor::changeDocument};
  ++edits;
  (this->*kEdits[upTo(std::size(kEdits))])();
}

std::vector<HXNode*> ModelEditor::nodes() const {
  std::vector<HXNode*> all{document_.get()};
  for (std::size_t at = 0; at < all.size(); ++at) {
    if (!all[at]->subnodeGroup()) continue;
    for (const auto& entry : all[at]->subnodeGroup()->subnodesInForce()) {
      all.push_back(entry.value.get());
    }
  }
  return all;
}

// Every other time the one that the notification in hand is about.
HXNode* ModelEditor::anyNode() {
  if (!document_) return nullptr;
  const auto choice = byte();
  if (toldOf_ && choice % 2 == 0) return toldOf_.get();
  const auto all = nodes();
  return all[choice / 2 % all.size()];
}

HXNode* ModelEditor::anyContainer() {
  if (!document_) return nullptr;
  auto all = nodes();
  std::erase_if(all, [](const HXNode* node) { return !node->subnodeGroup(); });
  return all.empty() ? nullptr : all[upTo(all.size())];
}

HXPort* ModelEditor::anyPort(HXNode* node, bool published) {
  if (!node) return nullptr;
  std::vector<HXPort*> ports;
  for (const auto& entry : node->portsInForce()) {
    if (!published || entry.value->symbolicPort()) ports.push_back(entry.value.get());
  }
  for (const auto* symbolic :
       {&node->symbolicInputPortsInForce(), &node->symbolicOutputPortsInForce()}) {
    for (auto& port : membersOf<HXPort>(*symbolic)) {
      if (!published || port.symbolicPort()) ports.push_back(&port);
    }
  }
  return ports.empty() ? nullptr : ports[upTo(ports.size())];
}

HXSymbolicPort* ModelEditor::anySymbolicPort() {
  auto* port = anyPort(anyNode(), true);
  return port ? port->symbolicPort() : nullptr;
}

Ref<HXRNode> ModelEditor::anyPatch() {
  const auto choice = upTo(std::size(kPatches) + 2);
  return choice < std::size(kPatches) ? patchClassNamed(kPatches[choice])->makeDefinition()
                                      : nullptr;
}

void ModelEditor::addNode() {
  auto* container = anyContainer();
  if (!container) return;
  if (nodes().size() >= kMaximumNodes) return moveNode();
  if (byte() % 8 == 0 && !nodes_.empty()) {
    const Ref<HXNode> back = nodes_.back();
    nodes_.pop_back();
    container->subnodeGroup()->addNode(*back);
    return;
  }
  const Ref<HXRNode> patch = anyPatch();
  Ref<HXNode> node;
  if (patch && byte() % 2 == 0) node = HXNode::makeOfClass(patch->patchClass().nodeClassName());
  if (!node) node = make<HXNode>();
  node->setPatch(patch);
  container->subnodeGroup()->addNode(*node);
}

void ModelEditor::moveNode() {
  auto* node = anyNode();
  if (!node || !node->parentGroup()) return;
  const auto how = byte();
  if (how % 2 == 0) keep(nodes_, Ref<HXNode>(node));
  auto* container = how % 4 < 2 ? anyContainer() : nullptr;
  if (container) {
    container->subnodeGroup()->addNode(*node);
  } else {
    node->parentGroup()->removeNode(node);
  }
}

void ModelEditor::setPatch() {
  auto* node = anyNode();
  if (!node || node == document_.get()) return;
  node->setPatch(byte() % 4 == 0 ? node->patch() : anyPatch());
}

void ModelEditor::swapGroup() {
  const Ref<HXNode> node(anyNode());  // whoever hears of groups that go may remove it
  if (!node) return;
  // A swap that the views do not ask for is undone by the next change of a view.
  if (const auto* group = node->subnodeGroup().get(); group && byte() % 2 == 0) {
    bool hasView = false;
    for (const auto& subnode : group->subnodes()) hasView |= subnode->shouldBeTreatedAsViewNode();
    hasView ? node->swapSubnodeGroupToViewGroup() : node->swapSubnodeGroupToGroup();
  } else if (node->subnodeGroup()) {
    node->setForceAllowsSubnodes(byte() % 2 == 0);
    if (!node->subnodeGroup()) node->setPatch(node->patch());
  } else {
    node->setForceAllowsSubnodes(true);
  }
}

void ModelEditor::connect() {
  auto* first = anyPort(anyNode(), false);
  auto* second = anyPort(anyNode(), false);
  if (!first || !second || first->orientation() == second->orientation()) return;
  for (auto* port : {first, second}) {
    const auto* symbolic = as<HXSymbolicPort>(port);
    const auto* resolved = symbolic ? symbolic->resolvedPort() : port;
    if (!resolved || !resolved->acceptsNewConnections()) return;
  }
  document_->connectPort(*first, *second);
}

void ModelEditor::disconnect() {
  auto* port = anyPort(anyNode(), false);
  if (!port || port->connections().isEmpty()) return;
  if (byte() % 4 == 0) {
    document_->breakAllConnectionsToPort(*port);
    return;
  }
  const Ref<HXConnection> connection = port->connections().toVector().front();
  keep(connections_, connection);
  document_->breakConnection(*connection);
}

void ModelEditor::publish() {
  auto* node = anyNode();
  auto* port = anyPort(node, false);
  if (!port || port->symbolicPort() || !node->parentGroup()) return;
  const Ref<HXPort> kept(port);
  const auto before = edits;
  node->parentGroup()->addSymbolicPortForPort(*port);
  // Somebody else may have published it meanwhile.
  if (edits != before) doublePublications_ = true;
}

void ModelEditor::unpublish() {
  auto* node = anyNode();
  auto* port = anyPort(node, true);
  if (!port || !node->parentGroup()) return;
  if (byte() % 2 == 0) keep(symbolicPorts_, Ref<HXSymbolicPort>(port->symbolicPort()));
  node->parentGroup()->removeSymbolicPortForPort(port);
}

void ModelEditor::restore() {
  if (byte() % 2 == 0 && !connections_.empty()) {
    const Ref<HXConnection> connection = connections_.back();
    connections_.pop_back();
    for (const auto* port : {connection->outputPort(), connection->inputPort()}) {
      if (!port || !port->node() || port->node()->document() != document_.get() ||
          port->node()->portForKey(port->uniqueKey()) != port || !port->acceptsNewConnections()) {
        return;
      }
    }
    document_->restoreConnection(*connection);
  } else if (!symbolicPorts_.empty()) {
    const Ref<HXSymbolicPort> symbolicPort = symbolicPorts_.back();
    symbolicPorts_.pop_back();
    const auto* port = symbolicPort->port();
    auto* owner = symbolicPort->node();
    if (!port || port->symbolicPort() || !owner || !port->node() || !port->node()->parentGroup() ||
        port->node()->parentGroup()->node() != owner ||
        port->node()->portForKey(port->uniqueKey()) != port) {
      return;
    }
    const auto before = edits;
    port->node()->parentGroup()->restoreSymbolicPort(*symbolicPort);
    if (edits != before) doublePublications_ = true;
  }
}

void ModelEditor::rename() {
  const String name(kNames[upTo(std::size(kNames))]);
  if (byte() % 4 != 0) {
    if (auto* port = anySymbolicPort()) port->setName(name);
  } else if (auto* node = anyNode()) {
    node->setName(name);
  }
}

void ModelEditor::setValue() {
  auto* node = anyNode();
  auto* port = as<HXPatchPort>(anyPort(node, false));
  if (!port) return;
  const auto value = byte();
  port->setStaticValue(
      value == 0 ? nullptr : PMRPrimitive::primitiveWithNumberValue(static_cast<float>(value)));
}

void ModelEditor::setParameter() {
  auto* node = anyNode();
  if (!node || node->parameters().empty()) return;
  const auto parameters = node->parameters();
  auto at = parameters.begin();
  for (auto skipped = upTo(parameters.size()); skipped > 0; --skipped) ++at;
  HXParameter* parameter = at->value.get();
  if (auto* index = as<HXIndexParameter>(parameter)) {
    index->setValue(static_cast<std::int32_t>(byte() % 10));
  } else if (auto* number = as<HXNumberParameter>(parameter)) {
    number->setValue(static_cast<float>(byte()));
  } else if (auto* boolean = as<HXBooleanParameter>(parameter)) {
    boolean->setValue(!boolean->value());
  } else if (auto* text = as<HXStringParameter>(parameter)) {
    text->setValue(String(kExpressions[upTo(std::size(kExpressions))]));
  }
}

void ModelEditor::changePortGroup() {
  auto* node = anyNode();
  if (!node) return;
  const auto groups = byte() % 2 == 0 ? node->inputPortGroups() : node->outputPortGroups();
  if (groups.empty()) return;
  HXPortGroup* group = groups[upTo(groups.size())].get();
  switch (byte() % 3) {
    case 0:
      return group->setHidden(!group->hidden());
    case 1:
      return group->setCollapsedCanvasGroup(!group->collapsedCanvasGroup());
    default:
      return group->setCollapsedSidebarGroup(!group->collapsedSidebarGroup());
  }
}

void ModelEditor::changeDefinition() {
  auto* node = anyNode();
  if (!node || !node->patch()) return;
  const auto choice = byte();
  const String key(fmt::format("Fuzz.{}", choice / 8 % 4));
  switch (choice % 8) {
    case 0:
      return node->patch()->addPort(*make<HXRArrayInputPort>(key, key),
                                    String(kNames[upTo(std::size(kNames))]));
    case 1:
    case 2:
      if (auto* port = as<HXPatchPort>(anyPort(node, false))) {
        if (auto* own = port->patchPort()) node->patch()->removePort(*own);
      }
      return;
    case 3:
      return node->patch()->addParameter(*make<HXRBooleanParameter>(key, key));
    case 4:
      if (auto* parameter = node->patch()->parameterForKey(key)) {
        node->patch()->removeParameter(*parameter);
      }
      return;
    default:
      if (auto* port = as<HXPatchPort>(anyPort(node, false))) {
        if (auto* own = port->patchPort()) own->setName(String(kNames[upTo(std::size(kNames))]));
      }
  }
}

void ModelEditor::changeViews() {
  auto* node = anyContainer();
  auto* views = node ? as<HXSubviewGroup>(node->subnodeGroup().get()) : nullptr;
  if (!views || views->subviewNodesInForce().isEmpty()) return;
  const auto count = views->subviewNodesInForce().count();
  auto& view = static_cast<HXNode&>(*views->subviewNodesInForce().objectAtIndex(upTo(count)));
  views->moveSubviewNode(view, byte() % 4);
}

void ModelEditor::changeDocument() {
  const auto choice = byte();
  if (choice % 16 == 0) {
    if (!keepsDocument_) document_ = nullptr;
  } else if (auto* node = anyNode()) {
    node->setPosition({static_cast<float>(choice), 1});
    if (choice % 2 == 0 && document_) document_->pruneInvalidConnections();
  }
}

}  // namespace tarnkit::fuzz
