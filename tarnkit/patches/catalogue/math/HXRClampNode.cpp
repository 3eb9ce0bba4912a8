#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRClampNode{
    "HXRClampNode",
    &HXRNode::kClass,
    {.defaultName = "Clamp", .libraryCategory = "Math", .processClassName = "PMRClampPatch"},
    [](PatchDeclaration& patch) {
      patch.in("Value", "Tarn.valueInput");
      patch.in("Minimum", "Tarn.minimumInput");
      patch.in("Maximum", "Tarn.maximumInput");
      patch.out("Result", "Tarn.resultOutput");
    }};

}  // namespace tarnkit
