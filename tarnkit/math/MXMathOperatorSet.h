#pragma once

#include <atomic>
#include <mutex>
#include <vector>

#include "tarnkit/math/MXMathOperator.h"
#include "tarnkit/platform/collections/OrderedMap.h"

namespace tarnkit {

namespace detail {
class OperatorTable;
}

/// The operators that a text may use, ordered by precedence, and what each token stands for.
///
/// The tokenizer looks operators up in the shared default set; a set of one's own governs which
/// characters are operator characters and the associativities that the parser uses. A set and its
/// operators may be read by several threads as long as none changes them or the default set;
/// making, changing and dropping other sets meanwhile disturbs nobody. Misuse throws
/// std::invalid_argument with a fixed text.
class MXMathOperatorSet final : public Object {
  TARNKIT_CLASS
 public:
  /// The process's shared set, made at first use from any thread. Changes to it are seen by every
  /// later look-up.
  static const Ref<MXMathOperatorSet>& defaultOperatorSet();

  /// A set of the default table's operators and "mod" for "%".
  MXMathOperatorSet();
  /// The argument is not used: every set is built from the default table.
  explicit MXMathOperatorSet(const std::vector<Ref<MXMathOperator>>& operators);
  ~MXMathOperatorSet() override;
  /// A fresh default set with this set's meaning of "%"; operators added here are not carried over.
  Ref<MXMathOperatorSet> copy() const;

  /// In ascending order of precedence; equal ones in the order in which they were added.
  const std::vector<Ref<MXMathOperator>>& operators() const noexcept { return operators_; }
  auto begin() const noexcept { return operators_.begin(); }
  auto end() const noexcept { return operators_.end(); }
  /// Null when there is none under that name nor under it in lower case.
  Ref<MXMathOperator> operatorForFunction(const String& function) const;
  /// The operators that use the token, in any case of its letters; empty when none does.
  std::vector<Ref<MXMathOperator>> operatorsForToken(const String& token) const;

  /// Gives an operator further tokens. Throws "No operator is defined for function '…'".
  void addTokens(const std::vector<String>& tokens, const String& forOperatorFunction);
  /// Adds an operator next to an existing one; neither may be null. One whose function the set has
  /// already only lends its tokens to that one; otherwise a token that is taken throws "An operator
  /// is already defined for '…'". The new operator ends level with what stood right above the
  /// existing one.
  void addOperatorWithPrecedenceHigherThan(const Ref<MXMathOperator>& newOperator,
                                           const Ref<MXMathOperator>& existing);
  void addOperatorWithPrecedenceSameAs(const Ref<MXMathOperator>& newOperator,
                                       const Ref<MXMathOperator>& existing);
  /// The new operator takes the existing one's precedence; that one and all above move up.
  void addOperatorWithPrecedenceLowerThan(const Ref<MXMathOperator>& newOperator,
                                          const Ref<MXMathOperator>& existing);

  /// Whether "%" is the binary modulo (initially) or the postfix percent. Precedences are never
  /// lowered again, so every switch moves the operators above further up.
  bool interpretsPercentSignAsModulo() const noexcept { return interpretsPercentSignAsModulo_; }
  void setInterpretsPercentSignAsModulo(bool modulo);

  /// The look-up table for tokenizing with this set; made again when an operator of this set or of
  /// the default one has changed. It is good until the next such change.
  const detail::OperatorTable& table() const;
  /// The same, kept: for a scan that hands control to others, who may change operators.
  Ref<const detail::OperatorTable> keptTable() const;
  /// Told by the operators of the set when they are changed.
  void noteChange() noexcept { changes_.fetch_add(1, std::memory_order_relaxed); }

 private:
  enum class Place { higher, same, lower };
  const detail::OperatorTable& makeTable(const MXMathOperatorSet& tokens) const;
  void add(const Ref<MXMathOperator>& newOperator, const Ref<MXMathOperator>& existing,
           Place place);
  void renumber(MXMathOperator& added, std::int64_t existing, Place place);
  void addPercentOperator();
  void removePercentOperator();
  void enterTokens(const Ref<MXMathOperator>& entered, const std::vector<String>& tokens);

  std::vector<Ref<MXMathOperator>> operators_;
  OrderedMap<Ref<MXMathOperator>> operatorsByFunction_;
  OrderedMap<std::vector<Ref<MXMathOperator>>> operatorsByToken_;
  Ref<MXMathOperator> percentTokenOperator_;
  bool interpretsPercentSignAsModulo_ = true;

  std::atomic<std::uint64_t> changes_{1};
  mutable std::mutex tableMutex_;
  /// The changes of the default set and of this one, in sum, that the table has seen. Whoever reads
  /// the number of today finds the table of today: it is published after the table.
  mutable std::atomic<std::uint64_t> tableMadeAt_{0};
  mutable Ref<const detail::OperatorTable> table_;
};

}  // namespace tarnkit
