#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRPanToggleGestureNode{
    "HXRPanToggleGestureNode",
    &HXRNode::kClass,
    {.defaultName = "Pan Toggle",
     .libraryCategory = "Gesture",
     .processClassName = "PMRPanToggleGesturePatch",
     .defaultColor = &HXGesturePatchColor},
    [](PatchDeclaration& patch) {
      patch.group("State A");
      patch.in("X Position", "Tarn.xPositionAInput", value::number(0));
      patch.in("Y Position", "Tarn.yPositionAInput", value::number(0));
      patch.group();
      patch.in("X Position", "Tarn.xPositionBInput", value::number(0));
      patch.in("Y Position", "Tarn.yPositionBInput", value::number(0));
      patch.group("Toggle");
      patch.in("Tap To Toggle", "Tarn.tapToggleInput", value::boolean(true));
      patch.in("State A", "Tarn.stateAInput", value::boolean(false));
      patch.in("State B", "Tarn.stateBInput");
      patch.group();
      patch.out<HXRGestureOutputPort>("Gesture", "Tarn.gestureOutput");
      patch.out("X Position", "Tarn.xPositionOutput");
      patch.out("Y Position", "Tarn.yPositionOutput");
      patch.out("A/B", "Tarn.abOutput");
      patch.out("Active", "Tarn.activeOutput");
    }};

}  // namespace tarnkit
