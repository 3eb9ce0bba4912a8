#include "tarnkit/archive/HXVersion.h"
#include "tarnkit/patches/catalogue/logic/HXRConditionalNode.h"
#include "tarnkit/patches/catalogue/logic/HXRLogicNode.h"
#include "tarnkit/patches/catalogue/math/HXRMathNode.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/Arguments.h"
#include "tools/tarnkit/Operations.h"
#include "tools/tarnkit/ValueShapes.h"

namespace tarnkit::tool {

namespace {

Result readPrimitiveValue(Session&, const Arguments& arguments) {
  const auto primitive = arguments.primitive("value");
  return [primitive](JSONWriter& json) {
    json.beginObject();
    json.key("storageType").value(primitive->storageType());
    json.key("booleanValue").value(primitive->booleanValue());
    json.key("indexValue").value(primitive->indexValue());
    json.key("numberValue").value(primitive->numberValue());
    json.key("radiansValue").value(primitive->radiansValue());
    json.key("degreesValue").value(primitive->degreesValue());
    json.key("colorValue");
    writeColor(json, primitive->colorValue());
    json.key("stringValue");
    writeString(json, primitive->stringValue());
    json.key("description");
    writeString(json, primitive->description());
    json.key("hash").value(primitive->hash());
    json.endObject();
  };
}

Result equalPrimitives(Session&, const Arguments& arguments) {
  const bool equal = arguments.primitive("value")->isEqual(*arguments.primitive("other"));
  return [equal](JSONWriter& json) { json.value(equal); };
}

Result operatorText(Session&, const Arguments& arguments) {
  const auto table = arguments.word("table", {"math", "logic", "conditional"});
  const auto index = arguments.unsignedInteger("index");
  const String text = table == "math"    ? HXRStringForMathOperator(index)
                      : table == "logic" ? HXRStringForLogicOperator(index)
                                         : HXRStringForConditionalOperator(index);
  return [text](JSONWriter& json) { writeString(json, text); };
}

Result readVersion(Session&, const Arguments& arguments) {
  const auto version = HXVersionFromString(arguments.textOrNil("text"));
  return [version](JSONWriter& json) {
    json.beginObject().key("version").beginArray();
    json.value(version.major).value(version.minor).value(version.patch).endArray();
    json.key("text");
    writeString(json, HXStringFromVersion(version));
    json.endObject();
  };
}

constexpr Operation kOperations[] = {
    {"readPrimitive", "value", readPrimitiveValue},
    {"equalPrimitives", "value other", equalPrimitives},
    {"operatorText", "table index", operatorText},
    {"version", "text", readVersion},
};

}  // namespace

std::span<const Operation> valueOperations() { return kOperations; }

}  // namespace tarnkit::tool
