#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRPinchToggleGestureNode{
    "HXRPinchToggleGestureNode",
    &HXRNode::kClass,
    {.defaultName = "Pinch Toggle",
     .libraryCategory = "Gesture",
     .processClassName = "PMRPinchToggleGesturePatch",
     .defaultColor = &HXGesturePatchColor},
    [](PatchDeclaration& patch) {
      patch.group("State A");
      patch.in("X Position", "Tarn.xPositionAInput");
      patch.in("Y Position", "Tarn.yPositionAInput", value::number(0));
      patch.in("Rotation", "Tarn.rotationAInput", value::radians(0));
      patch.in("Scale", "Tarn.scaleAInput", value::number(1));
      patch.group();
      patch.in("X Position", "Tarn.xPositionBInput", value::number(0));
      patch.in("Y Position", "Tarn.yPositionBInput", value::number(0));
      patch.in("Rotation", "Tarn.rotationBInput", value::radians(0));
      patch.in("Scale", "Tarn.scaleBInput", value::number(1));
      patch.in("Tap To Toggle", "Tarn.tapToggleInput", value::boolean(true));
      patch.in("State A", "Tarn.stateAInput", value::boolean(false));
      patch.in("State B", "Tarn.stateBInput", value::boolean(false));
      patch.out<HXRGestureOutputPort>("Gesture", "Tarn.gestureOutput");
      patch.out("X Position", "Tarn.xPositionOutput");
      patch.out("Y Position", "Tarn.yPositionOutput");
      patch.out("Rotation", "Tarn.rotationOutput");
      patch.out("Scale", "Tarn.scaleOutput");
      patch.out("A/B", "Tarn.abOutput");
      patch.out("Active", "Tarn.activeOutput");
    }};

}  // namespace tarnkit
