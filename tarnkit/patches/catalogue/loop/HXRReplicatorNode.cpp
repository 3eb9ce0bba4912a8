#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRReplicatorNode{
    "HXRReplicatorNode",
    &HXRNode::kClass,
    {.defaultName = "Replicator",
     .libraryCategory = "Loop",
     .processClassName = "PMRReplicatorPatch",
     .defaultColor = &HXLoopPatchColor,
     .allowsSubnodes = HXRNodeClass::Flag::yes,
     .nodeClassName = "HXReplicatorNode"},
    [](PatchDeclaration& patch) { patch.in("Copies", "Tarn.copiesInput", value::index(1)); }};

}  // namespace tarnkit
