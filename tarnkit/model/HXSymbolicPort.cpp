#include "tarnkit/model/HXSymbolicPort.h"

#include <fmt/format.h>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXNode.h"

namespace tarnkit {

const Class HXSymbolicPort::kClass{"HXSymbolicPort", &HXPort::kClass,
                                   &HXSymbolicPort::makeForDecoding};

namespace {

constinit const Symbol kPort{"HXSymbolicPort.port"};
constinit const Symbol kName{"HXSymbolicPort.name"};

std::string_view orNull(const String& key) { return key.isNil() ? "(null)" : key.view(); }

}  // namespace

HXSymbolicPort::HXSymbolicPort(HXPort* port, HXNode* node, std::int32_t orientation,
                               std::int32_t connectionRelationship)
    : HXPort(node, orientation, connectionRelationship), port_(port) {}

Ref<Object> HXSymbolicPort::makeForDecoding(const Class&) { return make<HXSymbolicPort>(); }

void HXSymbolicPort::setPort(HXPort* port) { port_ = port; }

HXPort* HXSymbolicPort::resolvedPort() const noexcept {
  HXPort* port = this->port();
  while (auto* symbolic = as<HXSymbolicPort>(port)) port = symbolic->port();
  return port;
}

// Two keys that never change make this one, so the text is made again only when either is another.
String HXSymbolicPort::uniqueKey() const {
  // The chain of published ports is walked inward first, so that its depth costs no stack.
  std::vector<const HXSymbolicPort*> chain{this};
  const HXPort* innermost = port();
  while (const auto* symbolic = as<HXSymbolicPort>(innermost)) {
    chain.push_back(symbolic);
    innermost = symbolic->port();
  }
  String key = innermost ? innermost->uniqueKey() : String();
  for (auto at = chain.rbegin(); at != chain.rend(); ++at) {
    const HXSymbolicPort& symbolic = **at;
    const HXPort* published = symbolic.port();
    const String ofNode =
        published && published->node() ? published->node()->uniqueKey() : String();
    if (symbolic.uniqueKey_.isNil() || symbolic.keyOfNode_ != ofNode ||
        symbolic.keyOfPort_ != key) {
      symbolic.uniqueKey_ = String(fmt::format("Symbolic.{}.{}", orNull(ofNode), orNull(key)));
      symbolic.keyOfNode_ = ofNode;
      symbolic.keyOfPort_ = key;
    }
    key = symbolic.uniqueKey_;
  }
  return key;
}

void HXSymbolicPort::setName(String name) {
  name_ = std::move(name);
  groupKey_ = nullptr;
  if (auto* node = this->node()) node->symbolicPortNameDidChange(*this);
  detail::announce(HXPortNameDidChangeNotification, *this, *this,
                   [this](const Ref<Object>& documentKey) {
                     return UserInfo{{HXDocumentKeyInfo, documentKey},
                                     {HXPortInfo, Ref<Object>(this)},
                                     {HXNameInfo, name_.object()}};
                   });
}

const String& HXSymbolicPort::groupKey() const {
  static const String published = String::interned("Published");
  if (groupKey_.isNil()) {
    const auto colon = name_.view().find(':');
    groupKey_ = colon == std::string_view::npos ? published : String(name_.view().substr(0, colon));
  }
  return groupKey_;
}

bool HXSymbolicPort::canConnectToPort(const HXPort* other) const {
  const auto* port = resolvedPort();
  return port && port->canConnectToPort(other);
}

RGBA HXSymbolicPort::defaultColor() const {
  const auto* port = resolvedPort();
  return port ? port->defaultColor() : OIColorWhiteRGBA;
}

void HXSymbolicPort::encodeWithCoder(Encoder& coder) const {
  HXPort::encodeWithCoder(coder);
  if (isEditorCodingType(coder.codingType())) {
    coder.encodeConditionalObject(port_, kPort);
    coder.encodeString(name_, kName);
  }
}

void HXSymbolicPort::initWithCoder(Decoder& coder) {
  HXPort::initWithCoder(coder);
  port_ = coder.decode<HXPort>(kPort);
  name_ = coder.decodeString(kName);
}

}  // namespace tarnkit
