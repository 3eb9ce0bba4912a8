#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRPanGestureNode{"HXRPanGestureNode",
                                     &HXRNode::kClass,
                                     {.defaultName = "Pan Gesture",
                                      .libraryCategory = "Gesture",
                                      .processClassName = "PMRPanGesturePatch",
                                      .defaultColor = &HXGesturePatchColor},
                                     [](PatchDeclaration& patch) {
                                       patch.in("Reset", "Tarn.resetInput");
                                       patch.group("Offset");
                                       patch.in("X Offset", "Tarn.xOffsetInput", value::number(0));
                                       patch.in("Y Offset", "Tarn.yOffsetInput");
                                       patch.group();
                                       patch.out<HXRGestureOutputPort>("Gesture",
                                                                       "Tarn.gestureOutput");
                                       patch.out("X Pan", "Tarn.xPanOutput");
                                       patch.out("Y Pan", "Tarn.yPanOutput");
                                       patch.out("X Delta", "Tarn.xDeltaOutput");
                                       patch.out("Y Delta", "Tarn.yDeltaOutput");
                                       patch.out("Active", "Tarn.activeOutput");
                                     }};

}  // namespace tarnkit
