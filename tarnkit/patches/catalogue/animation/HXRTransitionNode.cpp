#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRTransitionNode{
    "HXRTransitionNode",
    &HXRNode::kClass,
    {.defaultName = "Transition",
     .libraryCategory = "Animation",
     .processClassName = "PMRTransitionPatch"},
    [](PatchDeclaration& patch) {
      patch.in("Progress", "Tarn.input", value::number(0));
      patch.group("Value Range");
      patch.in("Value Min", "Tarn.outputMinInput", value::number(0));
      patch.in("Value Max", "Tarn.outputMaxInput", value::number(1));
      patch.group();
      patch.out("Value", "Tarn.output");
    }};

}  // namespace tarnkit
