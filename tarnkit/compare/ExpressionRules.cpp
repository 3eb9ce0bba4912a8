#include <fmt/format.h>

#include <unordered_map>
#include <unordered_set>

#include "tarnkit/compare/CheckRules.h"
#include "tarnkit/compare/HXAddresses.h"
#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/MXMathStringTokenizer.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/patches/catalogue/math/HXRMathExpressionNode.h"
#include "tarnkit/patches/catalogue/utility/HXRJavascriptExpressionNode.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/text/ASCII.h"

namespace tarnkit::detail {

namespace {

using Code = HXFindingCode;
constexpr std::size_t kNoOffset = HXFinding::kNoOffset;

// The parameter as the document has it, so that an editor can show it; the node without one.
Object& placeOf(HXNode& node, const HXRParameter& description) {
  if (HXParameter* parameter = node.parameterForKey(description.uniqueKey())) return *parameter;
  return node;
}

HXRStringParameter* expressionOf(const CheckedNode& checked) {
  if (!checked.traits->isMathExpression) return nullptr;
  const auto* patch = as<HXRMathExpressionNode>(checked.node->patch().get());
  return patch ? patch->mathExpressionParameter() : nullptr;
}

HXRJavascriptExpressionNode* scriptPatchOf(const CheckedNode& checked) {
  if (!checked.traits->isScript) return nullptr;
  return as<HXRJavascriptExpressionNode>(checked.node->patch().get());
}

std::string lowercased(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = lowerCaseOf(c);
  return lower;
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

std::size_t unmatchedParenthesis(std::string_view text) {
  std::vector<std::size_t> open;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '(') open.push_back(at);
    if (text[at] != ')') continue;
    if (open.empty()) return at;
    open.pop_back();
  }
  return open.empty() ? kNoOffset : open.back();
}

// The engine reads a parenthesis too many as a function of that name, which is no help to anybody.
Ref<MXExpression> parse(std::string_view text, MXError& error) {
  auto expression = MXExpression::expressionFromString(text, &error);
  if (!expression) return expression;
  const auto unmatched = unmatchedParenthesis(text);
  if (unmatched == kNoOffset) return expression;
  error = MXError(MXErrorCode::imbalancedParentheses, "imbalanced parentheses");
  error.setPlace(unmatched, 1);
  return nullptr;
}

// Characters as people count them, but for those that are put together of several.
std::size_t characterAt(std::string_view text, std::size_t offset) {
  std::size_t count = 1;
  for (const char c : text.substr(0, offset)) {
    if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80U) ++count;
  }
  return count;
}

void addAt(CheckReport& report, Code code, const CheckedNode& checked,
           const HXRStringParameter& parameter, std::string sentence,
           std::size_t offset = kNoOffset) {
  if (offset != kNoOffset) {
    sentence += fmt::format(", at character {}", characterAt(parameter.value().view(), offset));
  }
  report.add(code, placeOf(*checked.node, parameter), std::move(sentence)).offset = offset;
}

// Evaluated with any value for every variable: what fails then fails with all values.
const ExpressionFacts& factsOf(CheckReport& report, const CheckedNode& checked,
                               const HXRStringParameter& parameter) {
  ExpressionFacts& facts = report.expression();
  if (facts.node == checked.node) return facts;
  facts = {};
  facts.node = checked.node;
  const std::string_view text = parameter.value().view();
  const auto expression = parse(text, facts.parsing);
  if (!expression) return facts;
  facts.parses = true;
  MXError error;
  MXSubstitutions values;
  for (const String& name : MXMathStringTokenizer::variableNames(text, &error)) {
    facts.hasVariables = true;
    values.set(name, Number::withDouble(1));
  }
  MXMathEvaluator::defaultMathEvaluator()->evaluateExpression(*expression, values,
                                                              &facts.evaluation);
  return facts;
}

void findSyntax(CheckReport& report, const CheckedNode& checked) {
  const auto* parameter = expressionOf(checked);
  if (!parameter || isBlank(parameter->value().view())) return;
  const ExpressionFacts& facts = factsOf(report, checked, *parameter);
  if (facts.parses) return;
  addAt(report, Code::expressionSyntax, checked, *parameter,
        "the expression does not parse: " + facts.parsing.localizedDescription(),
        facts.parsing.offset());
}

void findFunction(CheckReport& report, const CheckedNode& checked) {
  const auto* parameter = expressionOf(checked);
  if (!parameter) return;
  const MXError& error = factsOf(report, checked, *parameter).evaluation;
  const String* name = error.userInfo().find(MXUnknownFunctionKey);
  if (!name) return;
  addAt(report, Code::expressionFunction, checked, *parameter,
        fmt::format("there is no function \"{}\"", HXAddresses::escaped(name->view())),
        error.offset());
}

