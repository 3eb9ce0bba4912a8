#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRArrayCountNode{"HXRArrayCountNode",
                                     &HXRNode::kClass,
                                     {.defaultName = "Array Count",
                                      .libraryCategory = "Data",
                                      .processClassName = "PMRArrayCountPatch"},
                                     [](PatchDeclaration& patch) {
                                       patch.in<HXRArrayInputPort>("Array", "Tarn.arrayInput");
                                       patch.out("Count", "Tarn.countOutput");
                                     }};

}  // namespace tarnkit
