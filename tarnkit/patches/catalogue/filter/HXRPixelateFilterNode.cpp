#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRPixelateFilterNode{
    "HXRPixelateFilterNode",
    &HXRNode::kClass,
    {.defaultName = "Pixelate Filter",
     .libraryCategory = "Filter",
     .processClassName = "PMRPixelateFilterPatch"},
    [](PatchDeclaration& patch) {
      patch.in<HXRFilterInputPort>("Filter", "Tarn.filterInput");
      patch.in("Pixel Size", "Tarn.pixelSizeInput");
      patch.out<HXRFilterOutputPort>("Filter", "Tarn.filterOutput");
    }};

}  // namespace tarnkit
