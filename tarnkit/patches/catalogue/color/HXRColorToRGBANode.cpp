#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRColorToRGBANode{"HXRColorToRGBANode",
                                      &HXRNode::kClass,
                                      {.defaultName = "Color to RGBA",
                                       .libraryCategory = "Color",
                                       .processClassName = "PMRColorToRGBAPatch"},
                                      [](PatchDeclaration& patch) {
                                        patch.in("Color", "Tarn.colorInput",
                                                 value::color(OIColorWhiteRGBA));
                                        patch.out("Red", "Tarn.redOutput");
                                        patch.out("Green", "Tarn.greenOutput");
                                        patch.out("Blue", "Tarn.blueOutput");
                                        patch.out("Alpha", "Tarn.alphaOutput");
                                      }};

}  // namespace tarnkit
