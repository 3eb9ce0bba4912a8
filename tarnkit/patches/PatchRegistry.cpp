#include "tarnkit/patches/PatchRegistry.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <unordered_map>

#include "tarnkit/math/MXMathParsing.h"
#include "tarnkit/patches/HXRDictionaryEntry.h"
#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/HXRTypedPorts.h"
#include "tarnkit/patches/HXRValueParameters.h"
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
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"
#include "tarnkit/platform/system/Bundle.h"

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
  classes().push_back(&patchClass);
  ClassRegistry::add(patchClass);
}

/// Whether the superclasses end, and with the root of all definitions: a plug-in with a copy of the
/// library of its own has a root of its own.
bool isDefinitionClass(const Class& record) {
  constexpr int kMaximumDepth = 1000;
  const Class* at = &record;
  for (int depth = 0; at && depth < kMaximumDepth; ++depth) {
    if (at == &HXRNode::kClass) return true;
    at = at->superclass();
  }
  return false;
}

/// Whose the name is already. `known` is null for a name that no record stands behind.
std::string whoseNameItIs(const Class* known) {
  if (!known) return "the library";
  const Bundle& bundle = Bundle::forClass(*known);
  if (&bundle == &Bundle::libraryBundle()) return "the library";
  return bundle.bundleIdentifier().toStdString();
}

/// The classes of one bundle under way, with those that they derive from, by name.
using ClassesByName = std::unordered_map<std::string_view, const Class*>;

/// What speaks against the names of the classes between the record and the root; empty: nothing. A
/// class may derive from one that is not registered, but not from one that goes under the name of
/// another.
std::string faultOfBases(const HXRNodeClass& record, ClassesByName& met) {
  for (const Class* at = record.superclass(); at != &HXRNode::kClass; at = at->superclass()) {
    if (at->name().empty()) return "it derives from a class without a name";
    const bool isTaken = ClassRegistry::isTaken(at->name());
    if ((isTaken && ClassRegistry::classNamed(at->name()) != at) ||
        met.try_emplace(at->name(), at).first->second != at) {
      return fmt::format("it derives from a class that takes the name {}", at->name());
    }
  }
  return {};
}

/// What speaks against the record's declaration; empty: nothing.
std::string faultOfDeclaration(const HXRNodeClass& record) {
  const std::string prefix = fmt::format("[{}] ", record.name());
  try {
    record.prototype();
    return {};
  } catch (const std::logic_error& fault) {
    const std::string_view text = fault.what();
    return std::string(text.starts_with(prefix) ? text.substr(prefix.size()) : text);
  } catch (const std::exception& thrown) {
    return fmt::format("its declaration throws: {}", thrown.what());
  } catch (...) {
    return "its declaration throws";
  }
}

/// What speaks against the record; empty: nothing.
std::string faultOf(const HXRNodeClass& record, ClassesByName& met) {
  if (record.name().empty()) return "it has no name";
  if (!isDefinitionClass(record)) return "it does not derive from this library's HXRNode";
  if (ClassRegistry::isTaken(record.name())) {
    const Class* const known = ClassRegistry::classNamed(record.name());
    return known && known->isKindOf(HXRNode::kClass) &&
                   &Bundle::forClass(*known) == &Bundle::libraryBundle()
               ? "its name is taken by a built-in patch"
               : fmt::format("its name is taken by a class of {}", whoseNameItIs(known));
  }
  if (met.try_emplace(record.name(), &record).first->second != &record) {
    return "a class before it derives from another one of its name";
  }
  if (std::string fault = faultOfBases(record, met); !fault.empty()) return fault;
  return faultOfDeclaration(record);
}

/// Keeps the names by which the device knows the patches, ports and parameters of the catalogue:
/// not before a class comes that might take one, since every record is asked.
void reserveDeviceNames() {
  [[maybe_unused]] static const bool done = [] {
    const auto reserve = [](const String& name) { ClassRegistry::reserve(name.view()); };
    for (const auto* const patchClass : kCatalogue) reserve(patchClass->processClassName());
    for (const auto* const portClass : portClasses()) reserve(portClass->processClassName());
    for (const auto* const parameterClass : parameterClasses()) {
      reserve(parameterClass->processClassName());
    }
    reserve(HXRNode::kClass.processClassName());
    return true;
  }();
}

}  // namespace

void registerPatchClasses() {
  if (!classes().empty()) return;
  StandardKeyedUnarchiver::reserveClassNames();
  registerMathClasses();  // an expression's classes are named in archives, too
  for (const Class* record :
       {&PMRPrimitive::kClass, &HXRPortLayout::kClass, &HXRPortGroupCollection::kClass,
        &HXRPortGroup::kClass, &HXRDictionaryEntry::kClass}) {
    ClassRegistry::add(*record);
  }
  ClassRegistry::add(HXRNode::kClass);
  for (const auto* const portClass : portClasses()) ClassRegistry::add(*portClass);
  for (const auto* const parameterClass : parameterClasses()) ClassRegistry::add(*parameterClass);
  for (const auto* const patchClass : kCatalogue) enter(*patchClass);
}

std::vector<const HXRNodeClass*> catalogue() {
  registerPatchClasses();
  return classes();
}

Status addPatchClass(const HXRNodeClass& patchClass) {
  return addPatchClasses(std::array{&patchClass}, Bundle::forClass(patchClass));
}

Status addPatchClasses(std::span<const HXRNodeClass* const> patchClasses, Bundle& bundle) {
  registerPatchClasses();
  reserveDeviceNames();
  std::vector<const HXRNodeClass*> fresh;
  ClassesByName met;
  for (const auto* const record : patchClasses) {
    if (!record) return Status::failure(StatusCode::refused, "a class without a record");
    const auto same = [&](const auto* other) { return other->name() == record->name(); };
    std::string fault;
    if (ClassRegistry::classNamed(record->name()) == record &&
        &Bundle::forClass(*record) == &bundle) {
      continue;
    } else if (std::any_of(fresh.begin(), fresh.end(), same)) {
      fault = "it is brought twice";
    } else {
      fault = faultOf(*record, met);
    }
    if (!fault.empty()) {
      return Status::failure(
          StatusCode::refused,
          fmt::format("class {}, {}", record->name().empty() ? "?" : record->name(), fault));
    }
    fresh.push_back(record);
  }
  for (const auto* const record : fresh) {
    bundle.claimClass(*record);
    enter(*record);
  }
  return {};
}

const HXRNodeClass* patchClassNamed(std::string_view name) {
  registerPatchClasses();
  const Class* const found = ClassRegistry::classNamed(name);
  if (!found || !found->isKindOf(HXRNode::kClass)) return nullptr;
  return static_cast<const HXRNodeClass*>(found);
}

}  // namespace tarnkit
