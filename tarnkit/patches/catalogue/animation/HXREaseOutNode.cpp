#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/patches/catalogue/animation/CubicBezier.h"

namespace tarnkit {

const HXRNodeClass HXREaseOutNode{
    "HXREaseOutNode",
    &HXRNode::kClass,
    {.defaultName = "Ease-Out",
     .libraryCategory = "Animation",
     .libraryDescription = "HXRCubicBezierNode.html",
     .processClassName = "PMRCubicBezierPatch",
     .hiddenPortGroupKeys = kControlPointGroupKeys},
    [](PatchDeclaration& patch) { declareCubicBezier(patch, 0, 0, 0.58F, 1); }};

}  // namespace tarnkit
