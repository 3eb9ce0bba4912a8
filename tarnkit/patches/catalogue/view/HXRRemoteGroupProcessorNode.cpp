#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRRemoteGroupProcessorNode{
    "HXRRemoteGroupProcessorNode",
    &HXRNode::kClass,
    {.defaultName = "Group Processor",
     .libraryCategory = "View",
     .processClassName = "PMRRemoteGroupProcessorPatch",
     .nodeClassName = "HXRemoteGroupProcessorNode"},
    [](PatchDeclaration& patch) { patch.in<HXRViewInputPort>("Group", "Tarn.groupInput"); }};

}  // namespace tarnkit
