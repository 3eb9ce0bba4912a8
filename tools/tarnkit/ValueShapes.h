#pragma once

#include <string>
#include <vector>

#include "tarnkit/model/HXGroup.h"
#include "tarnkit/patches/PMRPrimitive.h"

namespace tarnkit {
class HXConnection;
class HXPort;
class JSONWriter;
}  // namespace tarnkit

namespace tarnkit::tool {

// The small shapes, as JSON. What is nil is written as null.

void writeString(JSONWriter& json, const String& string);
void writeStrings(JSONWriter& json, const std::vector<String>& strings);
void writePrimitive(JSONWriter& json, const PMRPrimitive* primitive);
void writeColor(JSONWriter& json, RGBA color);
void writePoint(JSONWriter& json, HXPoint point);
/// "node_3/Tarn.valueInput", or null when the port or its node is gone.
void writePortAddress(JSONWriter& json, const HXPort* port);
void writeConnection(JSONWriter& json, const HXConnection* connection);

}  // namespace tarnkit::tool
