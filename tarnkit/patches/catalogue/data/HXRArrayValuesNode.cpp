#include "tarnkit/patches/catalogue/data/HXRArrayValuesNode.h"

#include "tarnkit/patches/PatchDeclaration.h"

namespace tarnkit {

namespace {
constexpr CountedPortsDescription kDescription{
    "Tarn.numberOfValuesParameter",
    "Value {}",
    {HXOrientationOutput, "Values", "Tarn.value{}Output", makePortOf<HXRValueOutputPort>}};
}  // namespace

const HXRNodeClass HXRArrayValuesNode::kClass{
    "HXRArrayValuesNode",
    &HXRNode::kClass,
    {.defaultName = "Array Values",
     .libraryCategory = "Data",
     .processClassName = "PMRArrayValuesPatch"},
    [](PatchDeclaration& patch) {
      patch.parameter("Values", "Tarn.numberOfValuesParameter", 5, 1, 100);
      patch.in<HXRArrayInputPort>("Array", "Tarn.arrayInput");
      patch.definition<HXRArrayValuesNode>().trn_buildValueOutputs();
    },
    constructPatch<HXRArrayValuesNode>};

HXRArrayValuesNode::HXRArrayValuesNode(const HXRNodeClass& patchClass)
    : CountedPortsNode(patchClass, kDescription) {}

}  // namespace tarnkit
