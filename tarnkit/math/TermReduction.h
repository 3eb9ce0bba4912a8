#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tarnkit/math/MXError.h"
#include "tarnkit/math/MXMathStringToken.h"
#include "tarnkit/math/TreeBuilder.h"

namespace tarnkit {
class MXParser;
}

namespace tarnkit::detail {

/// Builds the tree of a token list by folding, and tells the error of one that is malformed.
///
/// First the groups: every parenthesised stretch and every argument list becomes a list of terms.
/// Then each group folds its operators, the highest precedence first, each with its neighbours
/// (whatever they are), and the terms inside are resolved. Then the terms give the tree. Terms are
/// records in one array that refer to each other by index; each fold costs constant time. Used
/// once.
class TermReduction {
 public:
  TermReduction(const std::vector<Ref<MXMathStringToken>>& tokens, const MXParser& parser,
                TreeBuilder& tree)
      : tokens_(tokens), parser_(parser), tree_(tree) {}

  /// False, with the error in the slot, when the tokens are no expression.
  bool reduce(MXError* error);

 private:
  using Index = std::uint32_t;
  static constexpr Index kNone = 0xFFFFFFFFU;

  enum class Kind : std::uint8_t { number, variable, op, function, group };

  struct Term {
    Kind kind;
    bool folded = false;  // a function made from an operator
    Index token = kNone;  // of a function or operator: where its name comes from
    Index next = kNone;
    Index previous = kNone;
    Index first = kNone;  // subterms
    Index last = kNone;
    Index count = 0;
    Index owner = kNone;  // the group that it stands in
  };
  struct Candidate {
    std::int64_t precedence;
    Index term;
  };

  bool buildTerms();
  void closeGroup();
  void splitArguments(Index function);
  void addArgument(Index function, Index first, Index last, Index count, bool closes);
  bool failUnclosed();

  bool resolveAll();
  bool reduceGroup(Index group);
  bool reduceLevel(Index group, const Candidate* from, const Candidate* to);
  bool fold(Index group, Index op);
  bool foldBinary(Index group, Index op);
  bool foldUnary(Index group, Index op);
  bool wrapRightOperand(Index group, Index op);
  void replace(Index group, Index first, Index last, Index op);
  bool failUnfolded(Index op);

  bool produce();
  bool produceLeaf(Index term);

  Index addTerm(Kind kind, Index token);
  void append(Index group, Index term);
  void detach(Index group, Index term);
  const MXMathStringToken& tokenOf(Index term) const { return *tokens_[terms_[term].token]; }
  bool isOperator(Index term) const { return terms_[term].kind == Kind::op; }
  bool groupsRight(Index op) const;
  std::string functionName(const Term& term) const;
  std::string describe(Index term) const;
  bool failAt(MXErrorCode code, const char* message, Index op);
  /// A failure whose place is all of the term.
  bool failFor(MXErrorCode code, std::string message, Index term);
  /// A failure whose place is a token.
  bool failOf(MXErrorCode code, std::string message, const MXMathStringToken& token);
  void addNamed(const Term& term, std::uint32_t nodes);
  std::uint32_t sliceOf(std::string_view name, const MXMathStringToken& token);

  const std::vector<Ref<MXMathStringToken>>& tokens_;
  const MXParser& parser_;
  TreeBuilder& tree_;
  std::vector<Term> terms_;
  std::vector<Index> open_;  // groups and functions whose ")" has not come yet
  std::vector<Index> waiting_;
  std::vector<Candidate> candidates_;
  MXError error_;
};

}  // namespace tarnkit::detail
