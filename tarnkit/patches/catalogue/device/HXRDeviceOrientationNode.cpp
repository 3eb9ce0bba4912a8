#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRDeviceOrientationNode{
    "HXRDeviceOrientationNode",
    &HXRNode::kClass,
    {.defaultName = "Device Orientation",
     .libraryCategory = "Device",
     .processClassName = "PMRDeviceOrientationPatch"},
    [](PatchDeclaration& patch) {
      patch.in("Portrait", "Tarn.portraitInput", value::boolean(true));
      patch.in("Upside Down", "Tarn.portraitUpsideDownInput", value::boolean(false));
      patch.in("Landscape Left", "Tarn.landscapeLeftInput", value::boolean(false));
      patch.in("Landscape Right", "Tarn.landscapeRightInput", value::boolean(false));
      patch.in("Set", "Tarn.setInput");
    }};

}  // namespace tarnkit
