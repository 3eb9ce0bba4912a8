#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRPinchGestureNode{"HXRPinchGestureNode",
                                       &HXRNode::kClass,
                                       {.defaultName = "Pinch Gesture",
                                        .libraryCategory = "Gesture",
                                        .processClassName = "PMRPinchGesturePatch",
                                        .defaultColor = &HXGesturePatchColor},
                                       [](PatchDeclaration& patch) {
                                         patch.in("Reset", "Tarn.resetInput");
                                         patch.in("Scale", "Tarn.scaleInput");
                                         patch.out<HXRGestureOutputPort>("Gesture",
                                                                         "Tarn.gestureOutput");
                                         patch.out("Scale", "Tarn.scaleOutput");
                                         patch.out("Active", "Tarn.activeOutput");
                                       }};

}  // namespace tarnkit
