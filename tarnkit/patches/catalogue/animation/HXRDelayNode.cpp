#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRDelayNode{
    "HXRDelayNode",
    &HXRNode::kClass,
    {.defaultName = "Delay", .libraryCategory = "Animation", .processClassName = "PMRDelayPatch"},
    [](PatchDeclaration& patch) {
      patch.in("Value", "Tarn.valueInput");
      patch.in("Delay", "Tarn.delayInput", value::number(1));
      patch.out("Value", "Tarn.valueOutput");
    }};

}  // namespace tarnkit
