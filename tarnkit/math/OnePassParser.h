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

  /// Takes a token of the scanner.
  template <MXTokenType Type>
  [[gnu::always_inline]] inline bool take(const ScannedToken& token);

 private:
  /// No postfix operator stands last.
  static constexpr std::uint8_t kAnyLevel = 0xFF;

  /// Levels are those of the rows, which order operators as their precedences do.
  struct PendingOperator {
    std::uint16_t row;
    std::uint8_t level;  // of a prefix operator: at least that of what it is wrapped under
    std::uint8_t ownLevel;
    bool groupsRight;
    bool isPrefix;
  };
  /// An open group: the text itself, a pair of parentheses, or an argument list.
  struct Frame {
    std::uint32_t firstOperator;
    std::uint32_t firstNode;
    std::uint32_t arguments;
    std::uint32_t nameOffset;
    std::uint32_t nameLength;
    // The mixed levels of which the group (or argument) has operators that are taken from the left,
    // from the right.
    std::uint32_t leftLevels;
    std::uint32_t rightLevels;
    bool isFunction;
    Builtin builtin;
  };

  [[gnu::always_inline]] inline bool addNumber(const ScannedToken& token);
  [[gnu::always_inline]] inline bool addVariable(const ScannedToken& token);
  bool addRewrittenNumber(const ScannedToken& token);
  bool addRewrittenVariable(const ScannedToken& token);
  bool addOtherOperator(std::uint16_t row);
  bool openFunction(const ScannedToken& token);
  bool openGroup();
  Frame& beginFrame();
  void endFrame() noexcept {
    frames_.pop();
    frame_ = &frames_.back();
  }
  bool closeGroup();
  bool nextArgument();
  bool addPrefix(std::uint16_t row);
  bool addPostfix(std::uint16_t row);
  [[gnu::always_inline]] inline bool addBinary(std::uint16_t row);

  void noteLevel(const OperatorRow& row) noexcept {
    if (row.mixedLevel != 0) noteMixedLevel(row);
  }
  void noteMixedLevel(const OperatorRow& row) noexcept;
  [[gnu::always_inline]] inline void reduceTighter(std::uint8_t level);
  [[gnu::always_inline]] inline void reduceTop();
  void addUnary(const OperatorRow& row);
  bool endGroup();
  void operandEnds() noexcept {
    expectsOperand_ = false;
    lastPostfix_ = kAnyLevel;
  }

  std::string_view text_;
  const OperatorTable& table_;
  TreeBuilder& tree_;
  bool expectsOperand_ = true;
  bool opensArguments_ = false;  // a function's name was just read
  std::uint8_t lastPostfix_ = kAnyLevel;
  SmallStack<Frame, 8> frames_;  // the text itself first; the innermost one last
  Frame* frame_ = nullptr;       // the innermost one
  SmallStack<PendingOperator, 16> operators_;
};

}  // namespace tarnkit::detail
