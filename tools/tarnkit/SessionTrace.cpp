#include "tools/tarnkit/SessionTrace.h"

#include <fmt/format.h>

#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXImageStoreEntry.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/platform/collections/Array.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/objects/Null.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/ValueShapes.h"

namespace tarnkit::tool {

namespace {

std::string_view keyOfNode(const HXNode* node) {
  return node ? node->uniqueKey().view() : std::string_view("null");
}

// A parameter without a definition knows no key of its own.
std::string keyOfParameter(const HXParameter& parameter) {
  const String key = parameter.uniqueKey();
  if (!key.isNil() || !parameter.node()) return key.toStdString();
  for (const auto& entry : parameter.node()->parameters()) {
    if (entry.value == &parameter) return entry.key.toStdString();
  }
  return {};
}

// "CLASS:key" of an object of the model; "CLASS" of any other.
std::string nameOf(const Object& object) {
  const auto className = object.isa().name();
  if (const auto* node = as<HXNode>(&object)) {
    return fmt::format("{}:{}", className, node->uniqueKey().view());
  }
  if (const auto* group = as<HXGroup>(&object)) {
    return fmt::format("{}:{}", className, group->uniqueKey().view());
  }
  if (const auto* connection = as<HXConnection>(&object)) {
    return fmt::format("{}:{}", className, connection->uniqueKey().view());
  }
  if (const auto* port = as<HXPort>(&object)) {
    return fmt::format("{}:{}/{}", className, keyOfNode(port->node()), port->uniqueKey().view());
  }
  if (const auto* group = as<HXPortGroup>(&object)) {
    return fmt::format("{}:{}/{}/{}", className, keyOfNode(group->node()), group->orientation(),
                       group->groupKey().view());
  }
  if (const auto* parameter = as<HXParameter>(&object)) {
    return fmt::format("{}:{}/{}", className, keyOfNode(parameter->node()),
                       keyOfParameter(*parameter));
  }
  if (const auto* entry = as<HXImageStoreEntry>(&object)) {
    return fmt::format("{}:{}", className, entry->key().view());
  }
  return std::string(className);
}

void writeNumber(JSONWriter& json, const Number& number) {
  switch (number.kind()) {
    case Number::Kind::boolean:
      json.value(number.boolValue());
      break;
    case Number::Kind::float32:
      json.value(number.floatValue());
      break;
    case Number::Kind::float64:
      json.value(number.doubleValue());
      break;
    default:
      json.value(number.int64Value());
  }
}

// Everything but collections.
void writeSingle(JSONWriter& json, const Object& object) {
  if (as<Null>(&object)) {
    json.null();
  } else if (const auto* string = as<StringObject>(&object)) {
    json.value(string->view());
  } else if (const auto* number = as<Number>(&object)) {
    writeNumber(json, *number);
  } else if (const auto* primitive = as<PMRPrimitive>(&object)) {
    writePrimitive(json, primitive);
  } else {
    json.value(nameOf(object));
  }
}

template <class Collection>
void writeMembers(JSONWriter& json, const Collection& collection) {
  json.beginArray();
  for (const auto& member : collection) writeSingle(json, *member);
  json.endArray();
}

// Nothing in the model sends collections of collections.
void writeObject(JSONWriter& json, const Object& object) {
  if (const auto* list = as<Array>(&object)) {
    writeMembers(json, *list);
  } else if (const auto* set = as<OrderedSet>(&object)) {
    writeMembers(json, *set);
  } else if (const auto* unordered = as<Set>(&object)) {
    writeMembers(json, *unordered);
  } else {
    writeSingle(json, object);
  }
}

}  // namespace

SessionTrace::SessionTrace(JSONWriter& json)
    : json_(json),
      observation_([this](const Notification& notification) { write(notification); }),
      formerSink_(Log::setSink([this](std::string_view line) { write(line); })) {}

SessionTrace::~SessionTrace() { Log::setSink(std::move(formerSink_)); }

void SessionTrace::write(const Notification& notification) {
  json_.beginObject().key("op").value(operation_);
  json_.key("notification").value(notification.name.text());
  json_.key("object");
  writeObject(json_, notification.object);
  json_.key("userInfo").beginObject();
  for (const auto& entry : notification.userInfo) {
    json_.key(entry.key->text());
    writeObject(json_, *entry.value);
  }
  json_.endObject().endObject().endLine();
}

void SessionTrace::write(std::string_view logLine) {
  json_.beginObject().key("op").value(operation_);
  json_.key("log").value(logLine).endObject().endLine();
}

}  // namespace tarnkit::tool
