#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRImageViewNode{
    "HXRImageViewNode",
    &HXRViewNode,
    {.defaultName = "Image View", .processClassName = "PMRImageViewPatch"},
    [](PatchDeclaration& patch) {
      patch.in<HXRImageInputPort>("Image", "Tarn.imageInput");
      patch.in<HXRFilterInputPort>("Filter", "Tarn.filterInput");
    }};

}  // namespace tarnkit
