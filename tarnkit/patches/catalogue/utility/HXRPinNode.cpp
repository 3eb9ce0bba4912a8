#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRPinNode{"HXRPinNode",
                              &HXRNode::kClass,
                              {.defaultName = "Pin",
                               .libraryCategory = "Utility",
                               .processClassName = "PMRInputSplitterPatch",
                               .patchViewClassName = "HXPinPatchView"},
                              [](PatchDeclaration& patch) {
                                patch.in<HXRValueInputPort>("Input", "Tarn.input");
                                patch.out<HXRValueOutputPort>("Output", "Tarn.output");
                              }};

}  // namespace tarnkit
