#include "tarnkit/model/HXSymbolicPort.h"

#include <fmt/format.h>

#include <mutex>
#include <unordered_map>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXFieldChange.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/patches/HXArchivedKeys.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class HXSymbolicPort::kClass{"HXSymbolicPort", &HXPort::kClass,
                                   &HXSymbolicPort::makeForDecoding};

namespace {

namespace key = archived::symbolicPort;

std::string_view orNull(const String& key) { return key.isNil() ? "(null)" : key.view(); }

String groupKeyInName(const String& name) {
  static const String published = String::interned("Published");
  const auto colon = name.view().find(':');
  return colon == std::string_view::npos ? published : String(name.view().substr(0, colon));
}

// Names of more bytes than this have one group key for all ports that share the name: a document
// may give every port one name as long as the document itself.
constexpr std::size_t kLongName = 256;

// The group keys of the long names that are in use. Neither names nor keys are kept alive.
String sharedGroupKey(const String& name) {
  struct Known {
    WeakRef<StringObject> name;
    WeakRef<StringObject> key;
  };
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  static auto* const known = new std::unordered_map<const StringObject*, Known>;
  static std::size_t tidySize = 1;
  if (const auto found = known->find(name.object().get()); found != known->end()) {
    if (auto key = found->second.key.lock()) return String(std::move(key));
  }
  if (known->size() >= tidySize) {
    std::erase_if(*known,
                  [](const auto& entry) { return !entry.second.name || !entry.second.key; });
    tidySize = 2 * known->size() + 1;
  }
  const String key = groupKeyInName(name);
  (*known)[name.object().get()] = {name.object(), key.object()};
  return key;
}

}  // namespace

struct HXSymbolicPortFields {
  struct Port : detail::FieldOf<HXSymbolicPort> {
    static constexpr const char* kName = "port";
    static Ref<HXPort> get(const HXSymbolicPort& symbolicPort) {
      return Ref<HXPort>(const_cast<HXPort*>(symbolicPort.port()));
    }
    static void set(HXSymbolicPort& symbolicPort, const Ref<HXPort>& port) {
      symbolicPort.port_ = port.get();
    }
  };
  struct Name : detail::FieldOf<HXSymbolicPort> {
    static constexpr const char* kName = "name";
    static constexpr bool kIsSimple = true;
    static String get(const HXSymbolicPort& port) { return port.name_; }
    static void set(HXSymbolicPort& port, String name) {
      port.name_ = std::move(name);
      port.groupKey_ = nullptr;
    }
    static void addNotices(HXSymbolicPort& port, const String&, HXChangeNotices& notices) {
      notices.addValue(port, kName, [&port] { port.announceName(); });
    }
  };
};

HXSymbolicPort::HXSymbolicPort(HXPort* port, HXNode* node, std::int32_t orientation,
                               std::int32_t connectionRelationship)
    : HXPort(node, orientation, connectionRelationship), port_(port) {}

Ref<Object> HXSymbolicPort::makeForDecoding(const Class&) { return make<HXSymbolicPort>(); }

void HXSymbolicPort::setPort(HXPort* port) {
  for (const auto* at = as<HXSymbolicPort>(port); at; at = as<HXSymbolicPort>(at->port())) {
    if (at != this) continue;
    Log::warning("HXSymbolicPort", "Attempting to publish a port through itself.");
    return;
  }
  const Ref<HXPort> earlier(this->port());
  if (port == earlier.get()) return;
  const detail::RecordedOperation operation(*this);
  if (earlier && earlier->symbolicPort() == this) {
    earlier->linkSymbolicPort(nullptr, PassKey<HXSymbolicPort>());
  }
  storePort(port);
  if (!isHeld()) return;
  if (port && !port->symbolicPort()) port->linkSymbolicPort(this, PassKey<HXSymbolicPort>());
  Ref<HXNode>(node())->symbolicPortWasPointed(*this, earlier.get());
}

bool HXSymbolicPort::isHeld() const {
  const auto* node = this->node();
  return node && (node->symbolicInputPortsInForce().contains(this) ||
                  node->symbolicOutputPortsInForce().contains(this));
}

void HXSymbolicPort::storePort(HXPort* port) {
  detail::willSet<HXSymbolicPortFields::Port>(*this);
  port_ = port;
}

void HXSymbolicPort::storeName(String name) {
  detail::willSet<HXSymbolicPortFields::Name>(*this);
  HXSymbolicPortFields::Name::set(*this, std::move(name));
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
  const Ref<HXSymbolicPort> self(this);
  const detail::RecordedOperation operation(*this);
  storeName(std::move(name));
  nameWasSet();
}

// Nobody has seen it without the name, so that there is nothing to go back to.
void HXSymbolicPort::giveFirstName(String name) {
  const Ref<HXSymbolicPort> self(this);
  HXSymbolicPortFields::Name::set(*this, std::move(name));
  nameWasSet();
}

void HXSymbolicPort::nameWasSet() {
  if (const Ref<HXNode> node{this->node()}) node->symbolicPortNameDidChange(*this);
  announceName();
}

void HXSymbolicPort::announceName() {
  detail::announce(HXPortNameDidChangeNotification, *this, *this,
                   {{HXPortInfo, this}, {HXNameInfo, name_.object().get()}});
}

const String& HXSymbolicPort::groupKey() const {
  if (groupKey_.isNil()) {
    groupKey_ = name_.size() > kLongName ? sharedGroupKey(name_) : groupKeyInName(name_);
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
    coder.encodeConditionalObject(port_, key::kPort);
    coder.encodeString(name_, key::kName);
  }
}

void HXSymbolicPort::initWithCoder(Decoder& coder) {
  HXPort::initWithCoder(coder);
  port_ = coder.decode<HXPort>(key::kPort);
  name_ = coder.decodeString(key::kName);
}

}  // namespace tarnkit
