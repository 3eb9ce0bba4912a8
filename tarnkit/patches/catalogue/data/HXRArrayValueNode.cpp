#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRArrayValueNode{"HXRArrayValueNode",
                                     &HXRNode::kClass,
                                     {.defaultName = "Array Value",
                                      .libraryCategory = "Data",
                                      .processClassName = "PMRArrayValuePatch"},
                                     [](PatchDeclaration& patch) {
                                       patch.in<HXRArrayInputPort>("Array", "Tarn.arrayInput");
                                       patch.in("Index", "Tarn.arrayIndexInput");
                                       patch.out<HXRValueOutputPort>("Value", "Tarn.valueOutput");
                                     }};

}  // namespace tarnkit
