#include "tarnkit/text/PatchShape.h"

#include <fmt/format.h>

#include <bit>
#include <cstring>

#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/objects/Overloaded.h"

namespace tarnkit::detail {

namespace {

using Kind = ParameterValue::Kind;

struct KindRow {
  Kind kind;
  const char* name;
  const Class* parameterClass;
};
const KindRow kKinds[] = {
    {Kind::boolean, "boolean", &HXBooleanParameter::kClass},
    {Kind::number, "number", &HXNumberParameter::kClass},
    {Kind::index, "index", &HXIndexParameter::kClass},
    {Kind::string, "string", &HXStringParameter::kClass},
    {Kind::color, "color", &HXColorParameter::kClass},
    {Kind::image, "image", &HXImageParameter::kClass},
};

ParameterValue defaultOf(const HXRParameter& description) {
  ParameterValue value;
  if (const auto* editorClass = description.parameterClass()) {
    value.kind = ParameterValue::kindOf(*editorClass);
  }
  std::visit(Overloaded{
                 [](const HXRParameter*) {},
                 [&](const HXRBooleanParameter* p) { value.boolean = p->defaultValue(); },
                 [&](const HXRNumberParameter* p) { value.number = p->defaultValue(); },
                 [&](const HXRIndexParameter* p) { value.index = p->defaultValue(); },
                 [&](const HXRStringParameter* p) { value.string = p->defaultValue(); },
                 [&](const HXRColorParameter* p) { value.color = p->defaultValue(); },
                 [&](const HXRImageParameter*) { value.index = -1; },
             },
             description.kind());
  return value;
}

void addPorts(PatchShape& shape, const HXRNode& definition) {
  const auto& layout = definition.portLayout();
  for (const auto& entry : layout.ports()) {
    const HXRPort& port = *entry.value;
    const auto* input = as<HXRPrimitiveInputPort>(&port);
    const auto value = input ? input->defaultValue() : nullptr;
    shape.addPort({entry.key, port.name(), port.orientation(), port.connectionRelationship(),
                   value ? value->storageType() : std::int64_t{PMRPrimitive::nil}});
  }
  for (const auto orientation : kBothSides) {
    for (const auto& entry : layout.collection(orientation)->portGroupsInForce()) {
      shape.groupKeys[orientation].push_back(entry.key);
    }
  }
}

std::string cacheKey(const HXRNodeClass& patch, const std::vector<ToldParameter>& parameters) {
  std::string key(patch.name());
  for (const auto& [name, value] : parameters) {
    key +=
        fmt::format("\n{}:{} {} {} {} {}:", name.size(), name.view(), static_cast<int>(value.kind),
                    value.boolean, std::bit_cast<std::uint32_t>(value.number), value.index);
    key += value.string.view();
  }
  return key;
}

void setValue(HXParameter& parameter, const ParameterValue& value) {
  if (ParameterValue::kindOf(parameter.isa()) != value.kind) return;
  std::visit(Overloaded{
                 [&](HXBooleanParameter* p) { p->setValue(value.boolean); },
                 [&](HXNumberParameter* p) { p->setValue(value.number); },
                 [&](HXIndexParameter* p) { p->setValue(value.index); },
                 [&](HXStringParameter* p) { p->setValue(value.string); },
                 [&](HXColorParameter* p) { p->setValue(value.color); },
                 [](HXImageParameter*) {},
             },
             parameter.kind());
}

}  // namespace

bool ParameterValue::isSame(const ParameterValue& other) const noexcept {
  return kind == other.kind && boolean == other.boolean &&
         std::bit_cast<std::uint32_t>(number) == std::bit_cast<std::uint32_t>(other.number) &&
         index == other.index && std::memcmp(&color, &other.color, sizeof color) == 0 &&
         string == other.string;
}

Kind ParameterValue::kindNamed(std::string_view name) noexcept {
  for (const auto& row : kKinds) {
    if (name == row.name) return row.kind;
  }
  return Kind::none;
}

const char* ParameterValue::nameOf(Kind kind) noexcept {
  for (const auto& row : kKinds) {
    if (kind == row.kind) return row.name;
  }
  return "none";
}

const Class& ParameterValue::classOf(Kind kind) noexcept {
  for (const auto& row : kKinds) {
    if (kind == row.kind) return *row.parameterClass;
  }
  return HXParameter::kClass;
}

Kind ParameterValue::kindOf(const Class& parameterClass) noexcept {
  for (const auto& row : kKinds) {
    if (&parameterClass == row.parameterClass) return row.kind;
  }
  return Kind::none;
}

void PatchShape::addPort(Port port) {
  ports.push_back(std::move(port));
  byKey_.emplace(ports.back().key.view(), static_cast<std::uint32_t>(ports.size() - 1));
}

const PatchShape::Port* PatchShape::portForKey(std::string_view key) const {
  const auto found = byKey_.find(key);
  return found == byKey_.end() ? nullptr : &ports[found->second];
}

const PatchShape::Parameter* PatchShape::parameterForKey(std::string_view key) const {
  for (const auto& parameter : parameters) {
    if (parameter.key == key) return &parameter;
  }
  return nullptr;
}

const PatchShape& PatchShapes::of(const HXRNodeClass& patch) {
  auto& known = declared_[&patch];
  if (known) return *known;
  known = std::make_unique<PatchShape>();
  known->patch = &patch;
  const auto* view = patchClassNamed("HXRViewNode");
  known->isView = view && patch.isKindOf(*view);
  const HXRNode& prototype = patch.prototype();
  addPorts(*known, prototype);
  for (const auto& description : prototype.parametersInForce()) {
    auto value = defaultOf(*description);
    if (value.kind == Kind::none) continue;
    known->parameters.push_back({description->uniqueKey(), description->name(), std::move(value)});
  }
  return *known;
}

const PatchShape& PatchShapes::of(const HXRNodeClass& patch,
                                  const std::vector<ToldParameter>& parameters) {
  if (parameters.empty()) return of(patch);
  auto& known = withParameters_[cacheKey(patch, parameters)];
  if (known) return *known;
  const auto node = make<HXNode>();
  node->setPatch(patch.makeDefinition());
  for (const auto& told : parameters) {
    if (auto* parameter = node->parameterForKey(told.key)) setValue(*parameter, told.value);
  }
  known = std::make_unique<PatchShape>();
  known->patch = &patch;
  if (const auto definition = node->patch()) addPorts(*known, *definition);
  return *known;
}

}  // namespace tarnkit::detail
