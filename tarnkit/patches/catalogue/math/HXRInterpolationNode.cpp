#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRInterpolationNode{
    "HXRInterpolationNode",
    &HXRNode::kClass,
    {.defaultName = "Interpolation",
     .libraryCategory = "Math",
     .processClassName = "PMRInterpolationPatch"},
    [](PatchDeclaration& patch) {
      patch.in("Input", "Tarn.input");
      patch.in("Input Min", "Tarn.inputMinInput", value::number(0));
      patch.in("Input Max", "Tarn.inputMaxInput", value::number(1));
      patch.in("Output Min", "Tarn.outputMinInput", value::number(0));
      patch.in("Output Max", "Tarn.outputMaxInput", value::number(1));
      patch.group("Repeat Mode");
      patch.choice("Repeat Mode", "Tarn.repeatModeInput", 0, {"None", "Repeat", "Mirrored Repeat"});
      patch.group();
      patch.out("Output", "Tarn.output");
    }};

}  // namespace tarnkit
