#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRTimedAnimationNode{
    "HXRTimedAnimationNode",
    &HXRNode::kClass,
    {.defaultName = "Timed Animation",
     .libraryCategory = "Material",
     .processClassName = "PMRTimedAnimationPatch"},
    [](PatchDeclaration& patch) {
      patch.in("On/Off", "Tarn.onOffInput", value::boolean(false));
      patch.in("Duration", "Tarn.durationInput", value::number(1));
      patch.choice("Curve", "Tarn.curveInput", 0, {"Linear", "Ease-In", "Ease-Out", "Ease-In-Out"});
      patch.out("Progress", "Tarn.progressOutput");
    }};

}  // namespace tarnkit
