#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRCameraPreviewNode{
    "HXRCameraPreviewNode",
    &HXRNode::kClass,
    {.defaultName = "Camera Preview",
     .libraryCategory = "Device",
     .processClassName = "PMRCameraPreviewPatch"},
    [](PatchDeclaration& patch) {
      patch.group("Camera");
      patch.in("Front", "Tarn.frontCameraInput", value::boolean(false));
      patch.in("Back", "Tarn.backCameraInput", value::boolean(false));
      patch.group();
      patch.out("Width", "Tarn.widthOutput");
      patch.out("Height", "Tarn.heightOutput");
      patch.out<HXRImageOutputPort>("Image", "Tarn.imageOutput");
    }};

}  // namespace tarnkit
