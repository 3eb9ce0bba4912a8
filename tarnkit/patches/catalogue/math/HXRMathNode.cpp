#include "tarnkit/patches/catalogue/math/HXRMathNode.h"

#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"

namespace tarnkit {

namespace {

constexpr const char* kOperators[] = {"+", "-", "*", "/", "%", "POW", "MIN", "MAX"};

Ref<HXRPort> makeOperand(String name, String uniqueKey) {
  return make<HXRPrimitiveInputPort>(std::move(name), std::move(uniqueKey), value::number(0));
}

constexpr OperatorsDescription kDescription{kOperators, operandsOf(makeOperand)};

}  // namespace

const HXRNodeClass HXRMathNode::kClass{
    "HXRMathNode",
    &HXRNode::kClass,
    {.defaultName = "Math",
     .libraryCategory = "Math",
     .processClassName = "PMRMathPatch",
     .patchViewClassName = "HXOperatorPatchView",
     .defaultColor = &HXOperatorPatchColor},
    [](PatchDeclaration& patch) {
      patch.parameter("Operations", kCountKey, 1, 1, 100);
      patch.out("Result", "Tarn.resultOutput");
      patch.definition<HXRMathNode>().trn_refreshPortsAndParameters();
    },
    constructPatch<HXRMathNode>};

HXRMathNode::HXRMathNode(const HXRNodeClass& patchClass)
    : OperatorsNode(patchClass, kDescription) {}

String HXRStringForMathOperator(std::uint64_t index) { return operatorText(kOperators, index); }

}  // namespace tarnkit
