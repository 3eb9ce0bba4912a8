#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/patches/catalogue/animation/CubicBezier.h"

namespace tarnkit {

const HXRNodeClass HXRFastOutLinearInNode{
    "HXRFastOutLinearInNode",
    &HXRNode::kClass,
    {.defaultName = "Fast Out, Linear In",
     .libraryCategory = "Material",
     .processClassName = "PMRCubicBezierPatch",
     .hiddenPortGroupKeys = kControlPointGroupKeys},
    [](PatchDeclaration& patch) { declareCubicBezier(patch, 0.4F, 0, 1, 1); }};

}  // namespace tarnkit
