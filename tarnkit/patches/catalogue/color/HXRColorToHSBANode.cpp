#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRColorToHSBANode{"HXRColorToHSBANode",
                                      &HXRNode::kClass,
                                      {.defaultName = "Color to HSBA",
                                       .libraryCategory = "Color",
                                       .processClassName = "PMRColorToHSBAPatch"},
                                      [](PatchDeclaration& patch) {
                                        patch.in("Color", "Tarn.colorInput",
                                                 value::color(OIColorWhiteRGBA));
                                        patch.out("Hue", "Tarn.hueOutput");
                                        patch.out("Saturation", "Tarn.saturationOutput");
                                        patch.out("Brightness", "Tarn.brightnessOutput");
                                        patch.out("Alpha", "Tarn.alphaOutput");
                                      }};

}  // namespace tarnkit
