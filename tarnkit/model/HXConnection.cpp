#include "tarnkit/model/HXConnection.h"

#include <fmt/format.h>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXPort.h"
#include "tarnkit/platform/Log.h"

namespace tarnkit {

const Class HXConnection::kClass{"HXConnection", &Object::kClass, &HXConnection::makeForDecoding};

namespace {

constinit const Symbol kOutputPort{"HXConnection.outputPort"};
constinit const Symbol kInputPort{"HXConnection.inputPort"};
constinit const Symbol kDisplayOutputPort{"HXConnection.displayOutputPort"};
constinit const Symbol kDisplayInputPort{"HXConnection.displayInputPort"};

constinit const Symbol kDeviceClass{"PMConnection"};
constinit const Symbol kDeviceUniqueKey{"PMConnection.uniqueKey"};
constinit const Symbol kDeviceOutputPort{"PMConnection.outputPort"};
constinit const Symbol kDeviceInputPort{"PMConnection.inputPort"};
constinit const Symbol kDeviceParentNode{"PMConnection.parentNode"};
constinit const Symbol kDeviceOutputPortKeyPath{"PMConnection.outputPortKeyPath"};
constinit const Symbol kDeviceInputPortKeyPath{"PMConnection.inputPortKeyPath"};

String keyOfNumber(std::int32_t number) { return String(fmt::format("connection_{}", number)); }

}  // namespace

HXConnection::HXConnection(HXPort* outputPort, HXPort* inputPort, HXPort* displayOutputPort,
                           HXPort* displayInputPort)
    : outputPort_(outputPort),
      inputPort_(inputPort),
      displayOutputPort_(displayOutputPort),
      displayInputPort_(displayInputPort),
      keyNumber_(hx_newKeyNumber()),
      hasKey_(true) {}

Ref<Object> HXConnection::makeForDecoding(const Class&) { return make<HXConnection>(); }

std::int32_t HXConnection::hx_newKeyNumber() {
  static std::uint32_t next = 0;
  return static_cast<std::int32_t>(next++);
}

// A connection keeps its number; the text is made when somebody asks for it.
String HXConnection::hx_newUniqueKey() { return keyOfNumber(hx_newKeyNumber()); }

String HXConnection::uniqueKey() const { return hasKey_ ? keyOfNumber(keyNumber_) : String(); }

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
    coder.encodeConditionalObject(outputPort_, kOutputPort);
    coder.encodeConditionalObject(inputPort_, kInputPort);
    coder.encodeConditionalObject(displayOutputPort_, kDisplayOutputPort);
    coder.encodeConditionalObject(displayInputPort_, kDisplayInputPort);
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
  keyNumber_ = hx_newKeyNumber();
  hasKey_ = true;
  outputPort_ = coder.decode<HXPort>(kOutputPort);
  inputPort_ = coder.decode<HXPort>(kInputPort);
  displayOutputPort_ = coder.decode<HXPort>(kDisplayOutputPort);
  displayInputPort_ = coder.decode<HXPort>(kDisplayInputPort);
}

}  // namespace tarnkit
