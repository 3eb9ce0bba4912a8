#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRDeviceMotionNode{"HXRDeviceMotionNode",
                                       &HXRNode::kClass,
                                       {.defaultName = "Device Motion",
                                        .libraryCategory = "Device",
                                        .processClassName = "PMRDeviceMotionPatch"},
                                       [](PatchDeclaration& patch) {
                                         patch.out("Pitch", "Tarn.pitchOutput");
                                         patch.out("Roll", "Tarn.rollOutput");
                                         patch.out("Yaw", "Tarn.yawOutput");
                                       }};

}  // namespace tarnkit
