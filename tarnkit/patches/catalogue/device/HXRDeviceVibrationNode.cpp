#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRDeviceVibrationNode{"HXRDeviceVibrationNode",
                                          &HXRNode::kClass,
                                          {.defaultName = "Device Vibration",
                                           .libraryCategory = "Device",
                                           .processClassName = "PMRDeviceVibrationPatch"},
                                          [](PatchDeclaration& patch) {
                                            patch.in("Vibrate", "Tarn.vibrateInput",
                                                     value::boolean(false));
                                          }};

}  // namespace tarnkit
