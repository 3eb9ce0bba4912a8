#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRTouchInteractionNode{"HXRTouchInteractionNode",
                                           &HXRNode::kClass,
                                           {.defaultName = "Touch Interaction",
                                            .libraryCategory = "Interaction",
                                            .processClassName = "PMRTouchInteractionPatch",
                                            .defaultColor = &HXInteractionPatchColor},
                                           [](PatchDeclaration& patch) {
                                             patch.out<HXRInteractionOutputPort>(
                                                 "Interaction", "Tarn.interactionOutput");
                                             patch.out("X Position", "Tarn.xPositionOutput");
                                             patch.out("Y Position", "Tarn.yPositionOutput");
                                             patch.out("Down", "Tarn.downOutput");
                                           }};

}  // namespace tarnkit
