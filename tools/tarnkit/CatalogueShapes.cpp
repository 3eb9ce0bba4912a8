#include "tools/tarnkit/CatalogueShapes.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/patches/HXRValueParameters.h"
#include "tarnkit/platform/objects/Overloaded.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/ValueShapes.h"

namespace tarnkit::tool {

namespace {

void writeLabels(JSONWriter& json, const HXRPrimitiveInputPort* port) {
  json.beginArray();
  if (port) {
    for (const auto& [label, value] : port->mappedValues()) {
      json.beginObject().key("label").value(label.view()).key("value");
      writePrimitive(json, value.get());
      json.endObject();
    }
  }
  json.endArray();
}

void writePortDescription(JSONWriter& json, const HXRPort& port) {
  const auto* const input = as<HXRPrimitiveInputPort>(&port);
  json.beginObject().key("name");
  writeString(json, port.name());
  json.key("key").value(port.uniqueKey().view());
  json.key("class").value(port.isa().name());
  json.key("processClassName").value(port.processClassName().view());
  json.key("orientation").value(port.orientation());
  json.key("connectionRelationship").value(port.connectionRelationship());
  json.key("color");
  writeColor(json, port.defaultColor());
  json.key("default");
  writePrimitive(json, input ? input->defaultValue().get() : nullptr);
  json.key("labels");
  writeLabels(json, input);
  json.key("lockToMappedValues").value(input && input->lockToMappedValues());
  json.endObject();
}

void writeGroups(JSONWriter& json, const HXRPortGroupCollection& groups) {
  json.beginArray();
  for (const auto& [key, group] : groups.portGroupsInForce()) {
    json.beginObject().key("key").value(key.view()).key("ports").beginArray();
    for (const auto& port : group->ports()) {
      writePortDescription(json, *port);
    }
    json.endArray().endObject();
  }
  json.endArray();
}

void writeKind(JSONWriter& json, const HXRParameter& parameter) {
  const auto writeBounded = [&json](const auto* bounded) {
    json.key("default").value(bounded->defaultValue());
    json.key("minimum").value(bounded->minimumValue());
    json.key("maximum").value(bounded->maximumValue());
  };
  std::visit(Overloaded{
                 [](const HXRParameter*) {},
                 [&](const HXRIndexParameter* index) { writeBounded(index); },
                 [&](const HXRNumberParameter* number) { writeBounded(number); },
                 [&](const HXRBooleanParameter* boolean) {
                   json.key("default").value(boolean->defaultValue());
                 },
                 [&](const HXRColorParameter* color) {
                   json.key("default");
                   writeColor(json, color->defaultValue());
                 },
                 [&](const HXRStringParameter* string) {
                   json.key("default");
                   writeString(json, string->defaultValue());
                   json.key("displayStyle").value(string->displayStyle());
                 },
                 [&](const HXRImageParameter*) { json.key("default").null(); },
             },
             parameter.kind());
}

void writeParameterDescription(JSONWriter& json, const HXRParameter& parameter) {
  json.beginObject().key("name");
  writeString(json, parameter.name());
  json.key("key").value(parameter.uniqueKey().view());
  json.key("class").value(parameter.isa().name());
  json.key("parameterClass");
  if (const auto* const editorClass = parameter.parameterClass()) {
    json.value(editorClass->name());
  } else {
    json.null();
  }
  json.key("processClassName").value(parameter.processClassName().view());
  json.key("hidden").value(parameter.hidden());
  writeKind(json, parameter);
  json.endObject();
}

std::vector<String> sortedKeys(const OrderedSet& keys) {
  std::vector<String> sorted;
  sorted.reserve(keys.count());
  for (const auto& key : keys) sorted.push_back(String::from(key.get()));
  std::sort(sorted.begin(), sorted.end());
  return sorted;
}

void appendGroups(std::string& text, const char* side, const HXRPortGroupCollection& groups) {
  for (const auto& [key, group] : groups.portGroupsInForce()) {
    for (const auto& member : group->ports()) {
      const HXRPort& port = *member;
      const auto* const input = as<HXRPrimitiveInputPort>(&port);
      text += fmt::format("  {:<9} {:<20} {:<32} {}", side, port.name().view(),
                          port.uniqueKey().view(), port.isa().name());
      if (input && input->defaultValue()) {
        text += fmt::format(" = {}", input->defaultValue()->stringValue().view());
      }
      if (key != HXRDefaultPortGroupKey) text += fmt::format("  [{}]", key.view());
      text += '\n';
    }
  }
}

}  // namespace

void writePatchClass(JSONWriter& json, const HXRNodeClass& patchClass) {
  const HXRNode& definition = patchClass.prototype();
  json.beginObject().key("class").value(patchClass.name());
  json.key("base");
  if (patchClass.base()) {
    json.value(patchClass.base()->name());
  } else {
    json.null();
  }
  json.key("defaultName").value(patchClass.defaultName().view());
  json.key("libraryCategory");
  writeString(json, patchClass.libraryCategory());
  json.key("libraryDescription").value(patchClass.libraryDescription().view());
  json.key("processClassName").value(patchClass.processClassName().view());
  json.key("patchViewClassName").value(patchClass.patchViewClassName().view());
  json.key("defaultColor");
  writeColor(json, patchClass.defaultColor());
  json.key("hiddenInLibrary").value(patchClass.hiddenInLibrary());
  json.key("secretInLibrary").value(patchClass.secretInLibrary());
  json.key("allowsSubnodes").value(patchClass.allowsSubnodes());
  json.key("hiddenPortGroupKeys");
  writeStrings(json, sortedKeys(patchClass.hiddenPortGroupKeys()));
  json.key("inputPortGroups");
  writeGroups(json, definition.portLayout().inputs());
  json.key("outputPortGroups");
  writeGroups(json, definition.portLayout().outputs());
  json.key("parameters").beginArray();
  for (const auto& parameter : definition.parameters()) {
    writeParameterDescription(json, *parameter);
  }
  json.endArray().endObject();
}

void appendPatchClass(std::string& text, const HXRNodeClass& patchClass) {
  const HXRNode& definition = patchClass.prototype();
  text += fmt::format(
      "{} ({}), category {}, runs as {}\n", patchClass.defaultName().view(), patchClass.name(),
      patchClass.libraryCategory().isNil() ? "none" : patchClass.libraryCategory().view(),
      patchClass.processClassName().view());
  appendGroups(text, "input", definition.portLayout().inputs());
  appendGroups(text, "output", definition.portLayout().outputs());
  for (const auto& parameter : definition.parameters()) {
    text += fmt::format("  {:<9} {:<20} {:<32} {}{}\n", "parameter", parameter->name().view(),
                        parameter->uniqueKey().view(), parameter->isa().name(),
                        parameter->hidden() ? ", hidden" : "");
  }
}

}  // namespace tarnkit::tool
