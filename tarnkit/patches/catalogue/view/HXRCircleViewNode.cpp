#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRCircleViewNode{
    "HXRCircleViewNode",
    &HXRViewNode,
    {.defaultName = "Circle View", .processClassName = "PMRCircleViewPatch"},
    [](PatchDeclaration& patch) {
      patch.group("Circle");
      patch.in("Color", "Tarn.fillColorInput", value::color(OIColorWhiteRGBA));
      patch.in("Divisions", "Tarn.divisionsInput", value::index(64));
    }};

}  // namespace tarnkit
