#include "tarnkit/patches/catalogue/logic/HXRConditionalNode.h"

#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"

namespace tarnkit {

namespace {

constexpr const char* kOperators[] = {"==", "!=", ">", "<", ">=", "<="};

Ref<HXRPort> makeOperand(String name, String uniqueKey) {
  return make<HXRPrimitiveInputPort>(std::move(name), std::move(uniqueKey), value::number(0));
}

constexpr OperatorsDescription kDescription{kOperators, operandsOf(makeOperand)};

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
    constructPatch<HXRConditionalNode>};

HXRConditionalNode::HXRConditionalNode(const HXRNodeClass& patchClass)
    : OperatorsNode(patchClass, kDescription) {}

String HXRStringForConditionalOperator(std::uint64_t index) {
  return operatorText(kOperators, index);
}

}  // namespace tarnkit
