#include "tarnkit/model/HXNodeReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_map>

#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXLookup.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/objects/Overloaded.h"
#include "tarnkit/platform/text/UTF8.h"

namespace tarnkit {

namespace {

using Kind = HXNodeItem::Kind;

// Names and keys out of files may be of any length, and every line has some.
std::string brief(std::string_view text) {
  constexpr std::size_t kLongest = 80;
  if (text.size() <= kLongest) return std::string(text);
  std::size_t end = 0;
  while (end < text.size()) {
    const auto size = detail::codePointAt(text, end).size;
    if (end + size > kLongest) break;
    end += size;
  }
  return std::string(text.substr(0, end)) + "…";
}

std::string_view classificationOf(const HXPort& port) {
  static constexpr std::string_view kNames[2][2] = {{"input of many", "input of one"},
                                                    {"output of many", "output of one"}};
  const auto side = port.orientation() - HXOrientationInput;
  const auto relationship = port.connectionRelationship() - HXConnectionRelationshipMany;
  if (side < 0 || side > 1 || relationship < 0 || relationship > 1) return "neither";
  return kNames[side][relationship];
}

String textOf(const HXParameter& parameter) {
  return std::visit(
      Overloaded{
          [](const HXIndexParameter* index) { return String(fmt::format("{}", index->value())); },
          [](const HXNumberParameter* number) {
            return String(fmt::format("{}", number->value()));
          },
          [](const HXBooleanParameter* boolean) {
            return String(boolean->value() ? "true" : "false");
          },
          [](const HXStringParameter* string) { return string->value(); },
          [](const HXColorParameter* color) {
            const RGBA value = color->value();
            return String(
                fmt::format("{} {} {} {}", value.red, value.green, value.blue, value.alpha));
          },
          [](const HXImageParameter* image) {
            const auto* entry = image->imageEntry();
            return entry ? entry->key() : String();
          },
      },
      parameter.kind());
}

class Gatherer {
 public:
  Gatherer(const HXNode& node, std::vector<HXNodeItem>& items) : node_(node), items_(items) {}

  void addAll() {
    for (const auto& entry : node_.portsInForce()) addPort(entry.key, *entry.value);
    for (const auto side : kBothSides) {
      for (const auto& member : node_.symbolicPortsInForce(side)) {
        addPublishedPort(static_cast<HXSymbolicPort&>(*member));
      }
    }
    addParameters();
    if (!node_.subnodeGroup()) return;
    for (const auto& entry : node_.subnodeGroup()->subnodesInForce()) {
      add(Kind::node, entry.key, entry.value->name(), entry.value.get());
    }
  }

  void addParameters() {
    for (const auto& entry : node_.parameters()) addParameter(entry.key, *entry.value);
  }

 private:
  HXNodeItem& add(Kind kind, const String& key, const String& text, Object* object) {
    HXNodeItem& item = items_.emplace_back();
    item.kind = kind;
    item.key = key;
    item.text = text;
    item.object = Ref<Object>(object);
    return item;
  }

  void addPort(const String& key, HXPatchPort& port) {
    add(Kind::port, key, port.name(), &port).classification = classificationOf(port);
    if (const auto& value = port.staticValue()) {
      add(Kind::value, key, value->stringValue(), value.get()).classification = "port";
    }
    std::unordered_map<const HXPort*, std::uint32_t> levels;
    const HXPort* below = &port;
    // Of a document that is being opened a link upward may not be answered by one downward.
    for (auto* at = port.symbolicPort(); at && at->port() == below; at = at->symbolicPort()) {
      const auto level = static_cast<std::uint32_t>(levels.size() + 1);
      levels.emplace(at, level);
      add(Kind::publication, key, at->name(), at).level = level;
      below = at;
    }
    port.connections().forEach([&](HXConnection& connection) {
      const bool isInput = connection.inputPort() == &port;
      const auto* own = isInput ? connection.displayInputPort() : connection.displayOutputPort();
      const auto found = levels.find(own);
      addConnection(key, connection, isInput).level = found == levels.end() ? 0 : found->second;
    });
  }

  HXNodeItem& addConnection(const String& key, HXConnection& connection, bool isInput) {
    HXNodeItem& item = add(Kind::connection, key, nullptr, &connection);
    item.other =
        Ref<const HXPort>(isInput ? connection.displayOutputPort() : connection.displayInputPort());
    const auto* resolved = isInput ? connection.outputPort() : connection.inputPort();
    if (resolved && resolved->node() == &node_) item.ownOther = resolved->uniqueKey();
    return item;
  }

