#include "tarnkit/patches/catalogue/logic/HXRDemultiplexerNode.h"

#include "tarnkit/patches/PatchDeclaration.h"

namespace tarnkit {

namespace {
constexpr CountedPortsDescription kDescription{
    "Tarn.numberOfDestinationsParameter",
    "Destination {}",
    {HXOrientationOutput, "Destinations", "Tarn.destination{}Output",
     makePortOf<HXRValueOutputPort>}};
}  // namespace

const HXRNodeClass HXRDemultiplexerNode::kClass{
    "HXRDemultiplexerNode",
    &HXRNode::kClass,
    {.defaultName = "Demultiplexer",
     .libraryCategory = "Logic",
     .processClassName = "PMRDemultiplexerPatch"},
    [](PatchDeclaration& patch) {
      patch.parameter("Destinations", "Tarn.numberOfDestinationsParameter", 2, 1, 100);
      patch.in("Index", "Tarn.destinationIndexInput", value::index(0));
      patch.in<HXRValueInputPort>("Input", "Tarn.input");
      patch.in<HXRValueInputPort>("Default", "Tarn.defaultInput");
      patch.definition<HXRDemultiplexerNode>().trn_buildDestinationOutputs();
    },
    constructPatch<HXRDemultiplexerNode>};

HXRDemultiplexerNode::HXRDemultiplexerNode(const HXRNodeClass& patchClass)
    : CountedPortsNode(patchClass, kDescription) {}

}  // namespace tarnkit
