#include "tarnkit/patches/PatchRegistry.h"

#include <algorithm>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/PMRPrimitive.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/patches/catalogue/animation/HXRSpringNode.h"
#include "tarnkit/patches/catalogue/data/HXRArrayNode.h"
#include "tarnkit/patches/catalogue/data/HXRArrayValuesNode.h"
#include "tarnkit/patches/catalogue/data/HXRDictionaryNode.h"
#include "tarnkit/patches/catalogue/logic/HXRConditionalNode.h"
#include "tarnkit/patches/catalogue/logic/HXRDemultiplexerNode.h"
#include "tarnkit/patches/catalogue/logic/HXRLogicNode.h"
#include "tarnkit/patches/catalogue/logic/HXRMultiplexerNode.h"
#include "tarnkit/patches/catalogue/math/HXRMathExpressionNode.h"
#include "tarnkit/patches/catalogue/math/HXRMathNode.h"
#include "tarnkit/patches/catalogue/state/HXRIndexSwitchNode.h"
#include "tarnkit/patches/catalogue/utility/HXRJavascriptExpressionNode.h"

namespace tarnkit {

namespace {

// clang-format off
constexpr const HXRNodeClass* kCatalogue[] = {
      // Animation
      &HXRCubicBezierNode,
      &HXRDelayNode,
      &HXREaseNode,
      &HXREaseInNode,
      &HXREaseInOutNode,
      &HXREaseOutNode,
      &HXRFrameInfoNode,
      &HXRLFONode,
      &HXRLFO01Node,
      &HXRReverseTransitionNode,
      &HXRRotationSpringNode,
      &HXRSpringNode::kClass,
      &HXRSpring1DNode,
      &HXRSpring2DNode,
      &HXRStopwatchNode,
      &HXRTransitionNode,
      // Color
      &HXRColorMixerNode,
      &HXRColorToHSBANode,
      &HXRColorToRGBANode,
      &HXRHSBAToColorNode,
      &HXRRGBAToColorNode,
      // Data
      &HXRArrayNode::kClass,
      &HXRArrayCountNode,
      &HXRArrayValueNode,
      &HXRArrayValuesNode::kClass,
      &HXRDictionaryNode::kClass,
      &HXRDictionaryValueForKeyNode,
      &HXRDictionaryKeysAndValuesNode,
      &HXRImageImportNode,
      &HXRJSONImportNode,
      // Device
      &HXRCameraPreviewNode,
      &HXRDeviceLocationNode,
      &HXRDeviceMotionNode,
      &HXRDeviceOrientationNode,
      &HXRDeviceVibrationNode,
      &HXRStatusBarNode,
      // Filter
      &HXRColorizerFilterNode,
      &HXREmbossFilterNode,
      &HXRGaussianBlurFilterNode,
      &HXRImageControlsFilterNode,
      &HXRInvertFilterNode,
      &HXRPixelateFilterNode,
      // Gesture
      &HXRPanGestureNode,
      &HXRPanToggleGestureNode,
      &HXRPinchGestureNode,
      &HXRPinchToggleGestureNode,
      &HXRRotationGestureNode,
      &HXRScrollGestureNode,
      &HXRScrollPhysicsNode,
      // Image
      &HXRImageNode,
      // Interaction
      &HXRPanInteractionNode,
      &HXRTouchInteractionNode,
      // Layout
      &HXRAlignLayoutNode,
      &HXRGridLayoutNode,
      // Logic
      &HXRConditionalNode::kClass,
      &HXRDemultiplexerNode::kClass,
      &HXRLogicNode::kClass,
      &HXRMultiplexerNode::kClass,
      // Loop
      &HXRLoopNode,
      &HXRLoopControlNode,
      &HXRLoopVariablesNode,
      &HXRReplicatorNode,
      &HXRReplicatorVariablesNode,
      // Material
      &HXRArcMotionNode,
      &HXRFastOutLinearInNode,
      &HXRFastOutSlowInNode,
      &HXRLinearOutSlowInNode,
      &HXRMaterialCardNode,
      &HXRMaterialColorNode,
      &HXRMaterialViewNode,
      &HXRShadowViewNode,
      &HXRTimedAnimationNode,
      &HXRTouchRippleViewNode,
      // Math
      &HXRClampNode,
      &HXRDeltaNode,
      &HXRInterpolationNode,
      &HXRMathNode::kClass,
      &HXRMathExpressionNode::kClass,
      // State
      &HXRAccumulatorNode,
      &HXRCounterNode,
      &HXRIndexSwitchNode::kClass,
      &HXRPulseNode,
      &HXRSampleAndHoldNode,
      &HXRStateInputNode,
      &HXRStateOutputNode,
      &HXRSwitchNode,
      // Text
      &HXRTextImageNode,
      // Utility
      &HXRConsoleLogNode,
      &HXRDateFormatterNode,
      &HXRDebugNode,
      &HXRImageInfoNode,
      &HXRInputSplitterNode,
      &HXRJavascriptExpressionNode::kClass,
      &HXRPinNode,
      &HXRRandomNode,
      // View
      &HXR9PatchImageViewNode,
      &HXRCircleViewNode,
      &HXRColorViewNode,
      &HXRFamousNode,
      &HXRFilterViewNode,
      &HXRRemoteGroupProcessorNode,
      &HXRImageViewNode,
      &HXRLinearGradientViewNode,
      &HXRRemoteGroupNode,
      &HXRRoundedRectangleViewNode,
      &HXRSuperviewVariablesNode,
      &HXRTextInputViewNode,
      &HXRTurnDownForNode,
      &HXRViewNode,
      // No category
      &HXRTestSubviewGroupNode,
};
// clang-format on

std::vector<const HXRNodeClass*>& classes() {
  static std::vector<const HXRNodeClass*> all;
  return all;
}

void enter(const HXRNodeClass& patchClass) {
  auto& all = classes();
  const auto same = std::find_if(all.begin(), all.end(), [&](const auto* known) {
    return known->name() == patchClass.name();
  });
  if (same == all.end()) {
    all.push_back(&patchClass);
  } else {
    *same = &patchClass;
  }
  ClassRegistry::add(patchClass);
}

}  // namespace

void registerPatchClasses() {
  if (!classes().empty()) return;
  ClassRegistry::add(PMRPrimitive::kClass);
  ClassRegistry::add(HXRNode::kClass);
  for (const auto* const patchClass : kCatalogue) enter(*patchClass);
}

const std::vector<const HXRNodeClass*>& catalogue() {
  registerPatchClasses();
  return classes();
}

void addPatchClass(const HXRNodeClass& patchClass) {
  registerPatchClasses();
  enter(patchClass);
}

const HXRNodeClass* patchClassNamed(std::string_view name) {
  const Class* const found = ClassRegistry::classNamed(name);
  if (!found || !found->isKindOf(HXRNode::kClass)) return nullptr;
  return static_cast<const HXRNodeClass*>(found);
}

}  // namespace tarnkit
