#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRRotationGestureNode{"HXRRotationGestureNode",
                                          &HXRNode::kClass,
                                          {.defaultName = "Rotation Gesture",
                                           .libraryCategory = "Gesture",
                                           .processClassName = "PMRRotationGesturePatch",
                                           .defaultColor = &HXGesturePatchColor},
                                          [](PatchDeclaration& patch) {
                                            patch.in("Reset", "Tarn.resetInput");
                                            patch.in("Rotation", "Tarn.rotationInput");
                                            patch.out<HXRGestureOutputPort>("Gesture",
                                                                            "Tarn.gestureOutput");
                                            patch.out("Rotation", "Tarn.rotationOutput");
                                            patch.out("Active", "Tarn.activeOutput");
                                          }};

}  // namespace tarnkit
