#pragma once

#include <cstdint>
#include <string_view>

#include "tarnkit/math/OperatorTable.h"
#include "tarnkit/math/SmallStack.h"
#include "tarnkit/math/TokenScanner.h"
#include "tarnkit/math/TreeBuilder.h"

namespace tarnkit::detail {

/// Parses a well-formed text in one pass with a stack of operators. It gives exactly the tree that
/// `TermReduction` gives, or gives up: on every error, and on the rare texts where the order of
/// folding is not that of an operator stack. What gives up here is parsed, or explained, by
/// `TermReduction`.
///
/// Where the two agree: folding the tightest operators of a group first is what an operator stack
/// does, as long as no operator is folded while its neighbour is still an operator, and all
/// operators of one level of a group are taken from the same end. A prefix operator right of a
/// tighter binary one is wrapped with one operand, so on the stack it counts as tight as that
/// operator.
///
/// Costs time linear in the text; no memory for small texts. Used once.
class OnePassParser {
 public:
  /// The text is prepared (see `prepareText`).
  OnePassParser(std::string_view text, const OperatorTable& table, TreeBuilder& tree) noexcept
      : text_(text), table_(table), tree_(tree) {
    beginFrame();
  }

  /// Whether the tree has been built.
  bool parse();

  /// The scanner's sink.
  [[gnu::always_inline]] inline bool operator()(const ScannedToken& token);

 private:
  /// No postfix operator stands last.
  static constexpr std::int64_t kAnyPrecedence = INT64_MAX;

  struct PendingOperator {
    std::int64_t precedence;  // of a prefix operator: at least that of what it is wrapped under
    std::int64_t ownPrecedence;
    std::uint16_t row;
    bool groupsRight;
    bool isPrefix;
  };
  /// An open group: the text itself, a pair of parentheses, or an argument list.
  struct Frame {
    std::uint32_t firstOperator;
    std::uint32_t firstNode;
    std::uint32_t arguments;
    bool isFunction;
    Builtin builtin;
    std::uint32_t nameOffset;
    std::uint32_t nameLength;
    // The levels of operators in the group (or argument) that are taken from the left, from the
    // right.
    std::uint64_t leftLevels;
    std::uint64_t rightLevels;
  };

  [[gnu::always_inline]] inline bool addNumber(const ScannedToken& token);
  [[gnu::always_inline]] inline bool addVariable(const ScannedToken& token);
  bool addRewrittenNumber(const ScannedToken& token);
  bool addRewrittenVariable(const ScannedToken& token);
  bool addOtherOperator(std::uint16_t row);
  bool openFunction(const ScannedToken& token);
  bool openGroup();
  Frame& beginFrame();
  bool closeGroup();
  bool nextArgument();
  bool addPrefix(std::uint16_t row);
  bool addPostfix(std::uint16_t row);
  [[gnu::always_inline]] inline bool addBinary(std::uint16_t row);

  void noteLevel(const OperatorRow& row) noexcept;
  [[gnu::always_inline]] inline void reduceTighter(std::int64_t precedence);
  void reduceTop();
  void addUnary(const OperatorRow& row);
  bool endGroup();
  void operandEnds() noexcept {
    expectsOperand_ = false;
    lastPostfix_ = kAnyPrecedence;
  }

  std::string_view text_;
  const OperatorTable& table_;
  TreeBuilder& tree_;
  bool expectsOperand_ = true;
  bool opensArguments_ = false;  // a function's name was just read
  std::int64_t lastPostfix_ = kAnyPrecedence;
  SmallStack<Frame, 8> frames_;  // the text itself first; the innermost one last
  SmallStack<PendingOperator, 16> operators_;
};

}  // namespace tarnkit::detail
