#include "tarnkit/patches/catalogue/state/HXRIndexSwitchNode.h"

#include "tarnkit/patches/PatchDeclaration.h"

namespace tarnkit {

namespace {
Ref<HXRPort> makeSettingInput(String name, String uniqueKey) {
  return make<HXRPrimitiveInputPort>(std::move(name), std::move(uniqueKey), value::boolean(false));
}

constexpr CountedPortsDescription kDescription{
    "Tarn.numberOfIndicesParameter",
    "Index {}",
    {HXOrientationInput, "Indices", "Tarn.indexSwitch{}Input", makeSettingInput}};
}  // namespace

const HXRNodeClass HXRIndexSwitchNode::kClass{
    "HXRIndexSwitchNode",
    &HXRNode::kClass,
    {.defaultName = "Index Switch",
     .libraryCategory = "State",
     .processClassName = "PMRIndexSwitchPatch"},
    [](PatchDeclaration& patch) {
      patch.parameter("Indices", "Tarn.numberOfIndicesParameter", 3, 1, 100);
      patch.in("Next", "Tarn.nextIndexInput", value::boolean(false));
      patch.in("Previous", "Tarn.previousIndexInput", value::boolean(false));
      patch.definition<HXRIndexSwitchNode>().trn_buildInputs();
      patch.out("Index", "Tarn.indexOutput");
    },
    constructPatch<HXRIndexSwitchNode>};

HXRIndexSwitchNode::HXRIndexSwitchNode(const HXRNodeClass& patchClass)
    : CountedPortsNode(patchClass, kDescription) {}

}  // namespace tarnkit
