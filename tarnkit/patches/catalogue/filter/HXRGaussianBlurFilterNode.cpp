#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRGaussianBlurFilterNode{
    "HXRGaussianBlurFilterNode",
    &HXRNode::kClass,
    {.defaultName = "Gaussian Blur Filter",
     .libraryCategory = "Filter",
     .processClassName = "PMRGaussianBlurFilterPatch"},
    [](PatchDeclaration& patch) {
      patch.parameter("Blur Radius", "Tarn.blurRadiusParameter", 2.0F, 0.0F, 100.0F);
      patch.in<HXRFilterInputPort>("Filter", "Tarn.filterInput");
      patch.out<HXRFilterOutputPort>("Filter", "Tarn.filterOutput");
    }};

}  // namespace tarnkit
