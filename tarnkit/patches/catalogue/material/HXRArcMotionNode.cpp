#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRArcMotionNode{
    "HXRArcMotionNode",
    &HXRNode::kClass,
    {.defaultName = "Arc Motion",
     .libraryCategory = "Material",
     .processClassName = "PMRArcMotionPatch"},
    [](PatchDeclaration& patch) {
      patch.group("Position");
      patch.in("X Position Begin", "Tarn.xPositionBeginInput", value::number(0));
      patch.in("Y Position Begin", "Tarn.yPositionBeginInput", value::number(0));
      patch.in("X Position End", "Tarn.xPositionEndInput", value::number(200));
      patch.in("Y Position End", "Tarn.yPositionEndInput", value::number(200));
      patch.group();
      patch.in("Min Angle", "Tarn.minAngleInput", value::degrees(0));
      patch.in("Max Angle", "Tarn.maxAngleInput", value::degrees(90));
      patch.in("Flipped", "Tarn.flippedInput", value::boolean(false));
      patch.in("Progress", "Tarn.progressInput", value::number(0));
      patch.out("X Position", "Tarn.xPositionOutput");
      patch.out("Y Position", "Tarn.yPositionOutput");
    }};

}  // namespace tarnkit
