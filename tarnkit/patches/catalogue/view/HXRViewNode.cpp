#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

namespace {
constexpr const char* kHiddenPortGroupKeys[] = {"Local Origin", "View Index", nullptr};
}  // namespace

const HXRNodeClass HXRViewNode{
    "HXRViewNode",
    &HXRNode::kClass,
    {.defaultName = "View",
     .libraryCategory = "View",
     .processClassName = "PMRViewPatch",
     .defaultColor = &HXViewPatchColor,
     .allowsSubnodes = HXRNodeClass::Flag::yes,
     .hiddenPortGroupKeys = kHiddenPortGroupKeys},
    [](PatchDeclaration& patch) {
      patch.in("Enabled", "Tarn.enabledInput", value::boolean(true));
      patch.in<HXRInteractionInputPort>("Interaction", "Tarn.interactionInput");
      patch.in<HXRGestureInputPort>("Gesture", "Tarn.gestureInput");
      patch.in("X Position", "Tarn.xPositionInput");
      patch.in("Y Position", "Tarn.yPositionInput", value::number(0));
      patch.in("Z Position", "Tarn.zPositionInput", value::number(0));
      patch.in("Width", "Tarn.widthInput", value::number(200));
      patch.in("Height", "Tarn.heightInput", value::number(200));
      patch.in("Depth", "Tarn.depthInput", value::number(1));
      patch.in("X Rotation", "Tarn.xRotationInput", value::radians(0));
      patch.in("Y Rotation", "Tarn.yRotationInput", value::radians(0));
      patch.in("Z Rotation", "Tarn.zRotationInput", value::radians(0));
      patch.in("Scale", "Tarn.scaleInput");
      patch.in("X Anchor", "Tarn.xAnchorPointInput", value::number(0));
      patch.in("Y Anchor", "Tarn.yAnchorPointInput", value::number(0));
      patch.in("Z Anchor", "Tarn.zAnchorPointInput", value::number(0));
      patch.in("X Local Origin", "Tarn.xLocalOriginInput", value::number(0));
      patch.in("Y Local Origin", "Tarn.yLocalOriginInput", value::number(0));
      patch.in("Z Local Origin", "Tarn.zLocalOriginInput", value::number(0));
      patch.in("Opacity", "Tarn.opacityInput");
      patch.in("View Index", "Tarn.viewIndexInput");
      patch.group("Masking");
      patch.in("Mask to Shape", "Tarn.maskedToBoundsInput", value::boolean(false));
    }};

}  // namespace tarnkit
