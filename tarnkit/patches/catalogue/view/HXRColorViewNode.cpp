#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRColorViewNode{
    "HXRColorViewNode",
    &HXRViewNode,
    {.defaultName = "Color View", .processClassName = "PMRColorViewPatch"},
    [](PatchDeclaration& patch) {
      patch.in("Color", "Tarn.colorInput", value::color(OIColorWhiteRGBA));
    }};

}  // namespace tarnkit
