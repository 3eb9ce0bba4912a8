#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRStateOutputNode{
    "HXRStateOutputNode",
    &HXRNode::kClass,
    {.defaultName = "State Output",
     .libraryCategory = "State",
     .processClassName = "PMRStateOutputPatch"},
    [](PatchDeclaration& patch) {
      patch.in<HXRValueInputPort>("Initial", "Tarn.initialValueInput");
      patch.out<HXRFeedbackOutputPort>("State", "Tarn.stateInput");
      patch.out<HXRValueOutputPort>("Value", "Tarn.valueOutput");
    }};

}  // namespace tarnkit
