#include "tarnkit/patches/catalogue/logic/HXRConditionalNode.h"

#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"

namespace tarnkit {

namespace {

constexpr const char* kOperators[] = {"==", "!=", ">", "<", ">=", "<="};

constexpr OperatorsDescription kDescription{kOperators, [] { return value::number(0); }};

}  // namespace

const HXRNodeClass HXRConditionalNode::kClass{
    "HXRConditionalNode",
    &HXRNode::kClass,
    {.defaultName = "Conditional",
     .libraryCategory = "Logic",
     .processClassName = "PMRConditionalPatch",
     .patchViewClassName = "HXOperatorPatchView",
     .defaultColor = &HXOperatorPatchColor},
    [](PatchDeclaration& patch) {
      patch.parameter("Number of Operations", kCountKey, 1, 1, 1, true);
      patch.out("Result", "Tarn.resultOutput");
      patch.definition<HXRConditionalNode>().trn_refreshPortsAndParameters();
    },
    &detail::constructPatch<HXRConditionalNode>};

HXRConditionalNode::HXRConditionalNode(const HXRNodeClass& patchClass)
    : OperatorsNode(patchClass, kDescription) {}

String HXRStringForConditionalOperator(std::uint64_t index) {
  return operatorText(kOperators, index);
}

}  // namespace tarnkit
