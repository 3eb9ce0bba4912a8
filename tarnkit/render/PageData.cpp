#include "tarnkit/render/PageData.h"

#include <fmt/format.h>

#include <unordered_set>

#include "tarnkit/model/HXImageStoreEntry.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/images/Image.h"
#include "tarnkit/platform/objects/Overloaded.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tarnkit/render/Markup.h"

namespace tarnkit::detail {

namespace {

void writeField(JSONWriter& json, std::string_view name, std::string_view words) {
  json.key(name).value(words);
}

void writeUnlessNil(JSONWriter& json, std::string_view name, const String& words) {
  if (!words.isNil()) writeField(json, name, words);
}

void writeColor(JSONWriter& json, std::string_view name, RGBA color) {
  std::string hex;
  appendColor(hex, color);
  writeField(json, name, hex);
}

void writePort(JSONWriter& json, const HXPort& port, const HXPortGroup* group) {
  json.beginObject();
  writeField(json, "key", port.uniqueKey());
  writeField(json, "name", titleOfPort(port));
  if (group && group->groupKey() != HXRDefaultPortGroupKey) {
    writeField(json, "portGroup", group->groupKey());
  }
  if (group && group->hidden()) json.key("hidden").value(true);
  writeColor(json, "color", port.defaultColor());
  const PortValue value = valueOfPort(port, 1);
  if (value.kind != PortValue::Kind::none) {
    writeField(json, "value", value.text.full);
    if (value.kind == PortValue::Kind::color) writeColor(json, "swatch", value.color);
    if (value.isSet) json.key("set").value(true);
  }
  if (const auto* published = port.symbolicPort()) writeField(json, "published", published->name());
  json.endObject();
}

void writePorts(JSONWriter& json, const HXNode& node, std::int32_t orientation) {
  json.beginArray();
  std::unordered_set<const HXPort*> written;
  const bool isInput = orientation == HXOrientationInput;
  for (const auto& group : isInput ? node.inputPortGroups() : node.outputPortGroups()) {
    eachPortOfGroup(node, *group, [&](const HXPort& port) {
      if (written.insert(&port).second) writePort(json, port, group.get());
    });
  }
  for (const auto& entry : node.portsInForce()) {
    const HXPatchPort& port = *entry.value;
    if (port.orientation() == orientation && written.insert(&port).second) {
      writePort(json, port, nullptr);
    }
  }
  json.endArray();
}

std::string parameterText(const HXParameter& parameter) {
  const auto imageText = [](const HXImageStoreEntry* entry) -> std::string {
    if (!entry) return "no image";
    if (!entry->image()) return "an image that could not be read";
    return fmt::format("image, {} × {}", entry->image()->width(), entry->image()->height());
  };
  return std::visit(
      Overloaded{
          [](const HXIndexParameter* index) { return std::to_string(index->value()); },
          [](const HXNumberParameter* number) { return numberText(number->value()); },
          [](const HXBooleanParameter* boolean) {
            return std::string(boolean->value() ? "on" : "off");
          },
          [](const HXStringParameter* string) { return string->value().toStdString(); },
          [](const HXColorParameter* color) { return colorText(color->value()); },
          [&](const HXImageParameter* image) { return imageText(image->imageEntry()); },
      },
      parameter.kind());
}

void writeParameters(JSONWriter& json, const HXNode& node) {
  json.key("parameters").beginArray();
  for (const auto& entry : node.parameters()) {
    const HXParameter& parameter = *entry.value;
    const String name = parameter.name();
    json.beginObject();
    writeField(json, "name", name ? name : entry.key);
    writeField(json, "value", parameterText(parameter));
    if (const auto* color = as<HXColorParameter>(&parameter)) {
      writeColor(json, "swatch", color->value());
    }
    json.endObject();
  }
  json.endArray();
}

void writeMark(JSONWriter& json, SceneMark mark) {
  if (mark != SceneMark::none) writeField(json, "mark", nameOf(mark));
}

void writeNode(JSONWriter& json, const GroupScene& scene, const NodeBox& box) {
  const HXNode& node = *box.node;
  json.beginObject();
  writeField(json, "key", scene.keyOf(node));
  writeField(json, "name", box.title.full);
  writeMark(json, box.mark);
  writeUnlessNil(json, "patch", patchNameOfNode(node));
  if (node.patch()) {
    writeField(json, "patchName", node.patchClass().defaultName());
    writeUnlessNil(json, "category", node.patchClass().libraryCategory());
  }
  if (const auto& group = node.subnodeGroup()) {
    writeField(json, "group", scene.keyOf(*group));
    json.key("count").value(std::uint64_t{group->subnodesInForce().size()});
  }
  writeUnlessNil(json, "complaint", box.complaint.full);
  writeColor(json, "color", node.defaultColor());
  json.key("box").beginArray();
  for (const double number : {box.x, box.y, box.width, box.height}) {
    std::string digits;
    appendNumber(digits, number);
    json.number(digits);
  }
  json.endArray();
  json.key("inputs");
  writePorts(json, node, HXOrientationInput);
  json.key("outputs");
  writePorts(json, node, HXOrientationOutput);
  writeParameters(json, node);
  json.endObject();
}

void writeEnd(JSONWriter& json, std::string_view name, const GroupScene& scene,
              const HXPort* port) {
  const HXNode* const node = port ? port->node() : nullptr;
  if (!node) return;
  json.key(name).beginArray();
  json.value(scene.keyOf(*node));
  json.value(port->uniqueKey());
  json.value(titleOfNode(*node));
  json.value(titleOfPort(*port));
  json.endArray();
}

}  // namespace

void appendPageData(std::string& out, const GroupScene& scene) {
  JSONWriter json(out, JSONWriter::Escapes::script);
  json.beginObject();
  writeField(json, "title", titleOfGroup(scene.group));
  json.key("notes").beginArray();
  for (const std::string& note : scene.notes) json.value(note);
  json.endArray();
  json.key("nodes").beginArray();
  for (const NodeBox& box : scene.boxes) writeNode(json, scene, box);
  json.endArray();
  json.key("wires").beginArray();
  for (const Wire& wire : scene.wires) {
    json.beginObject();
    writeEnd(json, "from", scene, wire.output);
    writeEnd(json, "to", scene, wire.input);
    writeMark(json, wire.mark);
    json.endObject();
  }
  json.endArray();
  json.endObject();
}

}  // namespace tarnkit::detail
