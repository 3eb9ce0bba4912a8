#pragma once

#include <atomic>

#include "tarnkit/math/MXExpression.h"

namespace tarnkit::detail {

class PreparedTree;

/// A function of arguments as a tree: a place in a block of nodes, or a name with argument objects,
/// whichever it was made from; the other is made when it is asked for. Archived under "function"
/// and "arguments". An expression that stands in several places is archived once.
///
/// The root of a block has the block's memory behind it; the functions inside refer to the root
/// weakly, which keeps its memory.
class MXFunctionExpression final : public MXExpression {
  TARNKIT_CLASS
 public:
  /// The largest tree that is decoded of expressions of which some stand in several places; they
  /// count in each.
  static constexpr std::uint32_t kMaximumSharedNodes = std::uint32_t{1} << 22;

  MXFunctionExpression() = default;
  MXFunctionExpression(String function, const std::vector<Ref<MXExpression>>& arguments);
  /// A function inside the block in which another one stands.
  MXFunctionExpression(const ExpressionTree& tree, std::uint32_t root, Ref<VariableNames> names);
  /// The tree that a builder holds, whose root is a function.
  static Ref<MXFunctionExpression> withTree(TreeBuilder& builder);
  ~MXFunctionExpression() override;

  MXExpressionType expressionType() const override { return MXExpressionType::function; }
  String function() const override;
  const std::vector<Ref<MXExpression>>& arguments() const override;
  Ref<MXExpression> copy() const override;
  Ref<MXExpression> simplifiedExpressionWithEvaluator(const MXMathEvaluator* evaluator,
                                                      MXError* error) const override;
  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;
  void abandonDecoding() override;
  void awakeAfterDecoding(Decoder& coder) override;
  TreeView view(ExpressionNode& storage) const override;

  /// What evaluates all of its tree faster than the nodes do, for the evaluator's angle mode; null
  /// until it has been asked for several times, and where there is none. The tree is a plain one.
  const PreparedTree* preparedTree(const MXMathEvaluator& evaluator) const;
  /// The same where there is one already, and this is the root of a block.
  const PreparedTree* readyTree(std::size_t angleMode) const noexcept {
    return preparedTrees_[angleMode].load(std::memory_order_acquire);
  }

  /// The block of nodes that it stands in, and where.
  const ExpressionTree& tree() const;
  std::uint32_t root() const { return holding_ == Holding::objects ? tree().nodeCount - 1 : root_; }

 private:
  friend class TreeMemory;
  using Arguments = std::vector<Ref<MXExpression>>;
  enum class Holding : std::uint8_t { objects, block, placeInBlock };

  MXFunctionExpression(const ExpressionTree& tree, std::uint32_t root) noexcept
      : madeTree_(&tree), root_(root), holding_(Holding::block) {}
  static const MXFunctionExpression* ownerOf(const ExpressionTree* tree) noexcept {
    return reinterpret_cast<const MXFunctionExpression*>(tree) - 1;
  }
  Ref<MXExpression> expressionAt(std::uint32_t index, const Ref<VariableNames>& names) const;
  const ExpressionTree* makeTree() const;
  const PreparedTree* prepareTree(const MXMathEvaluator& evaluator, std::size_t mode) const;
  String nameAsWritten() const;

  // Of one that was made from objects: the tree of a root that it owns.
  mutable std::atomic<const ExpressionTree*> madeTree_{nullptr};
  mutable std::atomic<const Arguments*> madeArguments_{nullptr};
  // Of the root of a block, for either angle mode.
  mutable std::atomic<const PreparedTree*> preparedTrees_[2] = {};
  mutable std::atomic<std::uint32_t> askedForPrepared_{0};
  String name_;               // where it was made from objects
  Ref<VariableNames> names_;  // where it stands inside a block that has variables
  union {
    std::uint32_t root_ = 0;  // of one in a block
    std::uint32_t
        decodedNodes_;  // of a decoded one, how many its tree has; 0 before they are counted
  };
  Holding holding_ = Holding::objects;
  bool sharesNodes_ = false;  // of a decoded one: something in it stands in several places
};

}  // namespace tarnkit::detail
