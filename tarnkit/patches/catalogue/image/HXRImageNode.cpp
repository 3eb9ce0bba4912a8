#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRImageNode{
    "HXRImageNode",
    &HXRNode::kClass,
    {.defaultName = "Image", .libraryCategory = "Image", .processClassName = "PMRImagePatch"},
    [](PatchDeclaration& patch) {
      patch.imageParameter("Image", "Tarn.imageParameter");
      patch.parameter("Scale", "Tarn.scaleParameter", 1.0F, 0.1F, 10.0F);
      patch.out("Width", "Tarn.widthOutput");
      patch.out("Height", "Tarn.heightOutput");
      patch.out<HXRImageOutputPort>("Image", "Tarn.imageOutput");
    }};

}  // namespace tarnkit
