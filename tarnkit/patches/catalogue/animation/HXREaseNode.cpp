#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/patches/catalogue/animation/CubicBezier.h"

namespace tarnkit {

const HXRNodeClass HXREaseNode{
    "HXREaseNode",
    &HXRNode::kClass,
    {.defaultName = "Ease",
     .libraryCategory = "Animation",
     .libraryDescription = "HXRCubicBezierNode.html",
     .processClassName = "PMRCubicBezierPatch",
     .hiddenPortGroupKeys = kControlPointGroupKeys},
    [](PatchDeclaration& patch) { declareCubicBezier(patch, 0.25F, 0.1F, 0.25F, 1); }};

}  // namespace tarnkit
