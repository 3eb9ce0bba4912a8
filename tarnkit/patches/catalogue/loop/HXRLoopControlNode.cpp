#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRLoopControlNode{
    "HXRLoopControlNode",
    &HXRNode::kClass,
    {.defaultName = "Loop Control",
     .libraryCategory = "Loop",
     .processClassName = "PMRLoopControlPatch",
     .defaultColor = &HXLoopPatchColor,
     .hiddenInLibrary = HXRNodeClass::Flag::yes},
    [](PatchDeclaration& patch) { patch.in("Break", "Tarn.breakInput", value::boolean(false)); }};

}  // namespace tarnkit
