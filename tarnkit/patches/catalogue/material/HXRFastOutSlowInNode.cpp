#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/patches/catalogue/animation/CubicBezier.h"

namespace tarnkit {

const HXRNodeClass HXRFastOutSlowInNode{
    "HXRFastOutSlowInNode",
    &HXRNode::kClass,
    {.defaultName = "Fast Out, Slow In",
     .libraryCategory = "Material",
     .processClassName = "PMRCubicBezierPatch",
     .hiddenPortGroupKeys = kControlPointGroupKeys},
    [](PatchDeclaration& patch) { declareCubicBezier(patch, 0.4F, 0, 0.2F, 1); }};

}  // namespace tarnkit
