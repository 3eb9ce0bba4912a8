#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRLoopNode{
    "HXRLoopNode",
    &HXRNode::kClass,
    {.defaultName = "Loop",
     .libraryCategory = "Loop",
     .processClassName = "PMRLoopPatch",
     .defaultColor = &HXLoopPatchColor,
     .hiddenInLibrary = HXRNodeClass::Flag::yes,
     .allowsSubnodes = HXRNodeClass::Flag::yes,
     .nodeClassName = "HXLoopNode"},
    [](PatchDeclaration& patch) { patch.in("Loops", "Tarn.loopsInput", value::index(1)); }};

}  // namespace tarnkit
