#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/patches/catalogue/animation/LFO.h"

namespace tarnkit {

const HXRNodeClass HXRLFO01Node{"HXRLFO01Node",
                                &HXRNode::kClass,
                                {.defaultName = "LFO (0-1)",
                                 .libraryCategory = "Animation",
                                 .libraryDescription = "HXRLFONode.html",
                                 .processClassName = "PMRLFOPatch"},
                                [](PatchDeclaration& patch) { declareLFO(patch, 0.5F); }};

}  // namespace tarnkit
