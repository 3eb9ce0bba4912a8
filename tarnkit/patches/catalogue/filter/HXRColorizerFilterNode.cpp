#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRColorizerFilterNode{
    "HXRColorizerFilterNode",
    &HXRNode::kClass,
    {.defaultName = "Colorizer Filter",
     .libraryCategory = "Filter",
     .processClassName = "PMRColorizerFilterPatch"},
    [](PatchDeclaration& patch) {
      patch.in<HXRFilterInputPort>("Filter", "Tarn.filterInput");
      patch.group("Colors");
      patch.in("Color A", "Tarn.colorAInput", value::color(OIColorBlackRGBA));
      patch.in("Color B", "Tarn.colorBInput", value::color(OIColorWhiteRGBA));
      patch.group();
      patch.out<HXRFilterOutputPort>("Filter", "Tarn.filterOutput");
    }};

}  // namespace tarnkit
