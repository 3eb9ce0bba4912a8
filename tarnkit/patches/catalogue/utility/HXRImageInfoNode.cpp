#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRImageInfoNode{"HXRImageInfoNode",
                                    &HXRNode::kClass,
                                    {.defaultName = "Image Info",
                                     .libraryCategory = "Utility",
                                     .processClassName = "PMRImageInfoPatch"},
                                    [](PatchDeclaration& patch) {
                                      patch.in<HXRImageInputPort>("Image", "Tarn.imageInput");
                                      patch.out("Width", "Tarn.widthOutput");
                                      patch.out("Height", "Tarn.heightOutput");
                                      patch.out("Scale", "Tarn.scaleOutput");
                                    }};

}  // namespace tarnkit
