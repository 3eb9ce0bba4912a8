#include "tarnkit/patches/catalogue/math/HXRMathExpressionNode.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>

#include "tarnkit/math/MXMathStringTokenizer.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/math/FirstOccurrences.h"
#include "tarnkit/platform/Log.h"

namespace tarnkit {

namespace {

constexpr const char* kExpressionKey = "Tarn.mathExpressionParameter";
constexpr const char* kVariablesGroup = "Variables";

String keyForVariable(const String& name) {
  return String(fmt::format("Tarn.{}Input", name.view()));
}

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

void HXRMathExpressionNode::trn_refreshPorts() {
  const auto* const expression = as<HXRStringParameter>(parameterForKey(kExpressionKey));
  if (!expression) return;
  rebuild([&] { refreshInputs(trn_variablesForExpression(expression->value())); });
}

void HXRMathExpressionNode::refreshInputs(const std::vector<String>& names) {
  const std::unordered_set<String> wanted(names.begin(), names.end());
  const String group = String::interned(kVariablesGroup);

  // The editor node announces every step; an observer that changes the expression meanwhile has it
  // refreshed, and this refresh is then of the past.
  const auto current = ++refreshes_;
  std::vector<String> goneKeys;
  if (const auto* const variables = portLayout().inputs().portGroupForKey(group)) {
    for (const Ref<Object>& member : variables->ports()) {
      const auto& port = static_cast<const HXRPort&>(*member);
      if (!wanted.contains(port.name())) goneKeys.push_back(port.uniqueKey());
    }
  }
  for (const String& key : goneKeys) {
    if (current != refreshes_) return;
    if (auto* const port = portForKey(key)) removePort(*port);
  }
  for (const String& name : names) {
    if (current != refreshes_) return;
    const String key = keyForVariable(name);
    if (portLayout().ports().contains(key)) continue;
    addPort(*make<HXRPrimitiveInputPort>(name, key, value::number(0)), group);
  }
}

void HXRMathExpressionNode::parameterValueDidChange(HXRParameter& parameter) {
  if (&parameter == parameterForKey(kExpressionKey)) trn_refreshPorts();
}

}  // namespace tarnkit