void findArguments(CheckReport& report, const CheckedNode& checked) {
  const auto* parameter = expressionOf(checked);
  if (!parameter) return;
  const MXError& error = factsOf(report, checked, *parameter).evaluation;
  // The bounds of random() may be right for other values.
  if (error.code() != MXErrorCode::invalidArgument ||
      error.localizedDescription().find("bound") != std::string::npos) {
    return;
  }
  addAt(report, Code::expressionArguments, checked, *parameter,
        "the expression has no value: " + error.localizedDescription(), error.offset());
}

void findNames(CheckReport& report, const CheckedNode& checked) {
  const auto* parameter = expressionOf(checked);
  if (!parameter) return;
  std::unordered_map<std::string, std::string> variables;  // by their names in lower case
  std::unordered_set<std::string> functions, told;
  const auto tell = [&](const std::string& name, std::string sentence) {
    if (told.insert(name).second) {
      addAt(report, Code::expressionNames, checked, *parameter, std::move(sentence));
    }
  };
  MXError error;
  const auto visit = [&](const MXTokenText& token) {
    const std::string name(token.token);
    const std::string lower = lowercased(name);
    if (token.type == MXTokenType::function) functions.insert(lower);
    if (token.type != MXTokenType::variable) return;
    const auto [known, isNew] = variables.try_emplace(lower, name);
    if (isNew || known->second == name) return;
    tell(lower, fmt::format("\"${}\" and \"${}\" are two variables",
                            HXAddresses::escaped(known->second), HXAddresses::escaped(name)));
  };
  if (!MXMathStringTokenizer::eachToken(parameter->value().view(), visit, &error)) return;
  for (const auto& variable : variables) {
    if (!functions.contains(variable.first)) continue;
    tell(variable.first,
         fmt::format("\"{}\" is called as a function, and \"${}\" is a variable",
                     HXAddresses::escaped(variable.first), HXAddresses::escaped(variable.second)));
  }
}

void findEmpty(CheckReport& report, const CheckedNode& checked) {
  const auto* parameter = expressionOf(checked);
  if (!parameter || !isBlank(parameter->value().view())) return;
  addAt(report, Code::expressionEmpty, checked, *parameter, "the expression is empty");
}

void findConstant(CheckReport& report, const CheckedNode& checked) {
  const auto* parameter = expressionOf(checked);
  if (!parameter || isBlank(parameter->value().view())) return;
  const ExpressionFacts& facts = factsOf(report, checked, *parameter);
  if (facts.hasVariables || !facts.parses) return;
  addAt(report, Code::expressionConstant, checked, *parameter,
        "the expression has no variables, and always the same value");
}

// "function expression(", in any case and with any blanks, as the device looks for it.
bool hasFunction(std::string_view script) {
  const std::string text = lowercased(script);
  const auto skipBlanks = [&](std::size_t from) {
    const auto found = text.find_first_not_of(" \t\r\n\v\f", from);
    return found == std::string::npos ? text.size() : found;
  };
  constexpr std::string_view kFunction = "function", kName = "expression";
  for (auto at = text.find(kFunction); at != std::string::npos; at = text.find(kFunction, at + 1)) {
    const auto behind = at + kFunction.size();
    const auto name = skipBlanks(behind);
    if (name == behind || text.compare(name, kName.size(), kName) != 0) continue;
    const auto parenthesis = skipBlanks(name + kName.size());
    if (parenthesis < text.size() && text[parenthesis] == '(') return true;
  }
  return false;
}

void findNoFunction(CheckReport& report, const CheckedNode& checked) {
  const auto* patch = scriptPatchOf(checked);
  const auto* script = patch ? patch->javascriptExpressionParameter() : nullptr;
  if (!script || hasFunction(script->value().view())) return;
  addAt(report, Code::scriptFunction, checked, *script,
        "the script has no function \"expression\"");
}

void findScriptNames(CheckReport& report, const CheckedNode& checked) {
  const auto* patch = scriptPatchOf(checked);
  const auto* names = patch ? patch->inputVariablesParameter() : nullptr;
  const auto* script = patch ? patch->javascriptExpressionParameter() : nullptr;
  if (!names || !script) return;
  constexpr std::string_view kSeparator = ", ";
  std::unordered_set<std::string_view> met, told;
  std::string_view rest = names->value().view();
  while (!rest.empty()) {
    const auto end = rest.find(kSeparator);
    const std::string_view name = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 2);
    if (met.insert(name).second || !told.insert(name).second) continue;
    addAt(report, Code::scriptNames, checked, *script,
          fmt::format("the argument \"{}\" is named twice", HXAddresses::escaped(name)));
  }
}

constexpr CheckRule<const CheckedNode> kNodes[] = {
    {Code::expressionSyntax, findSyntax},       {Code::expressionFunction, findFunction},
    {Code::expressionArguments, findArguments}, {Code::expressionNames, findNames},
    {Code::expressionEmpty, findEmpty},         {Code::expressionConstant, findConstant},
    {Code::scriptFunction, findNoFunction},     {Code::scriptNames, findScriptNames},
};

}  // namespace

constinit const CheckRules kExpressionRules{.nodes = kNodes};

}  // namespace tarnkit::detail
