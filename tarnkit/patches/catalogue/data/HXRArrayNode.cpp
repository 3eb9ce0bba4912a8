#include "tarnkit/patches/catalogue/data/HXRArrayNode.h"

#include "tarnkit/patches/PatchDeclaration.h"

namespace tarnkit {

namespace {
constexpr CountedPortsDescription kDescription{
    "Tarn.numberOfValuesParameter",
    "Value {}",
    {HXOrientationInput, "Values", "Tarn.value{}Input", makePortOf<HXRValueInputPort>}};
}  // namespace

const HXRNodeClass HXRArrayNode::kClass{
    "HXRArrayNode",
    &HXRNode::kClass,
    {.defaultName = "Array", .libraryCategory = "Data", .processClassName = "PMRArrayPatch"},
    [](PatchDeclaration& patch) {
      patch.parameter("Values", "Tarn.numberOfValuesParameter", 5, 0, 100);
      patch.definition<HXRArrayNode>().hxr_buildValueInputs();
      patch.out<HXRValueOutputPort>("Array", "Tarn.arrayOutput");
    },
    constructPatch<HXRArrayNode>};

HXRArrayNode::HXRArrayNode(const HXRNodeClass& patchClass)
    : CountedPortsNode(patchClass, kDescription) {}

}  // namespace tarnkit
