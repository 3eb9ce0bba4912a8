#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRSwitchNode{
    "HXRSwitchNode",
    &HXRNode::kClass,
    {.defaultName = "Switch", .libraryCategory = "State", .processClassName = "PMRSwitchPatch"},
    [](PatchDeclaration& patch) {
      patch.in("Turn On", "Tarn.turnOnInput", value::boolean(false));
      patch.in("Turn Off", "Tarn.turnOffInput", value::boolean(false));
      patch.in("Toggle", "Tarn.toggleInput", value::boolean(false));
      patch.out("On / Off", "Tarn.valueOutput");
    }};

}  // namespace tarnkit
