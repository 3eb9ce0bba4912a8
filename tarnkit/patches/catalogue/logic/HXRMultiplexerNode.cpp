#include "tarnkit/patches/catalogue/logic/HXRMultiplexerNode.h"

#include "tarnkit/patches/PatchDeclaration.h"

namespace tarnkit {

namespace {
constexpr CountedPortsDescription kDescription{
    "Tarn.numberOfSourcesParameter",
    "Source {}",
    {HXOrientationInput, "Sources", "Tarn.source{}Input", makePortOf<HXRValueInputPort>}};
}  // namespace

const HXRNodeClass HXRMultiplexerNode::kClass{
    "HXRMultiplexerNode",
    &HXRNode::kClass,
    {.defaultName = "Multiplexer",
     .libraryCategory = "Logic",
     .processClassName = "PMRMultiplexerPatch"},
    [](PatchDeclaration& patch) {
      patch.parameter("Sources", "Tarn.numberOfSourcesParameter", 2, 1, 100);
      patch.in("Index", "Tarn.sourceIndexInput", value::index(0));
      patch.definition<HXRMultiplexerNode>().trn_buildSourceInputs();
      patch.out<HXRValueOutputPort>("Output", "Tarn.output");
    },
    constructPatch<HXRMultiplexerNode>};

HXRMultiplexerNode::HXRMultiplexerNode(const HXRNodeClass& patchClass)
    : CountedPortsNode(patchClass, kDescription) {}

}  // namespace tarnkit
