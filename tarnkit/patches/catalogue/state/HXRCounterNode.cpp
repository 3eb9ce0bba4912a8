#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRCounterNode{
    "HXRCounterNode",
    &HXRNode::kClass,
    {.defaultName = "Counter", .libraryCategory = "State", .processClassName = "PMRCounterPatch"},
    [](PatchDeclaration& patch) {
      patch.in("Reset Value", "Tarn.resetValueInput", value::index(0));
      patch.in("Increment", "Tarn.incrementInput", value::boolean(false));
      patch.in("Decrement", "Tarn.decrementInput", value::boolean(false));
      patch.in("Reset", "Tarn.resetInput", value::boolean(false));
      patch.out("Value", "Tarn.valueOutput");
    }};

}  // namespace tarnkit
