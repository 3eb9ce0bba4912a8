#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

namespace {
constexpr const char* kHiddenPortGroupKeys[] = {"Position", "Rotation", "Anchor Point",
                                                "Local Origin", nullptr};
}  // namespace

const HXRNodeClass HXRSuperviewVariablesNode{
    "HXRSuperviewVariablesNode",
    &HXRNode::kClass,
    {.defaultName = "Superview Variables",
     .libraryCategory = "View",
     .processClassName = "PMRSuperviewVariablesPatch",
     .hiddenPortGroupKeys = kHiddenPortGroupKeys},
    [](PatchDeclaration& patch) {
      patch.out("X Position", "Tarn.xPositionOutput");
      patch.out("Y Position", "Tarn.yPositionOutput");
      patch.out("Z Position", "Tarn.zPositionOutput");
      patch.out("Width", "Tarn.widthOutput");
      patch.out("Height", "Tarn.heightOutput");
      patch.out("Depth", "Tarn.depthOutput");
      patch.out("X Rotation", "Tarn.xRotationOutput");
      patch.out("Y Rotation", "Tarn.yRotationOutput");
      patch.out("Z Rotation", "Tarn.zRotationOutput");
      patch.out("X Anchor", "Tarn.xAnchorPointOutput");
      patch.out("Y Anchor", "Tarn.yAnchorPointOutput");
      patch.out("Z Anchor", "Tarn.zAnchorPointOutput");
      patch.out("X Local Origin", "Tarn.xLocalOriginOutput");
      patch.out("Y Local Origin", "Tarn.yLocalOriginOutput");
      patch.out("Z Local Origin", "Tarn.zLocalOriginOutput");
    }};

}  // namespace tarnkit
