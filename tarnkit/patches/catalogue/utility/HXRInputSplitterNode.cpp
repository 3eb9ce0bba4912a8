#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRInputSplitterNode{"HXRInputSplitterNode",
                                        &HXRNode::kClass,
                                        {.defaultName = "Input Splitter",
                                         .libraryCategory = "Utility",
                                         .processClassName = "PMRInputSplitterPatch"},
                                        [](PatchDeclaration& patch) {
                                          patch.in<HXRValueInputPort>("Input", "Tarn.input");
                                          patch.out<HXRValueOutputPort>("Output", "Tarn.output");
                                        }};

}  // namespace tarnkit
