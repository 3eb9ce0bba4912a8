#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRDeltaNode{
    "HXRDeltaNode",
    &HXRNode::kClass,
    {.defaultName = "Delta", .libraryCategory = "Math", .processClassName = "PMRDeltaPatch"},
    [](PatchDeclaration& patch) {
      patch.in("Value", "Tarn.valueInput", value::number(0));
      patch.out("Delta", "Tarn.deltaOutput");
    }};

}  // namespace tarnkit
