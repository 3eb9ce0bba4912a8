#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRReverseTransitionNode{"HXRReverseTransitionNode",
                                            &HXRNode::kClass,
                                            {.defaultName = "Reverse Transition",
                                             .libraryCategory = "Animation",
                                             .processClassName = "PMRReverseTransitionPatch"},
                                            [](PatchDeclaration& patch) {
                                              patch.in("Input", "Tarn.input");
                                              patch.group("Input Range");
                                              patch.in("Input Min", "Tarn.inputMinInput",
                                                       value::number(0));
                                              patch.in("Input Max", "Tarn.inputMaxInput");
                                              patch.group();
                                              patch.out("Output", "Tarn.output");
                                            }};

}  // namespace tarnkit
