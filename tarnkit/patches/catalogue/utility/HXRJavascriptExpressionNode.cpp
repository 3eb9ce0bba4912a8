#include "tarnkit/patches/catalogue/utility/HXRJavascriptExpressionNode.h"

#include <fmt/format.h>

#include <unordered_set>
#include <vector>

#include "tarnkit/foundation/StringTrimming.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/utility/ScriptSignature.h"
#include "tarnkit/platform/CharacterSet.h"
#include "tarnkit/platform/Log.h"

namespace tarnkit {

namespace {

constexpr const char* kExpressionKey = "Tarn.javascriptExpressionParameter";
constexpr const char* kVariablesKey = "Tarn.inputVariablesParameter";
constexpr const char* kVariablesGroup = "Variables";
constexpr std::string_view kSeparator = ", ";
constexpr const char* kDefaultScript =
    "function expression() {\n"
    "    return \"Hello World!\";\n"
    "}\n";

// The lower-case "input" is what the device knows.
String keyForVariable(const String& name) {
  return String(fmt::format("Tarn.{}input", name.view()));
}

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

void HXRJavascriptExpressionNode::parameterValueDidChange(HXRParameter& parameter) {
  if (&parameter == parameterForKey(kExpressionKey)) {
    readSignature(static_cast<HXRStringParameter&>(parameter).value());
  } else if (&parameter == parameterForKey(kVariablesKey)) {
    const String variables = static_cast<HXRStringParameter&>(parameter).value();
    rebuild([&] { refreshInputs(variables); });
  }
}

void HXRJavascriptExpressionNode::readSignature(const String& script) {
  const Ref<HXRStringParameter> variables(as<HXRStringParameter>(parameterForKey(kVariablesKey)));
  if (!variables) return;
  const String signature = detail::scriptSignature(script);
  if (signature.isNil()) {
    Log::line("No function found.");
    variables->setValue(String::interned(""));
  } else {
    variables->setValue(joinedNames(signature));
  }
}

void HXRJavascriptExpressionNode::refreshInputs(const String& variables) {
  std::vector<String> names;
  std::unordered_set<String> wanted;
  if (variables) {
    split(variables, kSeparator, [&](std::string_view piece) {
      String name(piece);
      if (wanted.insert(name).second) names.push_back(std::move(name));
    });
  }
  const String group = String::interned(kVariablesGroup);
  std::vector<String> goneKeys;
  if (const auto* const inputs = portLayout().inputs().portGroupForKey(group)) {
    for (const Ref<Object>& member : inputs->ports()) {
      const auto& port = static_cast<const HXRPort&>(*member);
      if (wanted.erase(port.name()) == 0) goneKeys.push_back(port.uniqueKey());
    }
  }
  // The editor node announces every step; an observer that changes the names meanwhile has them
  // refreshed, and this refresh is then of the past.
  const auto current = ++refreshes_;
  for (const String& key : goneKeys) {
    if (current != refreshes_) return;
    if (auto* const port = portForKey(key)) removePort(*port);
  }
  for (const String& name : names) {
    if (current != refreshes_) return;
    if (!wanted.contains(name)) continue;
    addPort(*make<HXRValueInputPort>(name, keyForVariable(name)), group);
  }
}

}  // namespace tarnkit
