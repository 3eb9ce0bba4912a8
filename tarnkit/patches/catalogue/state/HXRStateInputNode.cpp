#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRStateInputNode{"HXRStateInputNode",
                                     &HXRNode::kClass,
                                     {.defaultName = "State Input",
                                      .libraryCategory = "State",
                                      .processClassName = "PMRStateInputPatch"},
                                     [](PatchDeclaration& patch) {
                                       patch.in<HXRFeedbackInputPort>("State", "Tarn.stateOutput");
                                       patch.in("Enabled", "Tarn.enabledInput",
                                                value::boolean(true));
                                       patch.in<HXRValueInputPort>("Value", "Tarn.valueInput");
                                     }};

}  // namespace tarnkit
