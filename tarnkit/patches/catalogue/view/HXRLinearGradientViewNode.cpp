#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRLinearGradientViewNode{
    "HXRLinearGradientViewNode",
    &HXRViewNode,
    {.defaultName = "Linear Gradient View", .processClassName = "PMRLinearGradientViewPatch"},
    [](PatchDeclaration& patch) {
      patch.in("Color 1", "Tarn.color1Input", value::color(OIColorBlackRGBA));
      patch.in("Color 2", "Tarn.color2Input", value::color(OIColorWhiteRGBA));
      patch.in("Stop 1", "Tarn.stop1Input", value::number(0));
      patch.in("Stop 2", "Tarn.stop2Input", value::number(1));
      patch.in("Angle", "Tarn.angleInput");
    }};

}  // namespace tarnkit
