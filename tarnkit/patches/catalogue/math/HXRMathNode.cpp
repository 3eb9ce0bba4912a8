#include "tarnkit/patches/catalogue/math/HXRMathNode.h"

#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"

namespace tarnkit {

namespace {

constexpr const char* kOperators[] = {"+", "-", "*", "/", "%", "POW", "MIN", "MAX"};

constexpr OperatorsDescription kDescription{kOperators, [] { return value::number(0); }};

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
    &detail::constructPatch<HXRMathNode>};

HXRMathNode::HXRMathNode(const HXRNodeClass& patchClass)
    : OperatorsNode(patchClass, kDescription) {}

String HXRStringForMathOperator(std::uint64_t index) { return operatorText(kOperators, index); }

}  // namespace tarnkit
