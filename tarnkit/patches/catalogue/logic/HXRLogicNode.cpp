#include "tarnkit/patches/catalogue/logic/HXRLogicNode.h"

#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"

namespace tarnkit {

namespace {

constexpr const char* kOperators[] = {"AND", "OR", "XOR", "NAND", "NOR", "NXOR", "NOT"};

Ref<HXRPort> makeOperand(String name, String uniqueKey) {
  return make<HXRPrimitiveInputPort>(std::move(name), std::move(uniqueKey), value::boolean(false));
}

constexpr OperatorsDescription kDescription{kOperators, operandsOf(makeOperand)};

}  // namespace

const HXRNodeClass HXRLogicNode::kClass{
    "HXRLogicNode",
    &HXRNode::kClass,
    {.defaultName = "Logic",
     .libraryCategory = "Logic",
     .processClassName = "PMRLogicPatch",
     .patchViewClassName = "HXOperatorPatchView",
     .defaultColor = &HXOperatorPatchColor},
    [](PatchDeclaration& patch) {
      patch.parameter("Operations", kCountKey, 1, 1, 100);
      patch.out("Result", "Tarn.resultOutput");
      patch.definition<HXRLogicNode>().trn_refreshPortsAndParameters();
    },
    constructPatch<HXRLogicNode>};

HXRLogicNode::HXRLogicNode(const HXRNodeClass& patchClass)
    : OperatorsNode(patchClass, kDescription) {}

String HXRStringForLogicOperator(std::uint64_t index) { return operatorText(kOperators, index); }

}  // namespace tarnkit
