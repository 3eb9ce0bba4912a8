#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRRoundedRectangleViewNode{
    "HXRRoundedRectangleViewNode",
    &HXRViewNode,
    {.defaultName = "Rounded Rectangle View", .processClassName = "PMRRoundedRectangleViewPatch"},
    [](PatchDeclaration& patch) {
      patch.group("Rounded Rectangle");
      patch.in("Border Radius", "Tarn.borderRadiusInput", value::number(20));
      patch.in("Color", "Tarn.colorInput", value::color(OIColorWhiteRGBA));
    }};

}  // namespace tarnkit
