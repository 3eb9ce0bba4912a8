#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRScrollGestureNode{
    "HXRScrollGestureNode",
    &HXRNode::kClass,
    {.defaultName = "Scroll Gesture",
     .libraryCategory = "Gesture",
     .processClassName = "PMRScrollGesturePatch",
     .defaultColor = &HXGesturePatchColor},
    [](PatchDeclaration& patch) {
      patch.group("Content Size");
      patch.in("Content Width", "Tarn.contentWidthInput");
      patch.in("Content Height", "Tarn.contentHeightInput", value::number(-1));
      patch.group();
      patch.in("Bounds Width", "Tarn.boundsWidthInput", value::number(-1));
      patch.in("Bounds Height", "Tarn.boundsHeightInput", value::number(-1));
      patch.in("X Paging", "Tarn.xPagingInput", value::boolean(false));
      patch.in("Y Paging", "Tarn.yPagingInput", value::boolean(false));
      patch.in("Reset", "Tarn.resetInput");
      patch.in("X Offset", "Tarn.xOffsetInput", value::number(0));
      patch.in("Y Offset", "Tarn.yOffsetInput", value::number(0));
      patch.out<HXRGestureOutputPort>("Gesture", "Tarn.gestureOutput");
      patch.out("X Position", "Tarn.xPositionOutput");
      patch.out("Y Position", "Tarn.yPositionOutput");
      patch.out("Dragging", "Tarn.draggingOutput");
      patch.out("Decelerating", "Tarn.deceleratingOutput");
      patch.out("X Page", "Tarn.xPageOutput");
      patch.out("Y Page", "Tarn.yPageOutput");
    }};

}  // namespace tarnkit
