#include "tarnkit/model/HXDocument.h"

#include <fmt/format.h>

#include <cassert>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXChangeRecorder.h"
#include "tarnkit/model/HXDecodedNodes.h"
#include "tarnkit/model/HXPort.h"
#include "tarnkit/model/KeyCounter.h"
#include "tarnkit/patches/HXArchivedKeys.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class HXDocument::kClass{"HXDocument", &HXNode::kClass, &HXDocument::makeForDecoding};

namespace {

namespace key = archived::document;

void warnOfPorts(std::string_view message, const HXPort& first, const HXPort& second) {
  Log::warning("HXDocument", fmt::format("{} ({}, {})", message, first.description().view(),
                                         second.description().view()));
}

}  // namespace

HXDocument::HXDocument() : documentKey_(hx_newDocumentKey()), imageStore_(make<HXImageStore>()) {
  imageStore_->setDocument(this);
  setForceAllowsSubnodes(true);
}

HXDocument::HXDocument(Decoding decoding) noexcept : HXNode(decoding) {}

Ref<Object> HXDocument::makeForDecoding(const Class&) { return make<HXDocument>(Decoding{}); }

String HXDocument::hx_newDocumentKey() {
  static constinit KeyCounter counter{"document_"};
  return counter.next();
}

const Symbol& HXDocument::deviceClassName() const {
  static constinit const Symbol name{"PMGraph"};
  return name;
}

Ref<HXConnection> HXDocument::connectPort(HXPort& first, HXPort& toPort) {
  const detail::RecordedOperation operation(*this);
  BySide<HXPort*> ends{{nullptr, nullptr}};
  for (HXPort* port : {&first, &toPort}) {
    if (auto* end = ends.find(port->orientation())) *end = port;
  }
  HXPort* const input = ends[HXOrientationInput];
  HXPort* const output = ends[HXOrientationOutput];
  if (!input || !output) {
    warnOfPorts("Attempting to connect two ports that are not an input port and an output port.",
                first, toPort);
    return nullptr;
  }
  const Ref<HXPort> resolvedInput(input->resolvedPort());
  const Ref<HXPort> resolvedOutput(output->resolvedPort());
  if (!resolvedInput || !resolvedOutput) {
    warnOfPorts("Attempting to connect to a published port that points to a nil port", first,
                toPort);
    return nullptr;
  }
  auto connection = make<HXConnection>(resolvedOutput.get(), resolvedInput.get(), output, input);
  hx_addConnection(*connection);
  return connection;
}

// Both ends change before anybody is told, so that an observer who takes one of them out of the
// document ends the connection as a whole.

void HXDocument::breakConnection(HXConnection& connection) {
  const detail::RecordedOperation operation(*this);
  const Ref<HXDocument> self(this);
  const Ref<HXConnection> kept(&connection);
  const Ref<HXPort> output(connection.outputPort());
  const Ref<HXPort> input(connection.inputPort());
  const bool outputHad = output && output->dropConnection(connection);
  const bool inputHad = input && input->dropConnection(connection);
  assert(!connection.isHeld());
  if (outputHad) output->hx_fireDidDisconnectNotification(connection);
  if (inputHad) input->hx_fireDidDisconnectNotification(connection);
  announceConnection(connection, false);
}

void HXDocument::breakAllConnectionsToPort(HXPort& port) {
  const detail::RecordedOperation operation(*this);
  const Ref<HXDocument> self(this);
  const Ref<HXPort> keptPort(&port);
  for (const auto& connection : port.connections().toVector()) {
    // An observer of one may have broken another.
    if (port.connections().contains(connection.get())) breakConnection(*connection);
  }
}

void HXDocument::restoreConnection(HXConnection& connection) { hx_addConnection(connection); }

void HXDocument::hx_addConnection(HXConnection& connection) {
  const detail::RecordedOperation operation(*this);
  const Ref<HXDocument> self(this);
  const Ref<HXConnection> kept(&connection);
  const Ref<HXPort> output(connection.outputPort());
  const Ref<HXPort> input(connection.inputPort());
  const bool outputTook = output && output->takeConnection(connection);
  const bool inputTook = input && input->takeConnection(connection);
  const auto isHeldBy = [&](const Ref<HXPort>& port) {
    return port && port->connections().contains(&connection);
  };
  if (outputTook) output->hx_fireDidConnectNotification(connection);
  if (inputTook && isHeldBy(input)) input->hx_fireDidConnectNotification(connection);
  if ((outputTook || inputTook) && !isHeldBy(output) && !isHeldBy(input)) return;
  announceConnection(connection, true);
}

void HXDocument::announceConnection(HXConnection& connection, bool isNew) {
  detail::announce(
      isNew ? HXDocumentAddConnectionNotification : HXDocumentRemoveConnectionNotification, *this,
      *this, {{HXGraphInfo, this}, {HXConnectionInfo, &connection}});
}

void HXDocument::encodeWithCoder(Encoder& coder) const {
  HXNode::encodeWithCoder(coder);
  if (isEditorCodingType(coder.codingType())) coder.encodeObject(imageStore_, key::kImageStore);
}

void HXDocument::initWithCoder(Decoder& coder) {
  HXNode::initWithCoder(coder);
  imageStore_ = coder.decode<HXImageStore>(key::kImageStore);
}

// The document key comes last: while the key is missing, nothing that settles below is announced.
void HXDocument::awakeAfterDecoding(Decoder& coder) {
  if (parentGroup() && parentGroup()->subnodeForKey(uniqueKey()) == this) {
    coder.fail("HXNode.parentGroup: a document inside another");
  }
  if (coder.failed()) return;
  setParentGroup(nullptr);
  checkTree(coder);
  HXNode::awakeAfterDecoding(coder);
  documentKey_ = hx_newDocumentKey();
  if (!imageStore_) imageStore_ = make<HXImageStore>();
  imageStore_->setDocument(this);
  setForceAllowsSubnodes(true);
}

// A node that the document does not hold may hold itself, through its own group, and would never
// go: such nodes are taken apart. Two documents would take each other's nodes apart.
void HXDocument::checkTree(Decoder& coder) {
  const auto held = detail::nodesWithin({this});
  std::size_t dropped = 0;
  coder.eachDecoded([&](Object& object) {
    auto* node = as<HXNode>(&object);
    if (!node || held.contains(node) || coder.failed()) return;
    if (node->isMemberOf(kClass)) return coder.fail("a second document stands in the archive");
    node->abandonDecoding();
    ++dropped;
  });
  if (dropped != 0) {
    Log::warning("HXDocument",
                 fmt::format("Dropping {} nodes that are in no group of the document", dropped));
  }
}

}  // namespace tarnkit
