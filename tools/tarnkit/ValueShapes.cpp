#include "tools/tarnkit/ValueShapes.h"

#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXLookup.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXPort.h"
#include "tarnkit/platform/text/JSONWriter.h"

namespace tarnkit::tool {

void writeString(JSONWriter& json, const String& string) {
  if (string.isNil()) {
    json.null();
  } else {
    json.value(string.view());
  }
}

void writeStrings(JSONWriter& json, const std::vector<String>& strings) {
  json.beginArray();
  for (const auto& string : strings) writeString(json, string);
  json.endArray();
}

void writePrimitive(JSONWriter& json, const PMRPrimitive* primitive) {
  if (!primitive) {
    json.null();
    return;
  }
  json.beginObject().key("kind");
  switch (primitive->storageType()) {
    case PMRPrimitive::nil:
      json.value("nil");
      break;
    case PMRPrimitive::boolean:
      json.value("boolean").key("value").value(primitive->booleanValue());
      break;
    case PMRPrimitive::index:
      json.value("index").key("value").value(primitive->indexValue());
      break;
    case PMRPrimitive::number:
      json.value("number").key("value").value(primitive->numberValue());
      break;
    case PMRPrimitive::radians:
      json.value("radians").key("value").value(primitive->radiansValue());
      break;
    case PMRPrimitive::degrees:
      json.value("degrees").key("value").value(primitive->degreesValue());
      break;
    case PMRPrimitive::color:
      json.value("color").key("value");
      writeColor(json, primitive->colorValue());
      break;
    case PMRPrimitive::string:
      json.value("string").key("value");
      writeString(json, primitive->stringValue());
      break;
    default:  // a code that an archive held and nobody knows reads as nil everywhere
      json.value("nil").key("storageType").value(primitive->storageType());
  }
  json.endObject();
}

void writeColor(JSONWriter& json, RGBA color) {
  json.floats({color.red, color.green, color.blue, color.alpha});
}

void writePoint(JSONWriter& json, HXPoint point) { json.floats({point.x, point.y}); }

void writePortAddress(JSONWriter& json, const HXPort* port) {
  const auto address = HXLookup::addressOf(port);
  if (address.empty()) {
    json.null();
  } else {
    json.value(address);
  }
}

void writeConnection(JSONWriter& json, const HXConnection* connection) {
  if (!connection) {
    json.null();
    return;
  }
  json.beginObject().key("uniqueKey");
  writeString(json, connection->uniqueKey());
  json.key("from");
  writePortAddress(json, connection->outputPort());
  json.key("to");
  writePortAddress(json, connection->inputPort());
  json.key("displayFrom");
  writePortAddress(json, connection->displayOutputPort());
  json.key("displayTo");
  writePortAddress(json, connection->displayInputPort());
  json.endObject();
}

}  // namespace tarnkit::tool
