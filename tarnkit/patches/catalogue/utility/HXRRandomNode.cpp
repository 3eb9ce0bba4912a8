#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRRandomNode{
    "HXRRandomNode",
    &HXRNode::kClass,
    {.defaultName = "Random", .libraryCategory = "Utility", .processClassName = "PMRRandomPatch"},
    [](PatchDeclaration& patch) {
      patch.in("Minimum", "Tarn.minimumInput", value::number(0));
      patch.in("Maximum", "Tarn.maximumInput", value::number(1));
      patch.out("Value", "Tarn.valueOutput");
    }};

}  // namespace tarnkit
