#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/patches/catalogue/animation/CubicBezier.h"

namespace tarnkit {

const HXRNodeClass HXREaseInOutNode{
    "HXREaseInOutNode",
    &HXRNode::kClass,
    {.defaultName = "Ease-In-Out",
     .libraryCategory = "Animation",
     .libraryDescription = "HXRCubicBezierNode.html",
     .processClassName = "PMRCubicBezierPatch",
     .hiddenPortGroupKeys = kControlPointGroupKeys},
    [](PatchDeclaration& patch) { declareCubicBezier(patch, 0.42F, 0, 0.58F, 1); }};

}  // namespace tarnkit
