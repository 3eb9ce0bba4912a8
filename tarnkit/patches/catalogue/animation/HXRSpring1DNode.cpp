#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/patches/catalogue/animation/HXRSpringNode.h"

namespace tarnkit {

const HXRNodeClass HXRSpring1DNode{
    "HXRSpring1DNode",
    &HXRSpringNode::kClass,
    {.defaultName = "Spring (1D)", .hiddenInLibrary = HXRNodeClass::Flag::no},
    [](PatchDeclaration& patch) { patch.definition<HXRSpringNode>().setNumberOfDimensions(1); }};

}  // namespace tarnkit
