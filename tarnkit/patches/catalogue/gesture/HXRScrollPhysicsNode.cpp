#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRScrollPhysicsNode{"HXRScrollPhysicsNode",
                                        &HXRNode::kClass,
                                        {.defaultName = "Scroll Physics",
                                         .libraryCategory = "Gesture",
                                         .processClassName = "PMRScrollPhysicsPatch",
                                         .defaultColor = &HXGesturePatchColor,
                                         .hiddenInLibrary = HXRNodeClass::Flag::yes},
                                        [](PatchDeclaration& patch) {
                                          patch.group("Bounds");
                                          patch.in("Min", "Tarn.minInput", value::number(0));
                                          patch.in("Max", "Tarn.maxInput", value::number(100));
                                          patch.group();
                                          patch.in("Position", "Tarn.positionInput");
                                          patch.in("Velocity", "Tarn.velocityInput");
                                          patch.in("Sampling", "Tarn.samplingInput");
                                          patch.out("Position", "Tarn.positionOutput");
                                          patch.out("Velocity", "Tarn.velocityOutput");
                                        }};

}  // namespace tarnkit
