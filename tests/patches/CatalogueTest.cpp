#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "FakeOwner.h"
#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/patches/HXRValueParameters.h"
#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchRegistry.h"

namespace tarnkit {
namespace {

using nlohmann::json;

/// What devices and editors rely on, class by class, stated apart from the declarations. A port is
/// [name, key, class, default, group]; `portsAfter` names the class whose ports come first.
const json& contract() {
  static const json entries =
      json::parse(std::ifstream(TARNKIT_SOURCE_DIR "/tests/patches/data/catalogue.json"));
  return entries;
}

const json& entryOf(const std::string& name) {
  for (const json& entry : contract()) {
    if (entry["class"] == name) return entry;
  }
  throw std::runtime_error("the contract lacks " + name);
}

std::vector<json> portsOf(const json& entry) {
  std::vector<json> ports;
  if (entry.contains("portsAfter")) ports = portsOf(entryOf(entry["portsAfter"]));
  for (const json& port : entry["ports"]) ports.push_back(port);
  return ports;
}

json textOrNull(const String& text) { return text.isNil() ? json() : json(text.toStdString()); }

/// A colour's components and a float as the contract writes them: with the digits that they need.
json decimal(float value) {
  return json::parse(PMRPrimitive::primitiveWithNumberValue(value)->stringValue().view());
}

json primitive(const PMRPrimitive* value) {
  if (!value) return nullptr;
  switch (value->storageType()) {
    case PMRPrimitive::boolean:
      return {"boolean", value->booleanValue()};
    case PMRPrimitive::index:
      return {"index", value->indexValue()};
    case PMRPrimitive::number:
      return {"number", decimal(value->numberValue())};
    case PMRPrimitive::radians:
      return {"radians", decimal(value->radiansValue())};
    case PMRPrimitive::degrees:
      return {"degrees", decimal(value->degreesValue())};
    case PMRPrimitive::color: {
      const RGBA c = value->colorValue();
      return {"color", decimal(c.red), decimal(c.green), decimal(c.blue), decimal(c.alpha)};
    }
    default:
      return {"string", value->stringValue().toStdString()};
  }
}

json described(const HXRPort& port) {
  const auto* const input = as<HXRPrimitiveInputPort>(&port);
  return {port.name().toStdString(), port.uniqueKey().toStdString(), port.isa().name(),
          primitive(input ? input->defaultValue().get() : nullptr),
          port.portGroupKey().toStdString()};
}

template <class Parameter>
void describeBounds(const HXRParameter& parameter, json& entry) {
  if (const auto* const bounded = as<Parameter>(&parameter)) {
    entry["default"] = bounded->defaultValue();
    entry["minimum"] = bounded->minimumValue();
    entry["maximum"] = bounded->maximumValue();
  }
}

json described(const HXRParameter& parameter) {
  json entry = {{"name", parameter.name().toStdString()},
                {"key", parameter.uniqueKey().toStdString()},
                {"class", parameter.isa().name()}};
  if (parameter.hidden()) entry["hidden"] = true;
  describeBounds<HXRIndexParameter>(parameter, entry);
  if (const auto* const number = as<HXRNumberParameter>(&parameter)) {
    entry["default"] = decimal(number->defaultValue());
    entry["minimum"] = decimal(number->minimumValue());
    entry["maximum"] = decimal(number->maximumValue());
  }
  if (const auto* const boolean = as<HXRBooleanParameter>(&parameter)) {
    entry["default"] = boolean->defaultValue();
  }
  if (const auto* const text = as<HXRStringParameter>(&parameter)) {
    entry["default"] = textOrNull(text->defaultValue());
    entry["displayStyle"] = text->displayStyle();
  }
  return entry;
}

const RGBA& colorNamed(const std::string& name) {
  static const std::map<std::string, RGBA> colors = {
      {"Primary", HXPrimaryPatchColor}, {"Operator", HXOperatorPatchColor},
      {"Gesture", HXGesturePatchColor}, {"Interaction", HXInteractionPatchColor},
      {"Loop", HXLoopPatchColor},       {"View", HXViewPatchColor},
  };
  return colors.at(name);
}

TEST(Catalogue, HasExactlyTheClassesOfTheContract) {
  std::set<std::string> expected;
  for (const json& entry : contract()) expected.insert(entry["class"]);
  std::set<std::string> found;
  for (const auto* const patchClass : catalogue()) {
    const std::string name(patchClass->name());
    if (name.rfind("Test", 0) != 0) found.insert(name);  // other tests add classes of their own
  }
  EXPECT_EQ(found, expected);
}

TEST(Catalogue, DescriptorsAreThoseOfTheContract) {
  registerPatchClasses();
  for (const json& entry : contract()) {
    const auto* const patchClass = patchClassNamed(entry["class"].get<std::string>());
    ASSERT_TRUE(patchClass) << entry["class"];
    SCOPED_TRACE(patchClass->name());
    EXPECT_EQ(patchClass->base()->name(), entry["base"]);
    EXPECT_EQ(textOrNull(patchClass->defaultName()), entry["defaultName"]);
    EXPECT_EQ(textOrNull(patchClass->libraryCategory()), entry["libraryCategory"]);
    EXPECT_EQ(textOrNull(patchClass->libraryDescription()), entry["libraryDescription"]);
    EXPECT_EQ(textOrNull(patchClass->processClassName()), entry["processClassName"]);
    EXPECT_EQ(textOrNull(patchClass->patchViewClassName()), entry["patchViewClassName"]);
    EXPECT_EQ(patchClass->defaultColor(), colorNamed(entry["defaultColor"]));
    json flags = json::array();
    if (patchClass->hiddenInLibrary()) flags.push_back("hidden");
    if (patchClass->secretInLibrary()) flags.push_back("secret");
    if (patchClass->allowsSubnodes()) flags.push_back("subnodes");
    EXPECT_EQ(flags, entry["flags"]);
    std::set<std::string> hidden;
    for (const auto& key : patchClass->hiddenPortGroupKeys()) {
      hidden.insert(String::from(key.get()).toStdString());
    }
    EXPECT_EQ(json(hidden), entry["hiddenPortGroupKeys"]);
  }
}

/// The ports of one side, group by group, as the editor lists them.
json listed(const HXRNode& definition, std::int32_t orientation) {
  json ports = json::array();
  for (const auto& entry : definition.portLayout().collection(orientation)->portGroupsInForce()) {
    for (const auto& port : entry.value->ports()) {
      ports.push_back(described(static_cast<const HXRPort&>(*port)));
    }
  }
  return ports;
}

/// The same from the contract: ports in order, their groups in the order of first use.
json listed(const std::vector<json>& ports, bool inputs) {
  std::vector<std::string> groups;
  std::map<std::string, json> members;
  for (const json& port : ports) {
    if ((port[2].get<std::string>().find("InputPort") != std::string::npos) != inputs) continue;
    const std::string group = port[4];
    if (!members.count(group)) groups.push_back(group);
    members[group].push_back(port);
  }
  json all = json::array();
  for (const auto& group : groups) {
    for (const json& port : members[group]) all.push_back(port);
  }
  return all;
}

/// Compares row by row, so that a difference is told in one line.
void expectEqualRows(const json& found, const json& expected) {
  EXPECT_EQ(found.size(), expected.size());
  for (std::size_t i = 0; i < std::min(found.size(), expected.size()); ++i) {
    EXPECT_EQ(found[i], expected[i]);
  }
}

TEST(Catalogue, PortsAndParametersAreThoseOfTheContract) {
  registerPatchClasses();
  for (const json& entry : contract()) {
    const auto* const patchClass = patchClassNamed(entry["class"].get<std::string>());
    ASSERT_TRUE(patchClass) << entry["class"];
    SCOPED_TRACE(patchClass->name());
    const auto definition = patchClass->makeDefinition();
    const auto expected = portsOf(entry);
    expectEqualRows(listed(*definition, HXOrientationInput), listed(expected, true));
    expectEqualRows(listed(*definition, HXOrientationOutput), listed(expected, false));
    // Keys are unique within a patch, and the order of declaration is kept beside the groups.
    json keys = json::array();
    for (const auto& port : definition->portLayout().ports()) {
      keys.push_back(port.key.toStdString());
    }
    json expectedKeys = json::array();
    for (const json& port : expected) expectedKeys.push_back(port[1]);
    EXPECT_EQ(keys, expectedKeys);

    json parameters = json::array();
    for (const auto& parameter : definition->parameters()) {
      parameters.push_back(described(*parameter));
    }
    expectEqualRows(parameters, entry["parameters"]);
  }
}

TEST(Catalogue, EveryCopyOfALayoutEqualsTheSharedOne) {
  for (const auto* const patchClass : catalogue()) {
    SCOPED_TRACE(patchClass->name());
    const auto definition = patchClass->makeDefinition();
    EXPECT_TRUE(definition->portLayout().isShared());
    const auto inputs = listed(*definition, HXOrientationInput);
    const auto outputs = listed(*definition, HXOrientationOutput);
    definition->inputPortGroupCollection();  // asks for one of its own
    EXPECT_FALSE(definition->portLayout().isShared());
    EXPECT_EQ(listed(*definition, HXOrientationInput), inputs);
    EXPECT_EQ(listed(*definition, HXOrientationOutput), outputs);
    for (const auto& [key, port] : definition->ports()) {
      EXPECT_EQ(port->node(), definition.get());
      EXPECT_EQ(port->portGroupKey().isNil(), false);
    }
  }
}

TEST(Catalogue, MenusHoldTheirDefaults) {
  int menus = 0;
  for (const auto* const patchClass : catalogue()) {
    for (const auto& entry : patchClass->prototype().portLayout().ports()) {
      const auto* const port = as<HXRPrimitiveInputPort>(entry.value.get());
      if (!port || port->mappedValues().empty()) continue;
      ++menus;
      EXPECT_FALSE(port->labelForMappedValue(port->defaultValue().get()).isNil())
          << patchClass->name() << " " << entry.key.view();
    }
  }
  EXPECT_GE(menus, 14);
}

}  // namespace
}  // namespace tarnkit
