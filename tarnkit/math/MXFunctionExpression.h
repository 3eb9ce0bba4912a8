#pragma once

#include <atomic>

#include "tarnkit/math/MXExpression.h"

namespace tarnkit::detail {

/// A function of arguments as a tree: a place in a shared block of nodes, or a name with argument
/// objects, whichever it was made from; the other is made when it is asked for. Archived under
/// "function" and "arguments"; in an archive every expression stands in one place only.
class MXFunctionExpression final : public MXExpression {
  TARNKIT_CLASS
 public:
  MXFunctionExpression() = default;
  MXFunctionExpression(String function, const std::vector<Ref<MXExpression>>& arguments);
  MXFunctionExpression(Ref<ExpressionTree> tree, std::uint32_t root) noexcept
      : madeTree_(tree.get()), tree_(std::move(tree)), root_(root) {}
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

  /// The block of nodes that it stands in, and where.
  const ExpressionTree& tree() const;
  std::uint32_t root() const { return tree_ ? root_ : tree().nodeCount() - 1; }

 private:
  using Arguments = std::vector<Ref<MXExpression>>;
  Ref<MXExpression> expressionAt(std::uint32_t index) const;
  const ExpressionTree* makeTree() const;
  String nameAsWritten() const;

  mutable std::atomic<const ExpressionTree*> madeTree_{nullptr};
  mutable std::atomic<const Arguments*> madeArguments_{nullptr};
  Ref<ExpressionTree> tree_;  // null where the block was made from objects
  std::uint32_t root_ = 0;
  bool isPlaced_ = false;  // decoding has checked what holds it
  String name_;            // nil where it was made from a block
};

}  // namespace tarnkit::detail
