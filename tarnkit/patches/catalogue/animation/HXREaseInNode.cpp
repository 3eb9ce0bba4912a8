#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/patches/catalogue/animation/CubicBezier.h"

namespace tarnkit {

const HXRNodeClass HXREaseInNode{
    "HXREaseInNode",
    &HXRNode::kClass,
    {.defaultName = "Ease-In",
     .libraryCategory = "Animation",
     .libraryDescription = "HXRCubicBezierNode.html",
     .processClassName = "PMRCubicBezierPatch",
     .hiddenPortGroupKeys = kControlPointGroupKeys},
    [](PatchDeclaration& patch) { declareCubicBezier(patch, 0.42F, 0, 1, 1); }};

}  // namespace tarnkit
