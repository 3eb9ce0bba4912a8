#include "tarnkit/patches/HXRTypedPorts.h"

#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/patches/HXRReplicatorArrayOutputPort.h"
#include "tarnkit/patches/PatchColors.h"

namespace tarnkit {

// clang-format off
const HXRPortClass HXRInputPort::kClass{"HXRInputPort", &HXRPort::kClass, {.processClassName = "PMRInputPort"}};
const HXRPortClass HXROutputPort::kClass{"HXROutputPort", &HXRPort::kClass, {.processClassName = "PMROutputPort"}};

const HXRPortClass HXRValueInputPort::kClass{"HXRValueInputPort", &HXRInputPort::kClass,
    {.processClassName = "PMRValueInputPort", .acceptedPorts = &HXRValueOutputPort::kClass}};
const HXRPortClass HXRPrimitiveInputPort::kClass{"HXRPrimitiveInputPort", &HXRValueInputPort::kClass,
    {.processClassName = "PMRPrimitiveInputPort", .acceptedPorts = &HXRPrimitiveOutputPort::kClass}};
const HXRPortClass HXRAngleInputPort::kClass{"HXRAngleInputPort", &HXRPrimitiveInputPort::kClass,
    {.processClassName = "PMRAngleInputPort"}};
const HXRPortClass HXRArrayInputPort::kClass{"HXRArrayInputPort", &HXRValueInputPort::kClass,
    {.processClassName = "PMRArrayInputPort", .acceptedPorts = &HXRArrayOutputPort::kClass}};
const HXRPortClass HXRDictionaryInputPort::kClass{"HXRDictionaryInputPort", &HXRValueInputPort::kClass,
    {.processClassName = "PMRDictionaryInputPort", .acceptedPorts = &HXRDictionaryOutputPort::kClass}};
const HXRPortClass HXRImageInputPort::kClass{"HXRImageInputPort", &HXRValueInputPort::kClass,
    {.processClassName = "PMRImageInputPort", .acceptedPorts = &HXRImageOutputPort::kClass}};
const HXRPortClass HXRFilterInputPort::kClass{"HXRFilterInputPort", &HXRValueInputPort::kClass,
    {.processClassName = "PMRFilterInputPort", .acceptedPorts = &HXRFilterOutputPort::kClass}};
const HXRPortClass HXRViewInputPort::kClass{"HXRViewInputPort", &HXRValueInputPort::kClass,
    {.processClassName = "PMRViewInputPort", .defaultColor = &HXViewPatchColor, .acceptedPorts = &HXRViewOutputPort::kClass}};

const HXRPortClass HXRValueOutputPort::kClass{"HXRValueOutputPort", &HXROutputPort::kClass,
    {.processClassName = "PMRValueOutputPort"}};
const HXRPortClass HXRPrimitiveOutputPort::kClass{"HXRPrimitiveOutputPort", &HXRValueOutputPort::kClass,
    {.processClassName = "PMRPrimitiveOutputPort"}};
const HXRPortClass HXRArrayOutputPort::kClass{"HXRArrayOutputPort", &HXRValueOutputPort::kClass,
    {.processClassName = "PMRArrayOutputPort"}};
const HXRPortClass HXRReplicatorArrayOutputPort::kClass{"HXRReplicatorArrayOutputPort", &HXRArrayOutputPort::kClass, {}};
const HXRPortClass HXRDictionaryOutputPort::kClass{"HXRDictionaryOutputPort", &HXRValueOutputPort::kClass,
    {.processClassName = "PMRDictionaryOutputPort"}};
const HXRPortClass HXRImageOutputPort::kClass{"HXRImageOutputPort", &HXRValueOutputPort::kClass,
    {.processClassName = "PMRImageOutputPort"}};
const HXRPortClass HXRFilterOutputPort::kClass{"HXRFilterOutputPort", &HXRValueOutputPort::kClass,
    {.processClassName = "PMRFilterOutputPort"}};
const HXRPortClass HXRViewOutputPort::kClass{"HXRViewOutputPort", &HXRValueOutputPort::kClass,
    {.processClassName = "PMRViewOutputPort", .defaultColor = &HXViewPatchColor}};

const HXRPortClass HXRGestureInputPort::kClass{"HXRGestureInputPort", &HXRInputPort::kClass,
    {.processClassName = "PMRGestureInputPort", .defaultColor = &HXGesturePatchColor, .acceptedPorts = &HXRGestureOutputPort::kClass}};
const HXRPortClass HXRGestureOutputPort::kClass{"HXRGestureOutputPort", &HXROutputPort::kClass,
    {.processClassName = "PMRGestureOutputPort", .defaultColor = &HXGesturePatchColor}};
const HXRPortClass HXRInteractionInputPort::kClass{"HXRInteractionInputPort", &HXRInputPort::kClass,
    {.processClassName = "PMRInteractionInputPort", .defaultColor = &HXInteractionPatchColor, .acceptedPorts = &HXRInteractionOutputPort::kClass}};
const HXRPortClass HXRInteractionOutputPort::kClass{"HXRInteractionOutputPort", &HXROutputPort::kClass,
    {.processClassName = "PMRInteractionOutputPort", .defaultColor = &HXInteractionPatchColor}};
const HXRPortClass HXRFeedbackInputPort::kClass{"HXRFeedbackInputPort", &HXRInputPort::kClass,
    {.processClassName = "PMRFeedbackInputPort", .acceptedPorts = &HXRFeedbackOutputPort::kClass}};
const HXRPortClass HXRFeedbackOutputPort::kClass{"HXRFeedbackOutputPort", &HXROutputPort::kClass,
    {.processClassName = "PMRFeedbackOutputPort"}};
// clang-format on

std::span<const HXRPortClass* const> portClasses() {
  static constexpr const HXRPortClass* kClasses[] = {
      &HXRPort::kClass,
      &HXRInputPort::kClass,
      &HXROutputPort::kClass,
      &HXRValueInputPort::kClass,
      &HXRPrimitiveInputPort::kClass,
      &HXRAngleInputPort::kClass,
      &HXRArrayInputPort::kClass,
      &HXRDictionaryInputPort::kClass,
      &HXRImageInputPort::kClass,
      &HXRFilterInputPort::kClass,
      &HXRViewInputPort::kClass,
      &HXRValueOutputPort::kClass,
      &HXRPrimitiveOutputPort::kClass,
      &HXRArrayOutputPort::kClass,
      &HXRReplicatorArrayOutputPort::kClass,
      &HXRDictionaryOutputPort::kClass,
      &HXRImageOutputPort::kClass,
      &HXRFilterOutputPort::kClass,
      &HXRViewOutputPort::kClass,
      &HXRGestureInputPort::kClass,
      &HXRGestureOutputPort::kClass,
      &HXRInteractionInputPort::kClass,
      &HXRInteractionOutputPort::kClass,
      &HXRFeedbackInputPort::kClass,
      &HXRFeedbackOutputPort::kClass,
  };
  return kClasses;
}

bool HXRValueOutputPort::canConnectToPort(const HXRPort* other) const {
  return isMemberOf(kClass) && other && other->isKindOf(HXRValueInputPort::kClass);
}

}  // namespace tarnkit
