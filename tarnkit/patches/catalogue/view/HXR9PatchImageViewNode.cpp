#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXR9PatchImageViewNode{
    "HXR9PatchImageViewNode",
    &HXRViewNode,
    {.defaultName = "9-Patch Image View", .processClassName = "PMR9PatchImageViewPatch"},
    [](PatchDeclaration& patch) {
      patch.in<HXRImageInputPort>("Image", "Tarn.imageInput");
      patch.group("Cap Insets");
      patch.in("Top Cap Inset", "Tarn.topCapInsetInput", value::number(0));
      patch.in("Left Cap Inset", "Tarn.leftCapInsetInput", value::number(0));
      patch.in("Bottom Cap Inset", "Tarn.bottomCapInsetInput", value::number(0));
      patch.in("Right Cap Inset", "Tarn.rightCapInsetInput");
    }};

}  // namespace tarnkit
