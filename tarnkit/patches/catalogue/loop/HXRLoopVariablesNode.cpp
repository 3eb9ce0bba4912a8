#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRLoopVariablesNode{"HXRLoopVariablesNode",
                                        &HXRNode::kClass,
                                        {.defaultName = "Loop Variables",
                                         .libraryCategory = "Loop",
                                         .processClassName = "PMRLoopVariablesPatch",
                                         .defaultColor = &HXLoopPatchColor,
                                         .hiddenInLibrary = HXRNodeClass::Flag::yes},
                                        [](PatchDeclaration& patch) {
                                          patch.out("Index", "Tarn.indexOutput");
                                          patch.out("Position", "Tarn.positionOutput");
                                          patch.out("Loops", "Tarn.loopsOutput");
                                        }};

}  // namespace tarnkit
