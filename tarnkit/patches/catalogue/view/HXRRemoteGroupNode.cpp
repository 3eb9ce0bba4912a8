#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRRemoteGroupNode{
    "HXRRemoteGroupNode",
    &HXRNode::kClass,
    {.defaultName = "Remote Group",
     .libraryCategory = "View",
     .processClassName = "PMRRemoteGroupPatch",
     .allowsSubnodes = HXRNodeClass::Flag::yes,
     .nodeClassName = "HXRemoteGroupNode"},
    [](PatchDeclaration& patch) { patch.out<HXRViewOutputPort>("Group", "Tarn.groupOutput"); }};

}  // namespace tarnkit
