#include "tarnkit/math/MXExpression.h"

#include <fmt/format.h>

#include <stdexcept>

#include "tarnkit/math/MXFunctionExpression.h"
#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/MXNumberExpression.h"
#include "tarnkit/math/MXParser.h"
#include "tarnkit/math/MXVariableExpression.h"
#include "tarnkit/math/MathText.h"
#include "tarnkit/math/OnePassParser.h"
#include "tarnkit/math/TreeOperations.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class MXExpression::kClass{"MXExpression", &Object::kClass};

namespace {

std::string notOverridden(const char* operation) {
  return fmt::format("this method should be overridden: {}", operation);
}

}  // namespace

Ref<MXExpression> MXExpression::expressionFromString(std::string_view string, MXError* error) {
  const auto& table = MXMathOperatorSet::defaultOperatorSet()->table();
  if (detail::isPlainText(string) && string.size() <= detail::kMaximumTextLength) {
    detail::TreeBuilder tree(string);
    if (detail::OnePassParser(string, table, tree).parse()) return expressionWithTree(tree);
  } else {
    std::string storage;
    std::string_view text = string;
    if (detail::prepareText(text, storage)) {
      detail::TreeBuilder tree(text);
      tree.setTextIsSource(text.data() == string.data());
      if (detail::OnePassParser(text, table, tree).parse()) return expressionWithTree(tree);
    }
  }
  const auto parser = MXParser::parserWithString(string, error);
  return parser ? parser->parsedExpressionWithError(error) : nullptr;
}

Ref<MXExpression> MXExpression::numberExpressionWithNumber(const MXNumber& number) {
  return make<detail::MXNumberExpression>(number);
}

Ref<MXExpression> MXExpression::variableExpressionWithVariable(const String& variable) {
  auto name = variable.view();
  if (!name.empty() && name.front() == '$') name.remove_prefix(1);
  if (name.empty()) return nullptr;
  return make<detail::MXVariableExpression>(name.size() == variable.size() ? variable
                                                                           : String(name));
}

Ref<MXExpression> MXExpression::functionExpressionWithFunctionOfObjects(
    const String& function, const std::vector<Ref<Object>>& arguments, MXError* error) {
  std::vector<Ref<MXExpression>> expressions;
  expressions.reserve(arguments.size());
  for (const auto& argument : arguments) expressions.push_back(as<MXExpression>(argument));
  return functionExpressionWithFunction(function, expressions, error);
}

Ref<MXExpression> MXExpression::functionExpressionWithFunction(
    const String& function, const std::vector<Ref<MXExpression>>& arguments, MXError* error) {
  for (const auto& argument : arguments) {
    if (argument) continue;
    MXError::set(error, MXErrorCode::invalidArgument,
                 "function arguments must be MXExpression objects");
    return nullptr;
  }
  return make<detail::MXFunctionExpression>(function, arguments);
}

Ref<MXExpression> MXExpression::expressionWithTree(detail::TreeBuilder& tree) {
  const auto view = tree.view();
  const auto& top = view.top();
  switch (top.kind) {
    case detail::NodeKind::number:
      return numberExpressionWithNumber(view.number(top));
    case detail::NodeKind::variable:
      return make<detail::MXVariableExpression>(String(view.slice(top)));
    case detail::NodeKind::function:
      break;
  }
  return detail::MXFunctionExpression::withTree(tree);
}

MXExpressionType MXExpression::expressionType() const {
  throw std::logic_error(notOverridden("expressionType"));
}
MXNumber MXExpression::number() const {
  throw std::logic_error("This is not a numeric expression");
}
String MXExpression::function() const {
  throw std::invalid_argument("This is not a function expression");
}
const std::vector<Ref<MXExpression>>& MXExpression::arguments() const {
  throw std::invalid_argument("This is not a function expression");
}
String MXExpression::variable() const {
  throw std::invalid_argument("This is not a variable expression");
}
Ref<MXExpression> MXExpression::copy() const {
  throw std::logic_error(notOverridden("copyWithZone:"));
}
Ref<MXExpression> MXExpression::simplifiedExpressionWithEvaluator(const MXMathEvaluator*,
                                                                  MXError*) const {
  throw std::invalid_argument(notOverridden("simplifiedExpressionWithEvaluator:error:"));
}
detail::TreeView MXExpression::view(detail::ExpressionNode&) const {
  throw std::logic_error(notOverridden("view"));
}

Ref<MXExpression> MXExpression::simplifiedExpression() const {
  MXError error;
  auto simplified = simplifiedExpressionWithEvaluator(nullptr, &error);
  if (!simplified) Log::line(fmt::format("error: {}", error.localizedDescription()));
  return simplified;
}

std::optional<MXNumber> MXExpression::evaluateWithSubstitutions(
    const MXSubstitutions& substitutions, const MXMathEvaluator* evaluator, MXError* error) const {
  if (!evaluator) return std::nullopt;
  return evaluator->evaluateExpression(*this, substitutions, error);
}

bool MXExpression::isEqual(const Object& other) const {
  if (this == &other) return true;
  const auto* expression = as<MXExpression>(&other);
  if (!expression) return false;
  detail::ExpressionNode mine;
  detail::ExpressionNode theirs;
  return detail::treesEqual(view(mine), expression->view(theirs));
}

std::uint64_t MXExpression::hash() const {
  detail::ExpressionNode storage;
  return detail::nodeHash(view(storage));
}

String MXExpression::description() const {
  detail::ExpressionNode storage;
  return String(detail::treeDescription(view(storage)));
}

}  // namespace tarnkit
