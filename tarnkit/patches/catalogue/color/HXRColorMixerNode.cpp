#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRColorMixerNode{
    "HXRColorMixerNode",
    &HXRNode::kClass,
    {.defaultName = "Color Mixer",
     .libraryCategory = "Color",
     .processClassName = "PMRColorMixerPatch"},
    [](PatchDeclaration& patch) {
      patch.in("Color A", "Tarn.colorAInput", value::color(OIColorBlackRGBA));
      patch.in("Color B", "Tarn.colorBInput", value::color(OIColorWhiteRGBA));
      patch.in("Mix", "Tarn.mixInput", value::number(0.5F));
      patch.out("Color", "Tarn.colorOutput");
    }};

}  // namespace tarnkit
