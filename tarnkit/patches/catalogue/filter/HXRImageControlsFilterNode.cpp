#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRImageControlsFilterNode{
    "HXRImageControlsFilterNode",
    &HXRNode::kClass,
    {.defaultName = "Image Controls",
     .libraryCategory = "Filter",
     .processClassName = "PMRImageControlsFilterPatch"},
    [](PatchDeclaration& patch) {
      patch.in<HXRFilterInputPort>("Filter", "Tarn.filterInput");
      patch.group("Image Controls");
      patch.in("Brightness", "Tarn.brightnessInput", value::number(0.5F));
      patch.in("Contrast", "Tarn.contrastInput", value::number(0.25F));
      patch.in("Saturation", "Tarn.saturationInput", value::number(0.5F));
      patch.in("Highlights", "Tarn.highlightsInput", value::number(1));
      patch.in("Shadows", "Tarn.shadowsInput");
      patch.group();
      patch.out<HXRFilterOutputPort>("Filter", "Tarn.filterOutput");
    }};

}  // namespace tarnkit
