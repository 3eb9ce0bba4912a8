#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRRGBAToColorNode{"HXRRGBAToColorNode",
                                      &HXRNode::kClass,
                                      {.defaultName = "RGBA to Color",
                                       .libraryCategory = "Color",
                                       .processClassName = "PMRRGBAToColorPatch"},
                                      [](PatchDeclaration& patch) {
                                        patch.in("Red", "Tarn.redInput", value::number(0));
                                        patch.in("Green", "Tarn.greenInput", value::number(0));
                                        patch.in("Blue", "Tarn.blueInput", value::number(0));
                                        patch.in("Alpha", "Tarn.alphaInput", value::number(1));
                                        patch.out("Color", "Tarn.colorOutput");
                                      }};

}  // namespace tarnkit
