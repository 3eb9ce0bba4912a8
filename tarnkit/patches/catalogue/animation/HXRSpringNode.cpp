#include "tarnkit/patches/catalogue/animation/HXRSpringNode.h"

#include <fmt/format.h>

#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/CountedPorts.h"

namespace tarnkit {

namespace {

constexpr const char* kDimensionsKey = "Tarn.numberOfDimensionsParameter";
constexpr const char* kAxes[] = {"X", "Y", "Z"};

using NameAt = String (*)(std::int32_t index, std::int32_t numberOfDimensions);

Ref<HXRPort> makeRestInput(String name, String uniqueKey) {
  return make<HXRPrimitiveInputPort>(std::move(name), std::move(uniqueKey), value::number(0));
}

constexpr CountedPorts kRestInputs{HXOrientationInput, "Rest Position", "Tarn.restPosition{}Input",
                                   makeRestInput};
constexpr CountedPorts kPositionOutputs{HXOrientationOutput, "Position", "Tarn.position{}Output",
                                        makePortOf<HXRPrimitiveOutputPort>};

String nameForIndex(const char* what, std::int32_t index, std::int32_t numberOfDimensions) {
  if (index == 0 && numberOfDimensions == 1) return String::interned(what);
  if (index >= 0 && index < 3) return String::interned(fmt::format("{} {}", kAxes[index], what));
  return String(fmt::format("{}D {}", std::int64_t{index} + 1, what));
}

/// Renames only where the name differs, and asks for the count at every step, as building does.
void buildAndName(HXRNode& definition, const CountedPorts& ports, std::int32_t& built,
                  const HXRIndexParameter& dimensions, NameAt nameAt) {
  const auto count = [&] { return boundedCount(dimensions); };
  buildCountedPorts(definition, ports, built, count,
                    [&](std::int32_t index) { return nameAt(index, count()); });
  for (std::int32_t i = 0; i < built; ++i) {
    const String key = indexedText(ports.keyPattern, i);
    const String name = nameAt(i, count());
    const auto* const port = definition.portLayout().ports().find(key);
    if (port && (*port)->name() != name) definition.portForKey(key)->setName(name);
  }
}

}  // namespace

const HXRNodeClass HXRSpringNode::kClass{
    "HXRSpringNode",
    &HXRNode::kClass,
    {.defaultName = "Spring",
     .libraryCategory = "Animation",
     .processClassName = "PMRSpringPatch",
     .hiddenInLibrary = HXRNodeClass::Flag::yes},
    [](PatchDeclaration& patch) {
      patch.parameter("Dimensions", kDimensionsKey, 3, 1, 10);
      patch.in("Strength", "Tarn.strengthInput", value::number(0.05F));
      patch.in("Damping", "Tarn.dampingInput", value::number(0.2F));
      patch.in("Sampling", "Tarn.samplingInput", value::boolean(false));
      patch.definition<HXRSpringNode>().hxr_buildPorts();
    },
    constructPatch<HXRSpringNode>};

HXRSpringNode::HXRSpringNode(const HXRNodeClass& patchClass) : HXRNode(patchClass) {
  const auto* const model = static_cast<const HXRSpringNode*>(prototype());
  if (!model) return;
  rests_ = model->rests_;
  positions_ = model->positions_;
}

std::vector<Ref<HXRPrimitiveInputPort>> HXRSpringNode::restPositionInputs() {
  return builtPorts<HXRPrimitiveInputPort>(*this, kRestInputs, rests_);
}

std::vector<Ref<HXRPrimitiveOutputPort>> HXRSpringNode::positionOutputs() {
  return builtPorts<HXRPrimitiveOutputPort>(*this, kPositionOutputs, positions_);
}

HXRIndexParameter* HXRSpringNode::dimensions() const {
  return as<HXRIndexParameter>(parameterForKey(kDimensionsKey));
}

std::int32_t HXRSpringNode::numberOfDimensions() const {
  const auto* const parameter = dimensions();
  return parameter ? parameter->value() : 0;
}

void HXRSpringNode::setNumberOfDimensions(std::int32_t numberOfDimensions) {
  const Ref<HXRNode> kept(this);
  if (auto* const parameter = dimensions()) parameter->setValue(numberOfDimensions);
  hxr_buildPorts();
}

String HXRSpringNode::hx_inputNameForIndex(std::int32_t index, std::int32_t numberOfDimensions) {
  return nameForIndex("Rest", index, numberOfDimensions);
}

String HXRSpringNode::hx_outputNameForIndex(std::int32_t index, std::int32_t numberOfDimensions) {
  return nameForIndex("Position", index, numberOfDimensions);
}

void HXRSpringNode::hxr_buildPorts() {
  const Ref<HXRIndexParameter> parameter(dimensions());
  if (!parameter) return;
  rebuild([&] {
    buildAndName(*this, kRestInputs, rests_, *parameter, &hx_inputNameForIndex);
    buildAndName(*this, kPositionOutputs, positions_, *parameter, &hx_outputNameForIndex);
  });
}

void HXRSpringNode::parameterValueDidChange(HXRParameter& parameter) {
  if (&parameter == dimensions()) hxr_buildPorts();
}

std::unique_ptr<HXRBuiltState> HXRSpringNode::builtState() const {
  return builtStateOf(*this, &HXRSpringNode::rests_, &HXRSpringNode::positions_);
}

}  // namespace tarnkit
