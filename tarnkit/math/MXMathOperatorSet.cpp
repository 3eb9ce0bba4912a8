#include "tarnkit/math/MXMathOperatorSet.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "tarnkit/math/MathText.h"
#include "tarnkit/math/OperatorTable.h"

namespace tarnkit {

const Class MXMathOperatorSet::kClass{"MXMathOperatorSet", &Object::kClass};

const Ref<MXMathOperatorSet>& MXMathOperatorSet::defaultOperatorSet() {
  static const auto shared = make<MXMathOperatorSet>();
  return shared;
}

MXMathOperatorSet::MXMathOperatorSet() {
  for (const auto& listed : MXMathOperator::defaultOperators()) {
    auto own = listed->copy();
    operatorsByFunction_.set(own->function(), own);
    enterTokens(own, own->tokens());
    own->standIn(*this);
    operators_.push_back(std::move(own));
  }
  std::stable_sort(operators_.begin(), operators_.end(),
                   [](const auto& a, const auto& b) { return a->precedence() < b->precedence(); });
  addPercentOperator();
}

MXMathOperatorSet::MXMathOperatorSet(const std::vector<Ref<MXMathOperator>>&)
    : MXMathOperatorSet() {}

MXMathOperatorSet::~MXMathOperatorSet() = default;

Ref<MXMathOperatorSet> MXMathOperatorSet::copy() const {
  auto fresh = make<MXMathOperatorSet>(operators_);
  fresh->setInterpretsPercentSignAsModulo(interpretsPercentSignAsModulo_);
  return fresh;
}

Ref<MXMathOperator> MXMathOperatorSet::operatorForFunction(const String& function) const {
  const auto* const found = operatorsByFunction_.find(function);
  return found ? *found : operatorsByFunction_.get(detail::lowerCase(function));
}

std::vector<Ref<MXMathOperator>> MXMathOperatorSet::operatorsForToken(const String& token) const {
  return operatorsByToken_.get(detail::lowerCase(token));
}

void MXMathOperatorSet::addTokens(const std::vector<String>& tokens,
                                  const String& forOperatorFunction) {
  const auto existing = operatorForFunction(forOperatorFunction);
  if (!existing) {
    throw std::invalid_argument(
        fmt::format("No operator is defined for function '{}'", forOperatorFunction.view()));
  }
  add(make<MXMathOperator>(forOperatorFunction, tokens, MXOperatorArity::unknown, std::int64_t{0},
                           MXOperatorAssociativity::left),
      existing, Place::same);
}

void MXMathOperatorSet::addOperatorWithPrecedenceHigherThan(const Ref<MXMathOperator>& newOperator,
                                                            const Ref<MXMathOperator>& existing) {
  add(newOperator, existing, Place::higher);
}
void MXMathOperatorSet::addOperatorWithPrecedenceSameAs(const Ref<MXMathOperator>& newOperator,
                                                        const Ref<MXMathOperator>& existing) {
  add(newOperator, existing, Place::same);
}
void MXMathOperatorSet::addOperatorWithPrecedenceLowerThan(const Ref<MXMathOperator>& newOperator,
                                                           const Ref<MXMathOperator>& existing) {
  add(newOperator, existing, Place::lower);
}

void MXMathOperatorSet::add(const Ref<MXMathOperator>& newOperator,
                            const Ref<MXMathOperator>& existing, Place place) {
  if (!newOperator || !existing) {
    throw std::invalid_argument(newOperator ? "No operator is given to add another one next to"
                                            : "No operator is given to be added");
  }
  const std::int64_t precedence = existing->precedence();
  const std::vector<String> tokens = newOperator->tokens();
  newOperator->setPrecedence(place == Place::higher  ? precedence + 1
                             : place == Place::lower ? precedence - 1
                                                     : precedence);
  if (const auto known = operatorForFunction(newOperator->function())) {
    known->addTokens(tokens);
    enterTokens(known, tokens);
    return;
  }
  for (const String& token : tokens) {
    if (operatorsByToken_.contains(detail::lowerCase(token))) {
      throw std::invalid_argument(
          fmt::format("An operator is already defined for '{}'", token.view()));
    }
  }
  operators_.push_back(newOperator);
  newOperator->standIn(*this);
  renumber(*newOperator, precedence, place);
  std::stable_sort(operators_.begin(), operators_.end(),
                   [](const auto& a, const auto& b) { return a->precedence() < b->precedence(); });
  operatorsByFunction_.set(newOperator->function(), newOperator);
  enterTokens(newOperator, tokens);
}

// The new operator is raised with the others when it goes above its neighbour, and is the only one
// at or below the bound that is raised when it goes below: the editor's operator tables count on
// the numbers that come out.
void MXMathOperatorSet::renumber(MXMathOperator& added, std::int64_t existing, Place place) {
  if (place == Place::same) return;
  for (const auto& each : operators_) {
    const bool raised = place == Place::higher
                            ? each->precedence() >= existing + 1
                            : each.get() == &added || each->precedence() > existing - 1;
    if (raised) each->setPrecedence(each->precedence() + 1);
  }
}

void MXMathOperatorSet::setInterpretsPercentSignAsModulo(bool modulo) {
  if (modulo == interpretsPercentSignAsModulo_) return;
  interpretsPercentSignAsModulo_ = modulo;
  removePercentOperator();
  addPercentOperator();
}

void MXMathOperatorSet::removePercentOperator() {
  const auto old = std::exchange(percentTokenOperator_, nullptr);
  operators_.erase(std::remove(operators_.begin(), operators_.end(), old), operators_.end());
  operatorsByFunction_.take(old->function());
  for (const String& token : old->tokens()) {
    auto* const users = operatorsByToken_.find(detail::lowerCase(token));
    if (!users) continue;
    users->erase(std::remove(users->begin(), users->end(), old), users->end());
    if (users->empty()) operatorsByToken_.take(detail::lowerCase(token));
  }
  noteChange();
}

void MXMathOperatorSet::addPercentOperator() {
  const bool modulo = interpretsPercentSignAsModulo_;
  const auto function = String::interned(modulo ? MXOperatorModulo : MXOperatorPercent);
  const auto neighbour = String::interned(modulo ? MXOperatorMultiply : MXOperatorUnaryMinus);
  percentTokenOperator_ = MXMathOperator::withOperatorFunction(
      function, {"%"}, modulo ? MXOperatorArity::binary : MXOperatorArity::unary,
      MXOperatorAssociativity::left);
  add(percentTokenOperator_, operatorForFunction(neighbour), Place::higher);
  percentTokenOperator_ = operatorForFunction(function);
}

void MXMathOperatorSet::enterTokens(const Ref<MXMathOperator>& entered,
                                    const std::vector<String>& tokens) {
  for (const String& token : tokens) {
    const String lower = detail::lowerCase(token);
    auto users = operatorsByToken_.get(lower);
    if (std::find(users.begin(), users.end(), entered) == users.end()) users.push_back(entered);
    operatorsByToken_.set(lower, std::move(users));
  }
  noteChange();
}

const detail::OperatorTable& MXMathOperatorSet::table() const {
  const MXMathOperatorSet& tokens = *defaultOperatorSet();
  const auto now =
      tokens.changes_.load(std::memory_order_relaxed) + changes_.load(std::memory_order_relaxed);
  if (tableMadeAt_.load(std::memory_order_acquire) == now) return *table_;
  return makeTable(tokens);
}

Ref<const detail::OperatorTable> MXMathOperatorSet::keptTable() const {
  return Ref<const detail::OperatorTable>(&table());
}

// The old table goes at once. Nobody reads it but scans that keep it: operators do not change while
// another thread uses them.
const detail::OperatorTable& MXMathOperatorSet::makeTable(const MXMathOperatorSet& tokens) const {
  const std::lock_guard lock(tableMutex_);
  const auto now =
      tokens.changes_.load(std::memory_order_relaxed) + changes_.load(std::memory_order_relaxed);
  if (tableMadeAt_.load(std::memory_order_relaxed) != now) {
    table_ = make<const detail::OperatorTable>(tokens, *this);
    tableMadeAt_.store(now, std::memory_order_release);
  }
  return *table_;
}

}  // namespace tarnkit
