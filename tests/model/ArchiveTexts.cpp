#include "tests/model/ArchiveTexts.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "tarnkit/archive/HXArchiveReader.h"
#include "tarnkit/model/HXImageStoreEntry.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/numbers/NumberText.h"
#include "tarnkit/platform/objects/Null.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"

namespace tarnkit::test {

namespace {

using Kind = PropertyList::Kind;
using Index = PropertyList::Index;

std::string quoted(std::string_view text) {
  std::string out = "\"";
  for (const char c : text) out += c == '\n' ? std::string("\\n") : std::string(1, c);
  return out + "\"";
}

// What both archives share: scalars, and objects of keys and values.
class ArchiveWriter {
 public:
  explicit ArchiveWriter(const PropertyList& list) : list_(list) {}
  virtual ~ArchiveWriter() = default;

 protected:
  virtual std::string referred(Index value) = 0;

  std::string shown(Index value) {
    switch (list_.kind(value)) {
      case Kind::boolean:
        return list_.boolean(value) ? "true" : "false";
      case Kind::integer:
        return std::to_string(list_.integer(value));
      case Kind::real32:
        return shortestText(static_cast<float>(list_.real(value))) + "f";
      case Kind::real64:
        return shortestText(list_.real(value));
      case Kind::string:
        return quoted(list_.string(value));
      case Kind::data:
        return fmt::format("<{} bytes>", list_.data(value).size());
      case Kind::array: {
        std::string elements;
        for (const Index element : list_.elements(value)) elements += " " + shown(element);
        return "[" + (elements.empty() ? elements : elements.substr(1)) + "]";
      }
      default:
        return referred(value);
    }
  }
  std::string fields(Index map, std::string_view className) {
    std::string text;
    for (std::size_t i = 0; i < list_.keys(map).size(); ++i) {
      std::string_view key = list_.string(list_.keys(map)[i]);
      if (key == "$class") continue;
      if (key.substr(0, className.size() + 1) == std::string(className) + ".") {
        key.remove_prefix(className.size());
      }
      text += fmt::format(" {}={}", key, shown(list_.values(map)[i]));
    }
    return text;
  }

  const PropertyList& list_;
};

class EditorWriter final : public ArchiveWriter {
 public:
  explicit EditorWriter(const PropertyList& list)
      : ArchiveWriter(list), objects_(list.elements(list.valueForKey(list.root(), "$objects"))) {
    for (const Index object : objects_) {
      const bool isShown = list.kind(object) == Kind::map && !isClass(object);
      numbers_.push_back(shown_ += isShown ? 1U : 0U);
    }
  }

  std::string text() {
    std::string text = fmt::format(
        "root={}\n", shown(list_.valueForKey(list_.valueForKey(list_.root(), "$top"), "root")));
    for (std::size_t i = 0; i < objects_.size(); ++i) {
      const Index object = objects_[i];
      if (list_.kind(object) != Kind::map || isClass(object)) continue;
      const auto name = classOf(object);
      text += fmt::format("#{} {}{}\n", numbers_[i], name, fields(object, name));
    }
    return text;
  }

 private:
  bool isClass(Index object) const {
    return list_.valueForKey(object, "$classname") != PropertyList::kNone;
  }
  std::string_view classOf(Index object) const {
    const auto reference = list_.valueForKey(object, "$class");
    return list_.string(list_.valueForKey(objects_[list_.uid(reference)], "$classname"));
  }
  std::string referred(Index value) override {
    const auto uid = list_.uid(value);
    const Index object = objects_[uid];
    if (uid == 0 || (list_.kind(object) == Kind::string && list_.string(object) == "$null")) {
      return "nil";
    }
    return list_.kind(object) == Kind::map ? fmt::format("#{}", numbers_[uid]) : shown(object);
  }

  PropertyList::Elements objects_;
  std::vector<unsigned> numbers_;  // of each object among those that are shown
  unsigned shown_ = 0;
};

// Lists and maps stand where they are referred to, with the number that they have.
class DeviceWriter final : public ArchiveWriter {
 public:
  explicit DeviceWriter(const HXArchiveReader& archive)
      : ArchiveWriter(archive.list()), archive_(archive) {}

  std::string text() {
    std::string text = fmt::format("root={}\n", shown(archive_.root()));
    for (HXArchiveReader::Object object = 0; object < archive_.objectCount(); ++object) {
      const Index body = archive_.bodyOf(object);
      const auto name = archive_.classOf(object);
      if (name.empty()) continue;
      text += fmt::format("{} {}{}\n", nameOf(object), name, fields(body, name));
    }
    return text;
  }

 private:
  std::string nameOf(HXArchiveReader::Object object) const {
    return "#" + std::string(archive_.idOf(object).substr(std::string_view("$object-").size()));
  }
  std::string referred(Index value) override {
    if (!archive_.isReference(value)) return "{" + fields(value, "") + " }";
    const auto object = archive_.resolve(value);
    if (object == HXArchiveReader::kNoObject) {
      return "absent " + std::string(list_.string(list_.values(value)[0]));
    }
    if (!archive_.classOf(object).empty()) return nameOf(object);
    const Index body = archive_.bodyOf(object);
    if (list_.kind(body) != Kind::map) return nameOf(object) + shown(body);
    return nameOf(object) + "{" + fields(body, "") + " }";
  }

