#include "tarnkit/patches/catalogue/math/HXRMathExpressionNode.h"

#include <algorithm>

#include "tarnkit/math/MXMathStringTokenizer.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/math/FirstOccurrences.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

namespace {

constexpr const char* kExpressionKey = "Tarn.mathExpressionParameter";

Ref<HXRPort> makeVariable(String name, String uniqueKey) {
  return make<HXRPrimitiveInputPort>(std::move(name), std::move(uniqueKey), value::number(0));
}

constexpr NamedInputs kVariables{"Variables", "Tarn.{}Input", makeVariable};

}  // namespace

const HXRNodeClass HXRMathExpressionNode::kClass{
    "HXRMathExpressionNode",
    &HXRNode::kClass,
    {.defaultName = "Math Expression",
     .libraryCategory = "Math",
     .processClassName = "PMRMathExpressionPatch"},
    [](PatchDeclaration& patch) {
      patch.parameter("Expression", kExpressionKey, "$a + $b");
      patch.definition<HXRMathExpressionNode>().trn_refreshPorts();
      patch.out("Result", "Tarn.resultOutput");
    },
    constructPatch<HXRMathExpressionNode>};

std::vector<String> HXRMathExpressionNode::trn_variablesForExpression(const String& expression) {
  MXError error;
  const auto names = MXMathStringTokenizer::variableNames(expression, &error);
  if (error) {
    Log::warning("HXRMathExpression", error.localizedDescription());
    return {};
  }
  const auto positions = detail::firstOccurrences(expression, names);
  std::vector<std::size_t> order(names.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return positions[a] < positions[b]; });
  std::vector<String> sorted;
  sorted.reserve(names.size());
  for (const auto i : order) sorted.push_back(names[i]);
  return sorted;
}

HXRMathExpressionNode::HXRMathExpressionNode(const HXRNodeClass& patchClass)
    : NamedInputsNode(patchClass, kVariables) {}

HXRStringParameter* HXRMathExpressionNode::mathExpressionParameter() const {
  return as<HXRStringParameter>(parameterForKey(kExpressionKey));
}

void HXRMathExpressionNode::trn_refreshPorts() {
  const auto* const expression = mathExpressionParameter();
  if (expression) refreshInputs(trn_variablesForExpression(expression->value()));
}

void HXRMathExpressionNode::parameterValueDidChange(HXRParameter& parameter) {
  if (&parameter == mathExpressionParameter()) trn_refreshPorts();
}

}  // namespace tarnkit
