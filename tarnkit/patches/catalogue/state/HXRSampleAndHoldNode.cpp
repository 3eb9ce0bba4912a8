#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRSampleAndHoldNode{
    "HXRSampleAndHoldNode",
    &HXRNode::kClass,
    {.defaultName = "Sample & Hold",
     .libraryCategory = "State",
     .processClassName = "PMRSampleAndHoldPatch"},
    [](PatchDeclaration& patch) {
      patch.in("Value", "Tarn.valueInput");
      patch.in("Reset Value", "Tarn.resetValueInput");
      patch.in("Sampling", "Tarn.samplingInput", value::boolean(false));
      patch.in("Reset", "Tarn.resetInput", value::boolean(false));
      patch.out("Value", "Tarn.valueOutput");
    }};

}  // namespace tarnkit