  const HXArchiveReader& archive_;
};

// --- Properties

std::string text(const String& string) { return string.isNil() ? "nil" : quoted(string.view()); }
std::string keyOf(const HXNode* node) { return node ? text(node->uniqueKey()) : "nil"; }
std::string address(const HXPort* port) {
  if (!port) return "nil";
  return fmt::format("{}/{}", keyOf(port->node()), text(port->uniqueKey()));
}
std::string text(const PMRPrimitive* value) {
  if (!value) return "nil";
  const RGBA color = value->colorValue();
  return fmt::format("{}:{} {} {} [{} {} {} {}] {}", static_cast<int>(value->storageType()),
                     value->booleanValue(), value->indexValue(), value->numberValue(), color.red,
                     color.green, color.blue, color.alpha, text(value->stringValue()));
}

std::string valueOf(const HXParameter& parameter) {
  if (const auto* index = as<HXIndexParameter>(&parameter)) return std::to_string(index->value());
  if (const auto* number = as<HXNumberParameter>(&parameter)) return shortestText(number->value());
  if (const auto* boolean = as<HXBooleanParameter>(&parameter)) {
    return boolean->value() ? "true" : "false";
  }
  if (const auto* string = as<HXStringParameter>(&parameter)) return text(string->value());
  if (const auto* color = as<HXColorParameter>(&parameter)) {
    const RGBA value = color->value();
    return fmt::format("[{} {} {} {}]", value.red, value.green, value.blue, value.alpha);
  }
  const auto* entry = as<HXImageParameter>(&parameter)->imageEntry();
  return entry ? text(entry->key()) : "nil";
}

void writeSymbolicPorts(std::string& out, const std::vector<Ref<HXSymbolicPort>>& ports) {
  for (const auto& published : ports) {
    const HXSymbolicPort& port = *published;
    out += fmt::format("  published {} side={} relationship={} name={} of={} node={} in={}\n",
                       text(port.uniqueKey()), port.orientation(), port.connectionRelationship(),
                       text(port.name()), address(port.port()), keyOf(port.node()),
                       address(port.symbolicPort()));
  }
}

void writeGroup(std::string& out, const HXGroup& group) {
  out += fmt::format("  group {} opaque={} center={},{} nodes=", group.isa().name(),
                     group.isOpaque(), group.canvasCenter().x, group.canvasCenter().y);
  for (const auto& node : group.subnodes()) out += text(node->uniqueKey()) + " ";
  if (const auto* views = as<HXSubviewGroup>(&group)) {
    out += "views=";
    for (const auto& view : views->subviewNodesInForce()) {
      out += text(static_cast<const HXNode&>(*view).uniqueKey()) + " ";
    }
  }
  out.back() = '\n';
  writeSymbolicPorts(out, group.symbolicInputPorts());
  writeSymbolicPorts(out, group.symbolicOutputPorts());
}

void writePorts(std::string& out, const HXNode& node) {
  for (const auto& groups : {node.inputPortGroups(), node.outputPortGroups()}) {
    for (const auto& group : groups) {
      out += fmt::format("  port group {} {} side={} canvas={} sidebar={} hidden={} of={}\n",
                         group->isa().name(), text(group->groupKey()), group->orientation(),
                         group->collapsedCanvasGroup(), group->collapsedSidebarGroup(),
                         group->hidden(), keyOf(group->node()));
    }
  }
  for (const auto& entry : node.portsByUniqueKey()) {
    const HXPatchPort& port = *entry.value;
    out += fmt::format("  port {} of={} side={} relationship={} static={} published={}\n",
                       text(entry.key), keyOf(port.node()), port.orientation(),
                       port.connectionRelationship(), text(port.staticValue().get()),
                       address(port.symbolicPort()));
    port.connections().forEach([&](HXConnection& connection) {
      out += fmt::format("    {} to {}, shown {} to {}\n", address(connection.outputPort()),
                         address(connection.inputPort()), address(connection.displayOutputPort()),
                         address(connection.displayInputPort()));
    });
  }
}

void writeNode(std::string& out, const HXNode& node) {
  out += fmt::format("{} {} name={} at={},{} panel={} selected={} force={} patch={} unknown={}\n",
                     node.isa().name(), text(node.uniqueKey()), text(node.name()),
                     node.position().x, node.position().y, node.inspectorPanel(), node.selected(),
                     node.forceAllowsSubnodes(), node.patch() ? node.patch()->isa().name() : "nil",
                     text(node.unknownPatchClass()));
  out += "  in";
  for (const HXNode* at = node.enclosingNode(); at; at = at->enclosingNode()) {
    out += " " + text(at->uniqueKey());
  }
  out += '\n';
  if (node.subnodeGroup()) writeGroup(out, *node.subnodeGroup());
  writePorts(out, node);
  for (const auto& entry : node.parameters()) {
    out += fmt::format("  parameter {} {} {} of={}\n", entry.value->isa().name(), text(entry.key),
                       valueOf(*entry.value), keyOf(entry.value->node()));
  }
}

}  // namespace

std::string editorText(ByteSpan archive) {
  const auto list = PropertyListReader::read(archive);
  EXPECT_TRUE(list) << list.status().message();
  return list ? EditorWriter(*list).text() : std::string();
}

std::string deviceText(ByteSpan archive) {
  HXArchiveReader reader;
  const Status status = reader.open(archive);
  EXPECT_TRUE(status) << status.message();
  return DeviceWriter(reader).text();
}

std::string propertyText(const HXDocument& document) {
  std::string out;
  HXNodeWalk walk(const_cast<HXDocument&>(document), HXNodeWalk::Siblings::sortedByKey);
  while (const HXNode* node = walk.next()) writeNode(out, *node);
  for (const auto& entry : document.imageStore()->imageEntries()) {
    const auto& image = entry.value->image();
    out += fmt::format("image {} {} count={}\n", text(entry.key),
                       image ? fmt::format("{}x{}", image->width(), image->height()) : "nil",
                       document.imageStore()->countForKey(entry.key));
  }
  return out;
}

namespace {

// The length of a key that was drawn, which begins there; 0 when none does. `kind` becomes its
// kind.
std::size_t drawnKey(std::string_view text, std::string_view& kind) {
  constexpr std::string_view kOutput = "ReplicatorOutput.";
  constexpr std::size_t kUUID = 36;
  for (const std::string_view prefix : {"node_", "group_", "connection_"}) {
    if (!text.starts_with(prefix)) continue;
    const auto end = text.find_first_not_of("0123456789", prefix.size());
    const auto size = std::min(end, text.size());
    if (size == prefix.size()) return 0;
    kind = prefix.substr(0, prefix.size() - 1);
    return size;
  }
  if (!text.starts_with(kOutput)) return 0;
  const auto end = text.find_first_not_of("0123456789ABCDEF-", kOutput.size());
  if (std::min(end, text.size()) < kOutput.size() + kUUID) return 0;
  kind = kOutput.substr(0, kOutput.size() - 1);
  return kOutput.size() + kUUID;
}

}  // namespace

std::string withOwnKeys(const std::string& text) {
  std::map<std::string, std::string> known;
  std::map<std::string, int> counts;
  std::string out;
  for (std::size_t at = 0; at < text.size();) {
    std::string_view kind;
    const auto size = drawnKey(std::string_view(text).substr(at), kind);
    if (size == 0) {
      out += text[at++];
      continue;
    }
    auto [entry, isNew] = known.try_emplace(text.substr(at, size));
    if (isNew) entry->second = fmt::format("{}_{}", kind, counts[std::string(kind)]++);
    out += entry->second;
    at += size;
  }
  return out;
}

void drawKeysOfOneLength() {
  constexpr long kRoom = 5000;
  const auto align = [](auto draw) {
    for (;;) {
      const String key = draw();
      const long number = std::atol(key.toStdString().substr(key.view().find('_') + 1).c_str());
      long next = 1000;
      while (next <= number) next *= 10;
      if (number >= 1000 && next - number > kRoom) return;
    }
  };
  align([] { return HXNode::hx_newUniqueKey(); });
  align([] { return HXGroup::hx_newUniqueKey(); });
  align([] { return HXConnection::hx_newUniqueKey(); });
}

void expectSameText(const std::string& actual, const std::string& expected,
                    const std::string& what) {
  if (actual == expected) return;
  std::istringstream found(actual), wanted(expected);
  std::string foundLine, wantedLine;
  int line = 1, shown = 0;
  for (; shown < 5; ++line) {
    const bool hasFound = static_cast<bool>(std::getline(found, foundLine));
    const bool hasWanted = static_cast<bool>(std::getline(wanted, wantedLine));
    if (!hasFound && !hasWanted) break;
    if (hasFound == hasWanted && foundLine == wantedLine) continue;
    ++shown;
    ADD_FAILURE() << what << ", line " << line << "\n  is        " << (hasFound ? foundLine : "")
                  << "\n  should be " << (hasWanted ? wantedLine : "");
  }
}

void expectGolden(const std::string& text, const std::string& name) {
  const std::filesystem::path path =
      std::filesystem::path(TARNKIT_SOURCE_DIR "/tests/model/golden") / name;
  if (std::getenv("TARNKIT_REGENERATE")) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << text;
    return;
  }
  std::ifstream file(path);
  ASSERT_TRUE(file) << path
                    << ": run this test with TARNKIT_REGENERATE=1 and look at what it wrote";
  std::ostringstream kept;
  kept << file.rdbuf();
  expectSameText(text, kept.str(), name);
}

}  // namespace tarnkit::test
