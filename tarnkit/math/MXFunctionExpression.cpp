#include "tarnkit/math/MXFunctionExpression.h"

#include <algorithm>
#include <memory>

#include "tarnkit/math/MXNumberExpression.h"
#include "tarnkit/math/MXVariableExpression.h"
#include "tarnkit/math/MathText.h"
#include "tarnkit/math/TreeBuilder.h"
#include "tarnkit/math/TreeOperations.h"
#include "tarnkit/math/TreeSimplification.h"
#include "tarnkit/platform/Coder.h"

namespace tarnkit::detail {

const Class MXFunctionExpression::kClass{"_MXFunctionExpression", &MXExpression::kClass,
                                         &makeByDefault<MXFunctionExpression>};

namespace {
constexpr Symbol kFunctionKey("function");
constexpr Symbol kArgumentsKey("arguments");
}  // namespace

MXFunctionExpression::MXFunctionExpression(String function,
                                           const std::vector<Ref<MXExpression>>& arguments)
    : madeArguments_(new Arguments(arguments)),
      name_(function.isNil() ? String("") : std::move(function)) {
  for (const auto& argument : arguments) setParent(*argument, this);
}

// A block that was made from objects is owned through its address only.
MXFunctionExpression::~MXFunctionExpression() {
  delete madeArguments_.load(std::memory_order_acquire);
  const auto* made = madeTree_.load(std::memory_order_acquire);
  if (made && made != tree_.get()) releaseObject(made);
}

String MXFunctionExpression::nameAsWritten() const {
  if (!name_.isNil()) return name_;
  const TreeView view = tree_->view(root_);
  return String(view.name(view.top()));
}

String MXFunctionExpression::function() const {
  if (name_.isNil()) {
    const TreeView view = tree_->view(root_);
    const Builtin builtin = view.top().builtin;
    if (builtin != Builtin::none) return String::interned(builtinFunction(builtin).name);
  }
  return lowerCase(nameAsWritten());
}

const std::vector<Ref<MXExpression>>& MXFunctionExpression::arguments() const {
  const auto* made = madeArguments_.load(std::memory_order_acquire);
  if (made) return *made;
  const ExpressionNode* const nodes = tree_->nodes();
  auto fresh = std::make_unique<Arguments>(nodes[root_].argumentCount);
  std::uint32_t child = root_ - 1;
  for (std::size_t i = fresh->size(); i-- > 0;) {
    (*fresh)[i] = expressionAt(child);
    setParent(*(*fresh)[i], const_cast<MXFunctionExpression*>(this));
    child -= nodes[child].size;
  }
  if (madeArguments_.compare_exchange_strong(made, fresh.get(), std::memory_order_acq_rel)) {
    return *fresh.release();
  }
  return *made;
}

Ref<MXExpression> MXFunctionExpression::expressionAt(std::uint32_t index) const {
  const TreeView view = tree_->view(index);
  switch (view.top().kind) {
    case NodeKind::number:
      return make<MXNumberExpression>(view.number(view.top()));
    case NodeKind::variable:
      return make<MXVariableExpression>(tree_->variableName(view.top()));
    case NodeKind::function:
      break;
  }
  return make<MXFunctionExpression>(tree_, index);
}

const ExpressionTree& MXFunctionExpression::tree() const {
  const auto* made = madeTree_.load(std::memory_order_acquire);
  return made ? *made : *makeTree();
}

const ExpressionTree* MXFunctionExpression::makeTree() const {
  struct Step {
    const MXExpression* expression;
    bool closes;
    std::uint32_t firstNode;
  };
  TreeBuilder builder;
  std::vector<Step> steps{{this, false, 0}};
  while (!steps.empty()) {
    const Step step = steps.back();
    steps.pop_back();
    const auto* function = as<MXFunctionExpression>(step.expression);
    if (step.closes) {
      const auto name = function->name_.view();
      builder.addNamed(builtinNamed(name), name,
                       static_cast<std::uint32_t>(function->arguments().size()),
                       builder.count() - step.firstNode);
    } else if (!function || function->madeTree_.load(std::memory_order_acquire)) {
      ExpressionNode storage;
      builder.addCopy(step.expression->view(storage));
    } else {
      steps.push_back({function, true, builder.count()});
      const auto& arguments = function->arguments();
      for (auto at = arguments.rbegin(); at != arguments.rend(); ++at) {
        steps.push_back({at->get(), false, 0});
      }
    }
  }
  Ref<ExpressionTree> fresh = builder.finish();
  const ExpressionTree* expected = nullptr;
  if (madeTree_.compare_exchange_strong(expected, fresh.get(), std::memory_order_acq_rel)) {
    return fresh.leak();
  }
  return expected;
}

TreeView MXFunctionExpression::view(ExpressionNode&) const { return tree().view(root()); }

Ref<MXExpression> MXFunctionExpression::copy() const {
  ExpressionNode storage;
  TreeBuilder builder;
  builder.addCopy(view(storage));
  return expressionWithTree(builder);
}

Ref<MXExpression> MXFunctionExpression::simplifiedExpressionWithEvaluator(
    const MXMathEvaluator* evaluator, MXError*) const {
  TreeBuilder builder;
  simplifyExpression(*this, evaluator, builder);
  return expressionWithTree(builder);
}

void MXFunctionExpression::encodeWithCoder(Encoder& coder) const {
  coder.encodeString(nameAsWritten(), kFunctionKey);
  coder.encodeList(arguments(), kArgumentsKey);
}

void MXFunctionExpression::initWithCoder(Decoder& coder) {
  name_ = coder.decodeString(kFunctionKey);
  if (name_.isNil()) {
    name_ = String("");
    coder.fail("a function expression without a function");
  }
  auto arguments = std::make_unique<Arguments>();
  coder.decodeEach<MXExpression>(kArgumentsKey, [&](const Ref<MXExpression>& argument) {
    if (hasParent(*argument)) {
      coder.fail("an expression that stands in two places");
      return;
    }
    setParent(*argument, this);
    arguments->push_back(argument);
  });
  madeArguments_.store(arguments.release(), std::memory_order_release);
}

void MXFunctionExpression::abandonDecoding() {
  delete madeArguments_.exchange(new Arguments, std::memory_order_acq_rel);
}

// Each expression is an argument of one function at most, so there is one way up; it goes round in
// a circle when it comes back to the milestone, which is moved ahead at growing distances.
void MXFunctionExpression::awakeAfterDecoding(Decoder& coder) {
  if (coder.failed()) return;
  std::vector<MXFunctionExpression*> way;
  const MXExpression* milestone = nullptr;
  std::size_t nextMilestone = 1;
  for (auto* at = this; at && !at->isPlaced_;
       at = as<MXFunctionExpression>(at->parentExpression().get())) {
    if (at == milestone) {
      coder.fail("an expression that is its own argument");
      return;
    }
    way.push_back(at);
    if (way.size() == nextMilestone) {
      milestone = at;
      nextMilestone *= 2;
    }
  }
  for (auto* const placed : way) placed->isPlaced_ = true;
}

}  // namespace tarnkit::detail
