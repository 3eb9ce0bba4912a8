#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/patches/catalogue/animation/HXRSpringNode.h"

namespace tarnkit {

const HXRNodeClass HXRSpring2DNode{
    "HXRSpring2DNode",
    &HXRSpringNode::kClass,
    {.defaultName = "Spring (2D)", .hiddenInLibrary = HXRNodeClass::Flag::no},
    [](PatchDeclaration& patch) { patch.definition<HXRSpringNode>().setNumberOfDimensions(2); }};

}  // namespace tarnkit
