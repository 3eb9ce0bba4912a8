#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRDeviceLocationNode{
    "HXRDeviceLocationNode",
    &HXRNode::kClass,
    {.defaultName = "Device Location",
     .libraryCategory = "Device",
     .processClassName = "PMRDeviceLocationPatch"},
    [](PatchDeclaration& patch) {
      patch.group("Actions");
      patch.in("Locate", "Tarn.locateInput", value::boolean(false));
      patch.group("Accuracy");
      patch.in("Accuracy", "Tarn.accuracyInput", value::number(0));
      patch.group();
      patch.out("Latitude", "Tarn.latitudeOutput");
      patch.out("Longitude", "Tarn.longitudeOutput");
      patch.group("Status");
      patch.out("Locked", "Tarn.lockedOutput");
    }};

}  // namespace tarnkit
