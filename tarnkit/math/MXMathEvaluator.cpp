#include "tarnkit/math/MXMathEvaluator.h"

#include <fmt/format.h>

#include <algorithm>

#include "tarnkit/math/HostFunction.h"
#include "tarnkit/math/MXExpressionRewriter.h"
#include "tarnkit/math/MXFunctionEvaluator.h"
#include "tarnkit/math/MXFunctionExpression.h"
#include "tarnkit/math/MXParser.h"
#include "tarnkit/math/MXPrecisionFunctionEvaluator.h"
#include "tarnkit/math/MathText.h"
#include "tarnkit/math/OnePassParser.h"
#include "tarnkit/math/PreparedTree.h"
#include "tarnkit/math/RandomNumbers.h"
#include "tarnkit/math/TreeEvaluation.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class MXMathEvaluator::kClass{"MXMathEvaluator", &Object::kClass};

namespace {

struct Alias {
  const char* name;
  const char* function;
};
constexpr Alias kStandardAliases[] = {
    {"avg", "average"}, {"mean", "average"}, {"trunc", "floor"},     {"modulo", "mod"},
    {"\u03C0", "pi"},   {"tau_2", "pi"},     {"\u03C4", "tau"},      {"\u03D5", "phi"},
    {"vers", "versin"}, {"ver", "versin"},   {"vercos", "vercosin"}, {"cvs", "coversin"},
    {"chord", "crd"},
};

// An operator that nothing computes, as a parenthesis too many is one, has no name in the text.
void placeOperator(MXError& error, MXMathStringTokenizer& tokenizer) {
  const String* const name = error.userInfo().find(MXUnknownFunctionKey);
  if (!name) return;
  std::size_t open = 0;
  tokenizer.reset();
  while (const auto token = tokenizer.nextObject()) {
    const String function = token->operatorFunction();
    if (function == MXOperatorParenthesisOpen) ++open;
    if (function == MXOperatorParenthesisClose && open > 0) {
      --open;
    } else if (token->tokenType() == MXTokenType::op && function == *name) {
      return error.setPlace(token->offset(), token->length());
    }
  }
}

}  // namespace

const Ref<MXMathEvaluator>& MXMathEvaluator::defaultMathEvaluator() {
  static const auto shared = make<MXMathEvaluator>();
  return shared;
}

MXMathEvaluator::MXMathEvaluator()
    : functionEvaluator_(make<detail::MXFunctionEvaluator>(this)),
      operatorSet_(MXMathOperatorSet::defaultOperatorSet()),
      resolvers_(std::make_unique<Resolvers>()),
      randomNumbers_(std::make_unique<detail::RandomNumbers>()) {
  for (const Alias& alias : kStandardAliases) {
    addAlias(String::interned(alias.name), String::interned(alias.function));
  }
}

MXMathEvaluator::~MXMathEvaluator() = default;

bool MXMathEvaluator::registerFunction(MXMathFunction function, const String& forName) {
  return function &&
         enter(forName,
               {nullptr, std::make_shared<const MXMathFunction>(std::move(function)), nullptr});
}

bool MXMathEvaluator::registerNumberFunction(MXNumberFunction function, const String& forName) {
  if (!function) return false;
  const String name = detail::lowerCase(forName);
  return enter(name, {nullptr, nullptr,
                      std::make_shared<const detail::HostFunction>(
                          detail::HostFunction{name, std::move(function)})});
}

bool MXMathEvaluator::addAlias(const String& alias, const String& forFunctionName) {
  return !forFunctionName.isNil() &&
         enter(alias, {detail::lowerCase(forFunctionName), nullptr, nullptr});
}

bool MXMathEvaluator::enter(const String& name, RegisteredFunction function) {
  const String lower = detail::lowerCase(name);
  if (lower.isNil() || detail::MXFunctionEvaluator::isStandardFunction(lower) ||
      functionMap_.contains(lower)) {
    return false;
  }
  functionMap_.set(lower, std::move(function));
  return true;
}

void MXMathEvaluator::unregisterFunctionWithName(const String& name) {
  functionMap_.take(detail::lowerCase(name));
}

std::vector<String> MXMathEvaluator::registeredFunctions() const {
  std::vector<String> names = detail::MXFunctionEvaluator::standardFunctions();
  for (const auto& entry : functionMap_) names.push_back(entry.key);
  std::sort(names.begin(), names.end());
  return names;
}

void MXMathEvaluator::setOperatorSet(const Ref<MXMathOperatorSet>& operatorSet) {
  operatorSet_ = operatorSet ? operatorSet : MXMathOperatorSet::defaultOperatorSet();
}

