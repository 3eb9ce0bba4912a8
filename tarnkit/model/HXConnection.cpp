#include "tarnkit/model/HXConnection.h"

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXPort.h"
#include "tarnkit/model/KeyCounter.h"
#include "tarnkit/patches/HXArchivedKeys.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class HXConnection::kClass{"HXConnection", &Object::kClass, &HXConnection::makeForDecoding};

namespace {

namespace key = archived::connection;

constinit KeyCounter keyCounter{"connection_"};

constinit const Symbol kDeviceClass{"PMConnection"};
constinit const Symbol kDeviceUniqueKey{"PMConnection.uniqueKey"};
constinit const Symbol kDeviceOutputPort{"PMConnection.outputPort"};
constinit const Symbol kDeviceInputPort{"PMConnection.inputPort"};
constinit const Symbol kDeviceParentNode{"PMConnection.parentNode"};
constinit const Symbol kDeviceOutputPortKeyPath{"PMConnection.outputPortKeyPath"};
constinit const Symbol kDeviceInputPortKeyPath{"PMConnection.inputPortKeyPath"};

}  // namespace

HXConnection::HXConnection(HXPort* outputPort, HXPort* inputPort, HXPort* displayOutputPort,
                           HXPort* displayInputPort)
    : outputPort_(outputPort),
      inputPort_(inputPort),
      displayOutputPort_(displayOutputPort),
      displayInputPort_(displayInputPort),
      keyNumber_(keyCounter.nextNumber()),
      hasKey_(true) {}

Ref<Object> HXConnection::makeForDecoding(const Class&) { return make<HXConnection>(); }

String HXConnection::hx_newUniqueKey() { return keyCounter.next(); }

String HXConnection::uniqueKey() const { return hasKey_ ? keyCounter.key(keyNumber_) : String(); }

bool HXConnection::isHeld() const {
  for (const auto* port : {outputPort(), inputPort()}) {
    if (port && port->connections().contains(this)) return true;
  }
  return false;
}

bool HXConnection::traverseConnection(Path& path) const {
  return hx_traverseConnection(outputPort(), inputPort(), path);
}

std::vector<String> HXConnection::hx_keyPathForPort(const HXPort* port) {
  std::vector<String> keys;
  for (const HXNode* node = port ? port->node() : nullptr; node; node = node->enclosingNode()) {
    keys.push_back(node->uniqueKey());
  }
  return keys;
}

bool HXConnection::hx_traverseConnection(const HXPort* outputPort, const HXPort* inputPort,
                                         Path& path) {
  // Most connections join two nodes of one group: those need no walk to the document, which would
  // cost the depth of the group for each of them.
  HXNode* const outputNode = outputPort ? outputPort->node() : nullptr;
  HXNode* const inputNode = inputPort ? inputPort->node() : nullptr;
  HXNode* const enclosing = outputNode ? outputNode->enclosingNode() : nullptr;
  if (enclosing && inputNode && inputNode->enclosingNode() == enclosing &&
      outputNode->uniqueKey() != inputNode->uniqueKey()) {
    path = Path{Ref<HXNode>(enclosing), {outputNode->uniqueKey()}, {inputNode->uniqueKey()}};
    return true;
  }
  auto out = hx_keyPathForPort(outputPort);
  auto in = hx_keyPathForPort(inputPort);
  if (out.empty() || in.empty()) {
    Log::warning("HXConnection", "Unable to traverse connection");
    return false;
  }
  if (out.back() != in.back()) {
    Log::warning("HXConnection", "Unable to find common ancestor.");
    return false;
  }
  while (!out.empty() && !in.empty() && out.back() == in.back()) {
    out.pop_back();
    in.pop_back();
  }
  HXNode* parent = outputPort->node();
  for (std::size_t i = 0; i < out.size(); ++i) parent = parent->enclosingNode();
  path = Path{Ref<HXNode>(parent), std::move(out), std::move(in)};
  return true;
}

void HXConnection::encodeWithCoder(Encoder& coder) const {
  if (isEditorCodingType(coder.codingType())) {
    coder.encodeConditionalObject(outputPort_, key::kOutputPort);
    coder.encodeConditionalObject(inputPort_, key::kInputPort);
    coder.encodeConditionalObject(displayOutputPort_, key::kDisplayOutputPort);
    coder.encodeConditionalObject(displayInputPort_, key::kDisplayInputPort);
  } else if (coder.codingType() == HXCodingTypeDevice) {
    coder.setClassName(kDeviceClass, isa());
    coder.encodeString(uniqueKey(), kDeviceUniqueKey);
    coder.encodeConditionalObject(outputPort_, kDeviceOutputPort);
    coder.encodeConditionalObject(inputPort_, kDeviceInputPort);
    Path path;
    if (!traverseConnection(path)) return;
    coder.encodeConditionalObject(static_cast<const Object*>(path.parentNode.get()),
                                  kDeviceParentNode);
    coder.encodeStrings(path.outputKeyPath, kDeviceOutputPortKeyPath);
    coder.encodeStrings(path.inputKeyPath, kDeviceInputPortKeyPath);
  }
}

void HXConnection::initWithCoder(Decoder& coder) {
  if (!isEditorCodingType(coder.codingType())) return;
  keyNumber_ = keyCounter.nextNumber();
  hasKey_ = true;
  outputPort_ = coder.decode<HXPort>(key::kOutputPort);
  inputPort_ = coder.decode<HXPort>(key::kInputPort);
  displayOutputPort_ = coder.decode<HXPort>(key::kDisplayOutputPort);
  displayInputPort_ = coder.decode<HXPort>(key::kDisplayInputPort);
}

}  // namespace tarnkit
