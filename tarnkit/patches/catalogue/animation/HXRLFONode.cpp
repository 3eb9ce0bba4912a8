#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/patches/catalogue/animation/LFO.h"

namespace tarnkit {

const HXRNodeClass HXRLFONode{
    "HXRLFONode",
    &HXRNode::kClass,
    {.defaultName = "LFO", .libraryCategory = "Animation", .processClassName = "PMRLFOPatch"},
    [](PatchDeclaration& patch) { declareLFO(patch, 1); }};

}  // namespace tarnkit
