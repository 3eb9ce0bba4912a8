#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRPulseNode{
    "HXRPulseNode",
    &HXRNode::kClass,
    {.defaultName = "Pulse", .libraryCategory = "State", .processClassName = "PMRPulsePatch"},
    [](PatchDeclaration& patch) {
      patch.in("Signal", "Tarn.signalInput", value::boolean(false));
      patch.choice("Mode", "Tarn.modeInput", 0, {"Turning On", "Turning Off", "Both"});
      patch.out("Pulse", "Tarn.pulseOutput");
    }};

}  // namespace tarnkit
