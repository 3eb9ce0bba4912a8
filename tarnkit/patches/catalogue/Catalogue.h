#pragma once

#include "tarnkit/patches/HXRNodeClass.h"

namespace tarnkit {

/// The class records of the patch definitions that need no C++ class of their own, by library
/// category. The others (those whose ports follow a parameter) have headers of their own beside
/// their sources, and their records are `CLASS::kClass`. For one thread.

// Animation
extern const HXRNodeClass HXRCubicBezierNode;
extern const HXRNodeClass HXRDelayNode;
extern const HXRNodeClass HXREaseNode;
extern const HXRNodeClass HXREaseInNode;
extern const HXRNodeClass HXREaseInOutNode;
extern const HXRNodeClass HXREaseOutNode;
extern const HXRNodeClass HXRFrameInfoNode;
extern const HXRNodeClass HXRLFONode;
extern const HXRNodeClass HXRLFO01Node;
extern const HXRNodeClass HXRReverseTransitionNode;
extern const HXRNodeClass HXRRotationSpringNode;
extern const HXRNodeClass HXRSpring1DNode;
extern const HXRNodeClass HXRSpring2DNode;
extern const HXRNodeClass HXRStopwatchNode;
extern const HXRNodeClass HXRTransitionNode;

// Color
extern const HXRNodeClass HXRColorMixerNode;
extern const HXRNodeClass HXRColorToHSBANode;
extern const HXRNodeClass HXRColorToRGBANode;
extern const HXRNodeClass HXRHSBAToColorNode;
extern const HXRNodeClass HXRRGBAToColorNode;

// Data
extern const HXRNodeClass HXRArrayCountNode;
extern const HXRNodeClass HXRArrayValueNode;
extern const HXRNodeClass HXRDictionaryValueForKeyNode;
extern const HXRNodeClass HXRDictionaryKeysAndValuesNode;
extern const HXRNodeClass HXRImageImportNode;
extern const HXRNodeClass HXRJSONImportNode;

// Device
extern const HXRNodeClass HXRCameraPreviewNode;
extern const HXRNodeClass HXRDeviceLocationNode;
extern const HXRNodeClass HXRDeviceMotionNode;
extern const HXRNodeClass HXRDeviceOrientationNode;
extern const HXRNodeClass HXRDeviceVibrationNode;
extern const HXRNodeClass HXRStatusBarNode;

// Filter
extern const HXRNodeClass HXRColorizerFilterNode;
extern const HXRNodeClass HXREmbossFilterNode;
extern const HXRNodeClass HXRGaussianBlurFilterNode;
extern const HXRNodeClass HXRImageControlsFilterNode;
extern const HXRNodeClass HXRInvertFilterNode;
extern const HXRNodeClass HXRPixelateFilterNode;

// Gesture
extern const HXRNodeClass HXRPanGestureNode;
extern const HXRNodeClass HXRPanToggleGestureNode;
extern const HXRNodeClass HXRPinchGestureNode;
extern const HXRNodeClass HXRPinchToggleGestureNode;
extern const HXRNodeClass HXRRotationGestureNode;
extern const HXRNodeClass HXRScrollGestureNode;
extern const HXRNodeClass HXRScrollPhysicsNode;

// Image
extern const HXRNodeClass HXRImageNode;

// Interaction
extern const HXRNodeClass HXRPanInteractionNode;
extern const HXRNodeClass HXRTouchInteractionNode;

// Layout
extern const HXRNodeClass HXRAlignLayoutNode;
extern const HXRNodeClass HXRGridLayoutNode;

// Logic

// Loop
extern const HXRNodeClass HXRLoopNode;
extern const HXRNodeClass HXRLoopControlNode;
extern const HXRNodeClass HXRLoopVariablesNode;
extern const HXRNodeClass HXRReplicatorNode;
extern const HXRNodeClass HXRReplicatorVariablesNode;

// Material
extern const HXRNodeClass HXRArcMotionNode;
extern const HXRNodeClass HXRFastOutLinearInNode;
extern const HXRNodeClass HXRFastOutSlowInNode;
extern const HXRNodeClass HXRLinearOutSlowInNode;
extern const HXRNodeClass HXRMaterialCardNode;
extern const HXRNodeClass HXRMaterialColorNode;
extern const HXRNodeClass HXRMaterialViewNode;
extern const HXRNodeClass HXRShadowViewNode;
extern const HXRNodeClass HXRTimedAnimationNode;
extern const HXRNodeClass HXRTouchRippleViewNode;

// Math
extern const HXRNodeClass HXRClampNode;
extern const HXRNodeClass HXRDeltaNode;
extern const HXRNodeClass HXRInterpolationNode;

// State
extern const HXRNodeClass HXRAccumulatorNode;
extern const HXRNodeClass HXRCounterNode;
extern const HXRNodeClass HXRPulseNode;
extern const HXRNodeClass HXRSampleAndHoldNode;
extern const HXRNodeClass HXRStateInputNode;
extern const HXRNodeClass HXRStateOutputNode;
extern const HXRNodeClass HXRSwitchNode;

// Text
extern const HXRNodeClass HXRTextImageNode;

// Utility
extern const HXRNodeClass HXRConsoleLogNode;
extern const HXRNodeClass HXRDateFormatterNode;
extern const HXRNodeClass HXRDebugNode;
extern const HXRNodeClass HXRImageInfoNode;
extern const HXRNodeClass HXRInputSplitterNode;
extern const HXRNodeClass HXRPinNode;
extern const HXRNodeClass HXRRandomNode;

// View
extern const HXRNodeClass HXR9PatchImageViewNode;
extern const HXRNodeClass HXRCircleViewNode;
extern const HXRNodeClass HXRColorViewNode;
extern const HXRNodeClass HXRFamousNode;
extern const HXRNodeClass HXRFilterViewNode;
extern const HXRNodeClass HXRRemoteGroupProcessorNode;
extern const HXRNodeClass HXRImageViewNode;
extern const HXRNodeClass HXRLinearGradientViewNode;
extern const HXRNodeClass HXRRemoteGroupNode;
extern const HXRNodeClass HXRRoundedRectangleViewNode;
extern const HXRNodeClass HXRSuperviewVariablesNode;
extern const HXRNodeClass HXRTextInputViewNode;
extern const HXRNodeClass HXRTurnDownForNode;
extern const HXRNodeClass HXRViewNode;

// No category
extern const HXRNodeClass HXRTestSubviewGroupNode;

}  // namespace tarnkit