  void addPublishedPort(HXSymbolicPort& port) {
    const String key = port.uniqueKey();
    add(Kind::port, key, port.name(), &port).classification = "published";
    const auto* resolved = port.resolvedPort();
    if (!resolved) return;
    resolved->connections().forEach([&](HXConnection& connection) {
      const bool isInput = connection.displayInputPort() == &port;
      if (isInput || connection.displayOutputPort() == &port) {
        addConnection(key, connection, isInput);
      }
    });
  }

  void addParameter(const String& key, HXParameter& parameter) {
    add(Kind::parameter, key, parameter.name(), &parameter).classification = parameter.isa().name();
    if (!parameter.valueInitialized()) return;
    add(Kind::value, key, textOf(parameter), nullptr).classification = "parameter";
  }

  const HXNode& node_;
  std::vector<HXNodeItem>& items_;
};

// Equal for what counts as the same thing at both times.
std::string identityOf(const HXNodeItem& item, const OrderedMap<String>& newKeys) {
  const auto keyNow = [&](const String& key) {
    const auto* renamed = newKeys.find(key);
    return renamed ? *renamed : key;
  };
  const bool hasName = item.kind == Kind::value || item.kind == Kind::publication;
  // The other end may be a port of the same node, which the change has made anew.
  const String ownOther = keyNow(item.ownOther);
  return fmt::format("{}\n{}\n{}\n{}\n{}\n{}\n{}", static_cast<int>(item.kind),
                     keyNow(item.key).view(), hasName ? item.text.view() : std::string_view(),
                     item.level, item.classification, ownOther.view(),
                     static_cast<const void*>(ownOther.isNil() ? item.other.get() : nullptr));
}

}  // namespace

std::string_view nameOf(HXNodeItem::Kind kind) noexcept {
  switch (kind) {
    case Kind::port:
      return "port";
    case Kind::parameter:
      return "parameter";
    case Kind::value:
      return "value";
    case Kind::connection:
      return "connection";
    case Kind::publication:
      return "publication";
    case Kind::node:
      return "node";
  }
  return "port";
}

std::string HXNodeItem::description() const {
  const auto owner = brief(key.view());
  switch (kind) {
    case Kind::value:
      return fmt::format("the value \"{}\" of {}", brief(text.view()), owner);
    case Kind::connection: {
      if (!ownOther.isNil()) {
        return fmt::format("the connection of {} with {} of the same node", owner,
                           brief(ownOther.view()));
      }
      const auto address = HXLookup::addressOf(other.get());
      return fmt::format("the connection of {} with {}", owner,
                         address.empty() ? "a port that is gone" : brief(address));
    }
    case Kind::publication:
      return fmt::format("the publication of {} as \"{}\"", owner, brief(text.view()));
    default:
      return fmt::format("the {} {}", nameOf(kind), owner);
  }
}

std::vector<HXNodeItem> HXNodeReport::losses() const {
  std::vector<HXNodeItem> lost;
  for (const auto& item : dropped) {
    if (item.kind != Kind::port && item.kind != Kind::parameter) lost.push_back(item);
  }
  return lost;
}

bool HXNodeReport::losesAnything() const {
  return std::any_of(dropped.begin(), dropped.end(), [](const HXNodeItem& item) {
    return item.kind != Kind::port && item.kind != Kind::parameter;
  });
}

HXNodeState::HXNodeState(const HXNode& node) { Gatherer(node, items_).addAll(); }

std::vector<HXNodeItem> HXNodeState::itemsOfParameters(const HXNode& node) {
  std::vector<HXNodeItem> items;
  Gatherer(node, items).addParameters();
  return items;
}

HXNodeReport HXNodeState::reportSince(const HXNodeState& later,
                                      const OrderedMap<String>& newKeys) const {
  HXNodeReport report;
  std::unordered_map<std::string, std::vector<const HXNodeItem*>> present;
  for (auto item = later.items_.rbegin(); item != later.items_.rend(); ++item) {
    present[identityOf(*item, {})].push_back(&*item);
  }
  for (const HXNodeItem& item : items_) {
    const auto found = present.find(identityOf(item, newKeys));
    if (found == present.end() || found->second.empty()) {
      report.dropped.push_back(item);
      continue;
    }
    HXNodeItem now = *found->second.back();
    found->second.pop_back();
    const bool hasNewKey = now.key != item.key;
    if (hasNewKey) now.formerKey = item.key;
    const bool isRenamed = hasNewKey || (item.kind == Kind::port && now.text != item.text);
    (isRenamed ? report.renamed : report.kept).push_back(std::move(now));
  }
  for (const HXNodeItem& item : later.items_) {
    auto& left = present[identityOf(item, {})];
    if (left.empty() || std::find(left.begin(), left.end(), &item) == left.end()) continue;
    report.added.push_back(item);
  }
  return report;
}

}  // namespace tarnkit
