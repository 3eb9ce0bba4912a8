#include "tarnkit/patches/catalogue/utility/HXRJavascriptExpressionNode.h"

#include <vector>

#include "tarnkit/foundation/StringTrimming.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/CountedPorts.h"
#include "tarnkit/patches/catalogue/utility/ScriptSignature.h"
#include "tarnkit/platform/system/Log.h"
#include "tarnkit/platform/text/CharacterSet.h"

namespace tarnkit {

namespace {

constexpr const char* kExpressionKey = "Tarn.javascriptExpressionParameter";
constexpr const char* kVariablesKey = "Tarn.inputVariablesParameter";
constexpr std::string_view kSeparator = ", ";
constexpr const char* kDefaultScript =
    "function expression() {\n"
    "    return \"Hello World!\";\n"
    "}\n";

// The lower-case "input" is what the device knows.
constexpr NamedInputs kVariables{"Variables", "Tarn.{}input", makePortOf<HXRValueInputPort>};

/// Calls `visit` with what stands between the separators.
template <class Visit>
void split(std::string_view text, std::string_view separator, Visit visit) {
  for (;;) {
    const auto end = text.find(separator);
    visit(text.substr(0, end));
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + separator.size());
  }
}

String joinedNames(const String& signature) {
  const auto& blank = CharacterSet::whitespaceAndNewline();
  std::string joined;
  split(signature, ",", [&](std::string_view piece) {
    const String name = stringByTrimmingTrailingCharactersInSet(
        stringByTrimmingLeadingCharactersInSet(String(piece), blank), blank);
    if (!name) return;
    if (!joined.empty()) joined += kSeparator;
    joined += name.view();
  });
  return String(joined);
}

}  // namespace

const HXRNodeClass HXRJavascriptExpressionNode::kClass{
    "HXRJavascriptExpressionNode",
    &HXRNode::kClass,
    {.defaultName = "JavaScript Expression",
     .libraryCategory = "Utility",
     .processClassName = "PMRJavascriptExpressionPatch"},
    [](PatchDeclaration& patch) {
      patch.parameter("Expression", kExpressionKey, kDefaultScript, 1);
      patch.parameter("Variables", kVariablesKey, nullptr, 0, true);
      patch.out<HXRValueOutputPort>("Result", "Tarn.resultOutput");
      patch.out<HXRValueOutputPort>("Error", "Tarn.errorOutput");
    },
    constructPatch<HXRJavascriptExpressionNode>};

HXRJavascriptExpressionNode::HXRJavascriptExpressionNode(const HXRNodeClass& patchClass)
    : NamedInputsNode(patchClass, kVariables) {}

HXRStringParameter* HXRJavascriptExpressionNode::javascriptExpressionParameter() const {
  return as<HXRStringParameter>(parameterForKey(kExpressionKey));
}

HXRStringParameter* HXRJavascriptExpressionNode::inputVariablesParameter() const {
  return as<HXRStringParameter>(parameterForKey(kVariablesKey));
}

std::vector<Ref<HXRValueInputPort>> HXRJavascriptExpressionNode::inputPorts() {
  std::vector<Ref<HXRValueInputPort>> ports;
  for (const auto& [name, port] : inputsByName()) {
    if (auto input = as<HXRValueInputPort>(port)) ports.push_back(std::move(input));
  }
  return ports;
}

void HXRJavascriptExpressionNode::parameterValueDidChange(HXRParameter& parameter) {
  if (&parameter == javascriptExpressionParameter()) {
    readSignature(javascriptExpressionParameter()->value());
  } else if (&parameter == inputVariablesParameter()) {
    readVariables(inputVariablesParameter()->value());
  }
}

void HXRJavascriptExpressionNode::readSignature(const String& script) {
  const Ref<HXRStringParameter> variables(inputVariablesParameter());
  if (!variables) return;
  const String signature = detail::scriptSignature(script);
  if (signature.isNil()) {
    Log::line("No function found.");
    variables->setValue(String::interned(""));
  } else {
    variables->setValue(joinedNames(signature));
  }
}

void HXRJavascriptExpressionNode::readVariables(const String& variables) {
  std::vector<String> names;
  if (variables) {
    split(variables, kSeparator, [&](std::string_view piece) { names.emplace_back(piece); });
  }
  refreshInputs(names);
}

}  // namespace tarnkit
