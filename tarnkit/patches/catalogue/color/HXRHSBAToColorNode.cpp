#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRHSBAToColorNode{
    "HXRHSBAToColorNode",
    &HXRNode::kClass,
    {.defaultName = "HSBA to Color",
     .libraryCategory = "Color",
     .processClassName = "PMRHSBAToColorPatch"},
    [](PatchDeclaration& patch) {
      patch.in("Hue", "Tarn.hueInput", value::number(0));
      patch.in("Saturation", "Tarn.saturationInput", value::number(1));
      patch.in("Brightness", "Tarn.brightnessInput", value::number(1));
      patch.in("Alpha", "Tarn.alphaInput", value::number(1));
      patch.out("Color", "Tarn.colorOutput");
    }};

}  // namespace tarnkit
