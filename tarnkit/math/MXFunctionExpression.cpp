#include "tarnkit/math/MXFunctionExpression.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/MXNumberExpression.h"
#include "tarnkit/math/MXVariableExpression.h"
#include "tarnkit/math/MathText.h"
#include "tarnkit/math/PreparedTree.h"
#include "tarnkit/math/TreeBuilder.h"
#include "tarnkit/math/TreeOperations.h"
#include "tarnkit/math/TreeSimplification.h"
#include "tarnkit/platform/coding/Coder.h"

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

MXFunctionExpression::MXFunctionExpression(const ExpressionTree& tree, std::uint32_t root,
                                           Ref<VariableNames> names)
    : madeTree_(&tree), names_(std::move(names)), root_(root), holding_(Holding::placeInBlock) {
  retainWeakly(ownerOf(&tree));
}

Ref<MXFunctionExpression> MXFunctionExpression::withTree(TreeBuilder& builder) {
  const TreeView from = builder.view();
  const auto text = builder.text();
  const auto moreText = builder.moreText();
  const std::size_t count = builder.count();
  const std::size_t textSize = text.size() + moreText.size();
  const bool isInPlace = builder.hasMemory();
  TreeMemory memory = isInPlace ? builder.takeMemory() : TreeMemory(count, textSize);
  ExpressionNode* const nodes = memory.nodes();
  if (!isInPlace) std::memcpy(nodes, from.nodes, count * sizeof(ExpressionNode));
  auto* characters = reinterpret_cast<char*>(nodes + count);
  if (!text.empty()) std::memcpy(characters, text.data(), text.size());
  if (!moreText.empty()) std::memcpy(characters + text.size(), moreText.data(), moreText.size());
  ExpressionNode& root = nodes[count - 1];
  root.flags = static_cast<std::uint16_t>(root.flags & ~ExpressionNode::kPercentOfFirst);
  auto* const tree = ::new (reinterpret_cast<ExpressionTree*>(nodes) - 1)
      ExpressionTree{static_cast<std::uint32_t>(count), builder.summary(),
                     builder.isTextSource() ? text.size() : 0};
  return Ref<MXFunctionExpression>::adopt(
      ::new (memory.release()) MXFunctionExpression(*tree, static_cast<std::uint32_t>(count - 1)));
}

MXFunctionExpression::~MXFunctionExpression() {
  delete madeArguments_.load(std::memory_order_acquire);
  for (const auto& prepared : preparedTrees_) delete prepared.load(std::memory_order_acquire);
  if (holding_ == Holding::block) return;
  const auto* tree = madeTree_.load(std::memory_order_acquire);
  if (!tree) return;
  if (holding_ == Holding::objects) {
    releaseObject(ownerOf(tree));
  } else {
    releaseWeakly(ownerOf(tree));
  }
}

String MXFunctionExpression::nameAsWritten() const {
  if (holding_ == Holding::objects) return name_;
  const TreeView view = tree().view(root_);
  return String(view.name(view.top()));
}

String MXFunctionExpression::function() const {
  if (holding_ != Holding::objects) {
    const Builtin builtin = tree().nodes()[root_].builtin;
    if (builtin != Builtin::none) return String::interned(builtinFunction(builtin).name);
  }
  return lowerCase(nameAsWritten());
}

const std::vector<Ref<MXExpression>>& MXFunctionExpression::arguments() const {
  const auto* made = madeArguments_.load(std::memory_order_acquire);
  if (made) return *made;
  const TreeView view = tree().view(root_);
  Ref<VariableNames> names = names_;
  if (!names && tree().summary.variableCount > 0) names = make<VariableNames>(tree());
  auto fresh = std::make_unique<Arguments>(view.top().argumentCount);
  std::uint32_t child = root_ - 1;
  for (std::size_t i = fresh->size(); i-- > 0;) {
    (*fresh)[i] = expressionAt(child, names);
    setParent(*(*fresh)[i], const_cast<MXFunctionExpression*>(this));
    child = view.argumentBefore(child);
  }
  if (madeArguments_.compare_exchange_strong(made, fresh.get(), std::memory_order_acq_rel)) {
    return *fresh.release();
  }
  return *made;
}

