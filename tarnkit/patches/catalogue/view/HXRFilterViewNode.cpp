#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRFilterViewNode{
    "HXRFilterViewNode",
    &HXRViewNode,
    {.defaultName = "Filter View", .processClassName = "PMRFilterViewPatch"},
    [](PatchDeclaration& patch) { patch.in<HXRFilterInputPort>("Filter", "Tarn.filterInput"); }};

}  // namespace tarnkit
