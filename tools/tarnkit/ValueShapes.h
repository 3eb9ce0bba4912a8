#pragma once

#include <string>
#include <vector>

#include "tarnkit/model/HXGroup.h"
#include "tarnkit/patches/PMRPrimitive.h"

namespace tarnkit {
class HXConnection;
class HXPort;
}  // namespace tarnkit

namespace tarnkit::tool {

class JsonWriter;

// The small shapes, as JSON. What is nil is written as null.

void writeString(JsonWriter& json, const String& string);
void writeStrings(JsonWriter& json, const std::vector<String>& strings);
void writePrimitive(JsonWriter& json, const PMRPrimitive* primitive);
void writeColor(JsonWriter& json, RGBA color);
void writePoint(JsonWriter& json, HXPoint point);
/// "node_3/Tarn.valueInput", or null when the port or its node is gone.
void writePortAddress(JsonWriter& json, const HXPort* port);
void writeConnection(JsonWriter& json, const HXConnection* connection);

/// "node_3/Tarn.valueInput"; "" when the port or its node is gone.
std::string portAddress(const HXPort* port);

}  // namespace tarnkit::tool
