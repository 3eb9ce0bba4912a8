#include "tarnkit/render/PageData.h"

#include <fmt/format.h>

#include <unordered_set>

#include "tarnkit/model/HXImageStoreEntry.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/Overloaded.h"
#include "tarnkit/platform/images/Image.h"
#include "tarnkit/render/Markup.h"

namespace tarnkit::detail {

namespace {

/// One JSON object after another, field by field.
class Writer {
 public:
  explicit Writer(std::string& out) : out_(out) {}

  void open(char bracket) {
    separate();
    out_ += bracket;
    first_ = true;
  }
  void close(char bracket) {
    out_ += bracket;
    first_ = false;
  }
  void key(std::string_view name) {
    separate();
    out_.append(1, '"').append(name).append("\":");
    first_ = true;
  }
  void text(std::string_view words) {
    separate();
    appendJSON(out_, words);
  }
  void number(double value) {
    separate();
    appendNumber(out_, value);
  }
  void field(std::string_view name, std::string_view words) {
    key(name);
    text(words);
  }
  void fieldUnlessNil(std::string_view name, const String& words) {
    if (!words.isNil()) field(name, words);
  }
  void color(std::string_view name, RGBA value) {
    std::string hex;
    appendColor(hex, value);
    field(name, hex);
  }
  void flag(std::string_view name) {
    key(name);
    out_ += "true";
    first_ = false;
  }

 private:
  void separate() {
    if (!first_) out_ += ',';
    first_ = false;
  }

  std::string& out_;
  bool first_ = true;
};

void writePort(Writer& json, const HXPort& port, const HXPortGroup* group) {
  json.open('{');
  json.field("key", port.uniqueKey());
  json.field("name", titleOfPort(port));
  if (group && group->groupKey() != HXRDefaultPortGroupKey) {
    json.field("portGroup", group->groupKey());
  }
  if (group && group->hidden()) json.flag("hidden");
  json.color("color", port.defaultColor());
  const PortValue value = valueOfPort(port, 1);
  if (value.kind != PortValue::Kind::none) {
    json.field("value", value.text.full);
    if (value.kind == PortValue::Kind::color) json.color("swatch", value.color);
    if (value.isSet) json.flag("set");
  }
  if (const auto* published = port.symbolicPort()) json.field("published", published->name());
  json.close('}');
}

void writePorts(Writer& json, const HXNode& node, std::int32_t orientation) {
  json.open('[');
  std::unordered_set<const HXPort*> written;
  const bool isInput = orientation == HXOrientationInput;
  for (const auto& group : isInput ? node.inputPortGroups() : node.outputPortGroups()) {
    eachPortOfGroup(node, *group, [&](const HXPort& port) {
      if (written.insert(&port).second) writePort(json, port, group.get());
    });
  }
  for (const auto& entry : node.portsByUniqueKey()) {
    const HXPatchPort& port = *entry.value;
    if (port.orientation() == orientation && written.insert(&port).second) {
      writePort(json, port, nullptr);
    }
  }
  json.close(']');
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

void writeParameters(Writer& json, const HXNode& node) {
  json.key("parameters");
  json.open('[');
  for (const auto& entry : node.parameters()) {
    const HXParameter& parameter = *entry.value;
    const String name = parameter.name();
    json.open('{');
    json.field("name", name ? name : entry.key);
    json.field("value", parameterText(parameter));
    if (const auto* color = as<HXColorParameter>(&parameter)) json.color("swatch", color->value());
    json.close('}');
  }
  json.close(']');
}

void writeNode(Writer& json, const NodeBox& box) {
  const HXNode& node = *box.node;
  json.open('{');
  json.field("key", node.uniqueKey());
  json.field("name", box.title.full);
  json.fieldUnlessNil("patch", patchNameOfNode(node));
  if (node.patch()) {
    json.field("patchName", node.patchClass().defaultName());
    json.fieldUnlessNil("category", node.patchClass().libraryCategory());
  }
  if (const auto& group = node.subnodeGroup()) {
    json.field("group", group->uniqueKey());
    json.key("count");
    json.number(group->subnodesByUniqueKey().size());
  }
  json.fieldUnlessNil("complaint", box.complaint.full);
  json.color("color", node.defaultColor());
  json.key("box");
  json.open('[');
  for (const double number : {box.x, box.y, box.width, box.height}) json.number(number);
  json.close(']');
  json.key("inputs");
  writePorts(json, node, HXOrientationInput);
  json.key("outputs");
  writePorts(json, node, HXOrientationOutput);
  writeParameters(json, node);
  json.close('}');
}

void writeEnd(Writer& json, std::string_view name, const HXPort* port) {
  const HXNode* const node = port ? port->node() : nullptr;
  if (!node) return;
  json.key(name);
  json.open('[');
  json.text(node->uniqueKey());
  json.text(port->uniqueKey());
  json.text(titleOfNode(*node));
  json.text(titleOfPort(*port));
  json.close(']');
}

}  // namespace

void appendPageData(std::string& out, const GroupScene& scene) {
  Writer json(out);
  json.open('{');
  json.field("title", titleOfGroup(scene.group));
  json.key("notes");
  json.open('[');
  for (const std::string& note : scene.notes) json.text(note);
  json.close(']');
  json.key("nodes");
  json.open('[');
  for (const NodeBox& box : scene.boxes) writeNode(json, box);
  json.close(']');
  json.key("wires");
  json.open('[');
  for (const Wire& wire : scene.wires) {
    json.open('{');
    writeEnd(json, "from", wire.connection->displayOutputPort());
    writeEnd(json, "to", wire.connection->displayInputPort());
    json.close('}');
  }
  json.close(']');
  json.close('}');
}

}  // namespace tarnkit::detail