Ref<MXExpression> MXFunctionExpression::expressionAt(std::uint32_t index,
                                                     const Ref<VariableNames>& names) const {
  const TreeView view = tree().view(index);
  switch (view.top().kind) {
    case NodeKind::number:
      return make<MXNumberExpression>(view.number(view.top()));
    case NodeKind::variable:
      return make<MXVariableExpression>((*names)[view.top()]);
    case NodeKind::function:
      break;
  }
  return make<MXFunctionExpression>(tree(), index, names);
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
  auto fresh = withTree(builder);
  const ExpressionTree* expected = nullptr;
  const ExpressionTree* const made = &fresh->tree();
  if (!madeTree_.compare_exchange_strong(expected, made, std::memory_order_acq_rel)) {
    return expected;
  }
  fresh.leak();
  return made;
}

const PreparedTree* MXFunctionExpression::preparedTree(const MXMathEvaluator& evaluator) const {
  if (holding_ == Holding::placeInBlock) return nullptr;
  const MXFunctionExpression* const owner = ownerOf(&tree());
  const auto mode = static_cast<std::size_t>(evaluator.angleMeasurementMode());
  const auto* prepared = owner->preparedTrees_[mode].load(std::memory_order_acquire);
  return prepared ? prepared : owner->prepareTree(evaluator, mode);
}

const PreparedTree* MXFunctionExpression::prepareTree(const MXMathEvaluator& evaluator,
                                                      std::size_t mode) const {
  constexpr std::uint32_t kWorthPreparing = 3;
  constexpr std::uint32_t kCannotBePrepared = 0xFFFFFFFFU;
  const std::uint32_t asked = askedForPrepared_.load(std::memory_order_relaxed);
  if (asked < kWorthPreparing) askedForPrepared_.store(asked + 1, std::memory_order_relaxed);
  if (asked < kWorthPreparing || asked == kCannotBePrepared) return nullptr;
  auto fresh = PreparedTree::prepare(tree(), evaluator);
  if (!fresh) askedForPrepared_.store(kCannotBePrepared, std::memory_order_relaxed);
  const PreparedTree* expected = nullptr;
  if (fresh && preparedTrees_[mode].compare_exchange_strong(expected, fresh.get(),
                                                            std::memory_order_acq_rel)) {
    return fresh.release();
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
    sharesNodes_ = sharesNodes_ || hasParent(*argument);
    setParent(*argument, this);
    arguments->push_back(argument);
  });
  madeArguments_.store(arguments.release(), std::memory_order_release);
}

void MXFunctionExpression::abandonDecoding() {
  delete madeArguments_.exchange(new Arguments, std::memory_order_acq_rel);
}

// What stands in several places is one object here and many nodes in the tree, so a small archive
// may stand for a tree without end. The nodes are counted from the leaves upward, each object once.
void MXFunctionExpression::awakeAfterDecoding(Decoder& coder) {
  constexpr std::uint32_t kBeingCounted = 0xFFFFFFFFU;
  constexpr std::uint64_t kMostCounted = kBeingCounted - 1;
  struct Step {
    MXFunctionExpression* function;
    std::size_t next;  // argument
    std::uint64_t nodes;
  };
  if (coder.failed() || decodedNodes_ != 0) return;
  decodedNodes_ = kBeingCounted;
  std::vector<Step> way{{this, 0, 1}};
  while (!way.empty()) {
    Step& step = way.back();
    if (step.function->sharesNodes_ && step.nodes > kMaximumSharedNodes) {
      coder.fail("an expression of too many nodes");
      return;
    }
    const auto& arguments = *step.function->madeArguments_.load(std::memory_order_acquire);
    if (step.next == arguments.size()) {
      step.function->decodedNodes_ = static_cast<std::uint32_t>(std::min(step.nodes, kMostCounted));
      way.pop_back();
      continue;
    }
    auto* const argument = as<MXFunctionExpression>(arguments[step.next].get());
    if (argument && argument->decodedNodes_ == kBeingCounted) {
      coder.fail("an expression that is its own argument");
      return;
    }
    if (argument && argument->decodedNodes_ == 0) {
      argument->decodedNodes_ = kBeingCounted;
      way.push_back({argument, 0, 1});
      continue;
    }
    step.nodes += argument ? argument->decodedNodes_ : 1;
    step.function->sharesNodes_ =
        step.function->sharesNodes_ || (argument && argument->sharesNodes_);
    ++step.next;
  }
}

}  // namespace tarnkit::detail
