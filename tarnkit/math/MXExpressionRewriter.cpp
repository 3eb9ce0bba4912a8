#include "tarnkit/math/MXExpressionRewriter.h"

#include "tarnkit/math/MXRewriteRule.h"
#include "tarnkit/math/RewritePass.h"
#include "tarnkit/math/TreeOperations.h"
#include "tarnkit/math/TreeSimplification.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class MXExpressionRewriter::kClass{"MXExpressionRewriter", &Object::kClass};

namespace {

struct BuiltinRule {
  const char* match;
  const char* replacement;
  const char* condition;
};
constexpr BuiltinRule kRules[] = {
    {"0 + __exp1", "__exp1", nullptr},
    {"__exp1 + 0", "__exp1", nullptr},
    {"__exp1 + __exp1", "2 * __exp1", nullptr},
    {"__exp1 - __exp1", "0", nullptr},
    {"1 * __exp1", "__exp1", nullptr},
    {"__exp1 * 1", "__exp1", nullptr},
    {"__exp1 * __exp1", "__exp1 ** 2", nullptr},
    {"__num1 * __var1", "__var1 * __num1", nullptr},
    {"0 * __exp1", "0", nullptr},
    {"__exp1 * 0", "0", nullptr},
    {"--__exp1", "__exp1", nullptr},
    {"abs(-__exp1)", "abs(__exp1)", nullptr},
    {"exp(__exp1) * exp(__exp2)", "exp(__exp1 + __exp2)", nullptr},
    {"(__exp1 ** __exp3) * (__exp2 ** __exp3)", "(__exp1 * __exp2) ** __exp3", nullptr},
    {"__exp1 ** 0", "1", nullptr},
    {"__exp1 ** 1", "__exp1", nullptr},
    {"sqrt(__exp1 ** 2)", "abs(__exp1)", nullptr},
    {"dtor(rtod(__exp1))", "__exp1", nullptr},
    {"rtod(dtor(__exp1))", "__exp1", nullptr},
    {"__exp1 / __exp1", "1", "__exp1 != 0"},
    {"(__exp1 * __exp2) / __exp2", "__exp1", "__exp2 != 0"},
    {"(__exp2 * __exp1) / __exp2", "__exp1", "__exp2 != 0"},
    {"__exp2 / (__exp2 * __exp1)", "1/__exp1", "__exp2 != 0"},
    {"__exp2 / (__exp1 * __exp2)", "1/__exp1", "__exp2 != 0"},
    {"nthroot(pow(__exp1, __exp2), __exp2)", "abs(__exp1)", "__exp2 % 2 == 0"},
    {"nthroot(pow(__exp1, __exp2), __exp2)", "__exp1", "__exp2 % 2 == 1"},
    {"abs(__exp1)", "__exp1", "__exp1 >= 0"},
};

}  // namespace

MXExpressionRewriter::~MXExpressionRewriter() = default;

const Ref<MXExpressionRewriter>& MXExpressionRewriter::defaultRewriter() {
  static const auto shared = [] {
    auto rewriter = make<MXExpressionRewriter>();
    for (const BuiltinRule& rule : kRules) {
      rewriter->addRewriteRule(rule.replacement, rule.match, rule.condition);
    }
    return rewriter;
  }();
  return shared;
}

void MXExpressionRewriter::addRewriteRule(const String& replacement,
                                          const String& forExpressionsMatchingTemplate,
                                          const String& condition) {
  auto rule = detail::MXRewriteRule::rewriteRuleWithTemplate(forExpressionsMatchingTemplate,
                                                             replacement, condition);
  if (rule) rules_.push_back(std::move(rule));
}

Ref<MXExpression> MXExpressionRewriter::expressionByRewritingExpression(
    const Ref<MXExpression>& expression, const MXMathEvaluator& evaluator) const {
  if (!expression) return nullptr;
  detail::ExpressionNode storage;
  detail::TreeBuilder builders[3];
  detail::TreeBuilder* before = &builders[0];  // as the pass found it
  detail::TreeBuilder* current = &builders[1];
  detail::TreeBuilder* next = &builders[2];
  before->addCopy(expression->view(storage));
  const std::uint64_t originalCount = before->count();
  bool everChanged = false;
  for (int pass = 0; pass < kMaximumPasses; ++pass) {
    current->clear();
    const bool isRoot = pass == 0;
    bool changed = detail::TreeSimplification(before->view(), isRoot ? expression.get() : nullptr,
                                              evaluator, *current)
                       .run();
    for (const auto& rule : rules_) {
      next->clear();
      if (!detail::RewritePass(*current, evaluator).apply(*rule, *next)) continue;
      std::swap(current, next);
      changed = true;
    }
    if (!changed || detail::treesEqual(before->view(), current->view())) {
      return everChanged ? MXExpression::expressionWithTree(*before) : expression;
    }
    everChanged = true;
    std::swap(before, current);
    if (before->count() > originalCount + kMaximumGrowth) break;
  }
  Log::line("ABORT: replacement limit reached");
  return MXExpression::expressionWithTree(*before);
}

}  // namespace tarnkit
