#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRShadowViewNode{"HXRShadowViewNode",
                                     &HXRViewNode,
                                     {.defaultName = "Shadow View",
                                      .libraryCategory = "Material",
                                      .processClassName = "PMRShadowViewPatch"},
                                     [](PatchDeclaration& patch) {
                                       patch.group("Shadow");
                                       patch.in("Spread", "Tarn.spreadInput", value::number(0));
                                       patch.in("Shadow Size", "Tarn.shadowSizeInput",
                                                value::number(25));
                                       patch.in("Border Radius", "Tarn.borderRadiusInput");
                                     }};

}  // namespace tarnkit