void MXMathEvaluator::setUsesHighPrecisionEvaluation(bool uses) {
  if (uses == usesHighPrecisionEvaluation()) return;
  if (uses) {
    functionEvaluator_ = make<detail::MXPrecisionFunctionEvaluator>(this);
  } else {
    functionEvaluator_ = make<detail::MXFunctionEvaluator>(this);
  }
  computesInDoubles_ = functionEvaluator_->computesInDoubles();
}

std::optional<MXNumber> MXMathEvaluator::evaluateString(std::string_view string,
                                                        const MXSubstitutions& substitutions,
                                                        MXError* error) const {
  std::string storage;
  std::string_view text = string;
  if (detail::prepareText(text, storage)) {
    detail::TreeBuilder tree(text);
    tree.setTextIsSource(text.data() == string.data());
    if (detail::OnePassParser(text, operatorSet_->table(), tree).parse()) {
      double value = 0;
      const auto view = tree.view();
      if (view.root > 0 && computesInDoubles_ && tree.summary().isPlain &&
          detail::evaluatePlainTree(view, tree.summary().stackDepth, substitutions,
                                    angleMode_ == MXAngleMeasurementMode::degrees, value)) {
        return value;
      }
      // A variable alone makes an expression without a text, and leaves the tree where it is.
      const bool isVariable = view.top().kind == detail::NodeKind::variable;
      auto other =
          evaluateExpression(*MXExpression::expressionWithTree(tree), substitutions, error);
      if (!other && error && isVariable && tree.isTextSource()) {
        detail::placeError(*error, view, view.top());
      }
      return other;
    }
  }
  const auto tokenizer = MXMathStringTokenizer::tokenizerWithString(string, operatorSet_, error);
  const auto parser = MXParser::parserWithTokenizer(tokenizer, error);
  const auto expression = parser ? parser->parsedExpressionWithError(error) : nullptr;
  if (!expression) return std::nullopt;
  auto value = evaluateExpression(*expression, substitutions, error);
  if (!value && error && !error->hasPlace()) placeOperator(*error, *tokenizer);
  return value;
}

std::optional<MXNumber> MXMathEvaluator::evaluateString(
    std::string_view string, const MXSubstitutions& substitutions) const {
  MXError error;
  auto value = evaluateString(string, substitutions, &error);
  if (!value) Log::line(fmt::format("error: {}", error.localizedDescription()));
  return value;
}

std::optional<MXNumber> MXMathEvaluator::evaluateExpression(const MXExpression& expression,
                                                            const MXSubstitutions& substitutions,
                                                            MXError* error) const {
  if (computesInDoubles_ && expression.isMemberOf(detail::MXFunctionExpression::kClass)) {
    const auto& function = static_cast<const detail::MXFunctionExpression&>(expression);
    double value = 0;
    const auto* ready = function.readyTree(static_cast<std::size_t>(angleMode_));
    if (ready && ready->evaluate(substitutions, value)) return value;
    const auto& tree = function.tree();
    const auto view = tree.view(function.root());
    // A percentage that is the root asks the function that holds it.
    if (tree.summary.isPlain && !view.top().isFunction(detail::Builtin::percent)) {
      const auto* prepared = function.preparedTree(*this);
      const bool isDone = prepared ? prepared->evaluate(substitutions, value)
                                   : detail::evaluatePlainTree(
                                         view, tree.summary.stackDepth, substitutions,
                                         angleMode_ == MXAngleMeasurementMode::degrees, value);
      if (isDone) return value;
    }
  }
  return detail::TreeEvaluation(*this, substitutions, error).evaluate(expression);
}

Ref<MXExpression> MXMathEvaluator::expressionByRewritingExpression(
    const Ref<MXExpression>& expression) const {
  return MXExpressionRewriter::defaultRewriter()->expressionByRewritingExpression(expression,
                                                                                  *this);
}

void MXMathEvaluator::addRewriteRule(const String& replacement,
                                     const String& forExpressionsMatchingTemplate,
                                     const String& condition) {
  MXExpressionRewriter::defaultRewriter()->addRewriteRule(
      replacement, forExpressionsMatchingTemplate, condition);
}

void MXMathEvaluator::seedRandomNumbers(std::uint64_t seed) { randomNumbers_->seed(seed); }

double MXMathEvaluator::randomNumber(std::uint32_t lower, std::uint32_t upper) {
  return static_cast<double>(randomNumbers_->between(lower, upper));
}

}  // namespace tarnkit
