#include "BenchFloor.h"

#include <stdexcept>
#include <unordered_map>

#include "BenchGraph.h"
#include "tarnkit/platform/propertylist/PropertyList.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/propertylist/PropertyListWriter.h"

namespace tarnkit::bench {

namespace {

struct Node;
struct Connection;
struct Port {
  std::string key;
  std::string name;
  std::weak_ptr<Node> node;
  int orientation = 0;
  float defaultValue = 0;
  std::vector<std::shared_ptr<Connection>> connections;
  bool published = false;
};
struct Connection {
  std::string key;
  std::weak_ptr<Port> output;
  std::weak_ptr<Port> input;
};
struct Group;
struct Node {
  std::string key;
  std::string name;
  std::weak_ptr<Group> parent;
  std::shared_ptr<Group> subnodes;
  std::unordered_map<std::string, std::shared_ptr<Port>> ports;
  std::unordered_map<std::string, int> parameters;
};
struct Group {
  std::unordered_map<std::string, std::shared_ptr<Node>> nodes;
  std::vector<std::shared_ptr<Port>> published;
};

std::shared_ptr<Port> addPort(const std::shared_ptr<Node>& node, const char* key, const char* name,
                              int orientation) {
  auto port = std::make_shared<Port>();
  port->key = key;
  port->name = name;
  port->node = node;
  port->orientation = orientation;
  node->ports.emplace(port->key, port);
  return port;
}

}  // namespace

struct FloorGraph::Document {
  std::shared_ptr<Group> top = std::make_shared<Group>();
};

FloorGraph::FloorGraph(std::int64_t nodeCount) : document_(std::make_unique<Document>()) {
  std::shared_ptr<Group> group;
  std::shared_ptr<Port> previous;
  int port = 0;
  for (std::int64_t i = 0; i < nodeCount; ++i) {
    if (i % kNodesPerGroup == 0) {
      auto owner = std::make_shared<Node>();
      owner->key = "group_" + std::to_string(i);
      owner->parent = document_->top;
      owner->subnodes = group = std::make_shared<Group>();
      document_->top->nodes.emplace(owner->key, owner);
    }
    auto node = std::make_shared<Node>();
    node->key = "node_" + std::to_string(i);
    node->name = "Bench";
    node->parent = group;
    node->parameters.emplace("Tarn.countParameter", 1);
    auto input = addPort(node, "Tarn.valueInput", "Value", 1);
    const std::shared_ptr<Port> ports[] = {input, addPort(node, "Tarn.minimumInput", "Minimum", 1),
                                           addPort(node, "Tarn.maximumInput", "Maximum", 1),
                                           addPort(node, "Tarn.resultOutput", "Result", 2)};
    group->nodes.emplace(node->key, node);
    if (previous) {
      auto connection = std::make_shared<Connection>();
      connection->key = "connection_" + std::to_string(i);
      connection->output = previous;
      connection->input = input;
      previous->connections.push_back(connection);
      input->connections.push_back(connection);
    }
    for (const auto& each : ports) {
      if (port++ % kPublishedPortStride != 0) continue;
      each->published = true;
      group->published.push_back(each);
    }
    previous = ports[3];
  }
}

FloorGraph::~FloorGraph() = default;

FloorDeviceGraph::FloorDeviceGraph(ByteSpan deviceGraph) {
  const auto read = PropertyListReader::read(deviceGraph);
  if (!read) throw std::runtime_error(read.status().message());
  const PropertyList& list = *read;
  std::unordered_map<std::string_view, std::uint32_t> ids;
  const auto idOf = [&](std::string_view text) {
    const auto [entry, isNew] = ids.emplace(text, static_cast<std::uint32_t>(ids_.size()));
    if (isNew) ids_.emplace_back(text);
    return entry->second;
  };
  std::unordered_map<std::string_view, std::uint32_t> keys;
  const auto keyOf = [&](std::string_view text) {
    const auto [entry, isNew] = keys.emplace(text, static_cast<std::uint32_t>(keyTexts_.size()));
    if (isNew) keyTexts_.emplace_back(text);
    return entry->second;
  };
  const auto valueOf = [&](PropertyList::Index index) {
    Value value;
    switch (list.kind(index)) {
      case PropertyList::Kind::boolean:
        value.kind = Value::Kind::boolean;
        value.integer = list.boolean(index);
        break;
      case PropertyList::Kind::integer:
        value.kind = Value::Kind::integer;
        value.integer = list.integer(index);
        break;
      case PropertyList::Kind::real32:
      case PropertyList::Kind::real64:
        value.kind = list.kind(index) == PropertyList::Kind::real32 ? Value::Kind::real32
                                                                    : Value::Kind::real64;
        value.real = list.real(index);
        break;
      case PropertyList::Kind::map:
        value.kind = Value::Kind::reference;
        value.target = idOf(list.string(list.values(index)[0]));
        break;
      default:
        value.kind = Value::Kind::string;
        value.text = list.string(index);
    }
    return value;
  };
  version_ = list.string(list.valueForKey(list.root(), "$version"));
  root_ = idOf(list.string(list.values(list.valueForKey(list.root(), "$root"))[0]));
  const auto objects = list.valueForKey(list.root(), "$objects");
  for (std::uint32_t i = 0; i < list.count(objects); ++i) {
    const auto object = list.values(objects)[i];
    Record record{idOf(list.string(list.keys(objects)[i])),
                  list.kind(object) == PropertyList::Kind::array,
                  {},
                  {}};
    if (record.isList) {
      for (const auto element : list.elements(object)) record.values.push_back(valueOf(element));
    } else {
      for (std::uint32_t k = 0; k < list.count(object); ++k) {
        record.keys.push_back(keyOf(list.string(list.keys(object)[k])));
        record.values.push_back(valueOf(list.values(object)[k]));
      }
    }
    records_.push_back(std::move(record));
  }
  for (const auto& text : keyTexts_) keys_.push_back(std::make_unique<Symbol>(text.c_str()));
}

std::vector<std::uint8_t> FloorDeviceGraph::write() const {
  constexpr PropertyListWriter::Index kNone = 0xFFFFFFFFU;
  PropertyListWriter writer;
  const auto root = writer.reserve();
  const auto objects = writer.reserve();
  const auto referenceKey = writer.addString("$reference");
  std::vector<PropertyListWriter::Index> ids(ids_.size(), kNone);
  std::vector<PropertyListWriter::Index> references(ids_.size(), kNone);
  const auto idIndex = [&](std::uint32_t id) {
    if (ids[id] == kNone) ids[id] = writer.addDistinctString(ids_[id]);
    return ids[id];
  };
  const auto referenceIndex = [&](std::uint32_t id) {
    if (references[id] == kNone) {
      const auto text = idIndex(id);
      references[id] = writer.addMap({&referenceKey, 1}, {&text, 1});
    }
    return references[id];
  };
  std::vector<PropertyListWriter::Index> keys;
  std::vector<PropertyListWriter::Index> row;
  std::vector<PropertyListWriter::Index> recordIds;
  std::vector<PropertyListWriter::Index> recordObjects;
  for (const Record& record : records_) {
    recordIds.push_back(idIndex(record.id));
    const auto object = writer.reserve();
    recordObjects.push_back(object);
    keys.clear();
    row.clear();
    for (const auto key : record.keys) keys.push_back(writer.addSymbol(*keys_[key]));
    for (const Value& value : record.values) {
      switch (value.kind) {
        case Value::Kind::string:
          row.push_back(writer.addString(value.text));
          break;
        case Value::Kind::integer:
          row.push_back(writer.addInt(value.integer));
          break;
        case Value::Kind::real32:
          row.push_back(writer.addReal32(static_cast<float>(value.real)));
          break;
        case Value::Kind::real64:
          row.push_back(writer.addReal64(value.real));
          break;
        case Value::Kind::boolean:
          row.push_back(writer.addBool(value.integer != 0));
          break;
        default:
          row.push_back(referenceIndex(value.target));
      }
    }
    const auto count = record.values.size();
    const auto span =
        record.isList ? writer.fillArray(object, count) : writer.fillMap(object, keys);
    std::copy(row.begin(), row.end(), span.begin());
  }
  const auto table = writer.fillMap(objects, records_.size());
  std::copy(recordIds.begin(), recordIds.end(), table.keys.begin());
  std::copy(recordObjects.begin(), recordObjects.end(), table.values.begin());
  const PropertyListWriter::Index names[] = {
      writer.addString("$version"), writer.addString("$objects"), writer.addString("$root")};
  const PropertyListWriter::Index values[] = {writer.addString(version_), objects,
                                              referenceIndex(root_)};
  std::copy(std::begin(values), std::end(values), writer.fillMap(root, names).begin());
  return writer.finish(root);
}

}  // namespace tarnkit::bench
