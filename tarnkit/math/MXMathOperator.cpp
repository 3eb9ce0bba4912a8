#include "tarnkit/math/MXMathOperator.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <stdexcept>

#include "tarnkit/math/MXMathOperatorSet.h"
#include "tarnkit/math/MathText.h"

namespace tarnkit {

const Class MXMathOperator::kClass{"MXMathOperator", &Object::kClass};

namespace {

constexpr std::int64_t kRightGroupedPower = 512;

std::int64_t conventionalPower() { return kRightGroupedPower; }
std::atomic<MXMathOperator::PowerProbe> powerProbe{&conventionalPower};

MXOperatorAssociativity powerAssociativity() {
  return powerProbe.load()() == kRightGroupedPower ? MXOperatorAssociativity::right
                                                   : MXOperatorAssociativity::left;
}

const char* nameOf(MXOperatorArity arity) {
  constexpr const char* kNames[] = {"Unknown", "Unary", "Binary"};
  return kNames[static_cast<int>(arity)];
}

std::vector<Ref<MXMathOperator>> makeDefaultOperators() {
  constexpr auto kUnary = MXOperatorArity::unary;
  constexpr auto kBinary = MXOperatorArity::binary;
  constexpr auto kLeft = MXOperatorAssociativity::left;
  constexpr auto kRight = MXOperatorAssociativity::right;
  struct Row {
    const char* function;
    std::vector<String> tokens;
    MXOperatorArity arity;
    std::int64_t precedence;
    MXOperatorAssociativity associativity;
  };
  const Row rows[] = {
      {MXOperatorLogicalOr, {"||", "\u2228"}, kBinary, 0, kLeft},
      {MXOperatorLogicalAnd, {"&&", "\u2227"}, kBinary, 1, kLeft},
      {MXOperatorLogicalEqual, {"==", "="}, kBinary, 2, kLeft},
      {MXOperatorLogicalNotEqual, {"!="}, kBinary, 2, kLeft},
      {MXOperatorLogicalLessThan, {"<"}, kBinary, 3, kLeft},
      {MXOperatorLogicalGreaterThan, {">"}, kBinary, 4, kLeft},
      {MXOperatorLogicalLessThanOrEqual, {"<=", "=<", "\u2264", "\u226F"}, kBinary, 5, kLeft},
      {MXOperatorLogicalGreaterThanOrEqual, {">=", "=>", "\u2265", "\u226E"}, kBinary, 6, kLeft},
      {MXOperatorLogicalNot, {"!", "\u00AC"}, kUnary, 7, kRight},
      {MXOperatorBitwiseOr, {"|"}, kBinary, 8, kLeft},
      {MXOperatorBitwiseXor, {"^"}, kBinary, 9, kLeft},
      {MXOperatorBitwiseAnd, {"&"}, kBinary, 10, kLeft},
      {MXOperatorLeftShift, {"<<"}, kBinary, 11, kLeft},
      {MXOperatorRightShift, {">>"}, kBinary, 12, kLeft},
      {MXOperatorAdd, {"+"}, kBinary, 13, kLeft},
      {MXOperatorMinus, {"-", "\u2212"}, kBinary, 13, kLeft},
      {MXOperatorMultiply, {"*", "\u00D7"}, kBinary, 14, kLeft},
      {MXOperatorDivide, {"/", "\u00F7"}, kBinary, 14, kLeft},
      {MXOperatorBitwiseNot, {"~"}, kUnary, 15, kRight},
      {MXOperatorUnaryMinus, {"-", "\u2212"}, kUnary, 16, kRight},
      {MXOperatorUnaryPlus, {"+"}, kUnary, 16, kRight},
      {MXOperatorFactorial, {"!"}, kUnary, 17, kLeft},
      {MXOperatorDegree, {"\u00BA", "\u00B0"}, kUnary, 17, kLeft},
      {MXOperatorPower, {"**"}, kBinary, 18, powerAssociativity()},
      {MXOperatorParenthesisOpen, {"("}, kUnary, 19, kRight},
      {MXOperatorParenthesisClose, {")"}, kUnary, 19, kLeft},
      {MXOperatorComma, {","}, MXOperatorArity::unknown, 20, kLeft},
  };
  std::vector<Ref<MXMathOperator>> operators;
  for (const Row& row : rows) {
    operators.push_back(make<MXMathOperator>(String::interned(row.function), row.tokens, row.arity,
                                             row.precedence, row.associativity));
  }
  return operators;
}

}  // namespace

MXMathOperator::MXMathOperator(String function, std::vector<String> tokens, MXOperatorArity arity,
                               std::int64_t precedence, MXOperatorAssociativity associativity)
    : function_(std::move(function)),
      tokens_(std::move(tokens)),
      arity_(arity),
      associativity_(associativity),
      precedence_(precedence) {}

Ref<MXMathOperator> MXMathOperator::withOperatorFunction(const String& function,
                                                         const std::vector<String>& tokens,
                                                         MXOperatorArity arity,
                                                         MXOperatorAssociativity associativity) {
  if (arity == MXOperatorArity::unknown) {
    throw std::invalid_argument("Unable to create operator with unknown arity");
  }
  std::vector<String> lower;
  for (const String& token : tokens) {
    if (!isValidToken(token)) {
      throw std::invalid_argument(fmt::format("Invalid operator token: {}", token.view()));
    }
    lower.push_back(detail::lowerCase(token));
  }
  return make<MXMathOperator>(function, std::move(lower), arity, std::int64_t{0}, associativity);
}

Ref<MXMathOperator> MXMathOperator::infoForOperatorFunction(const String& function) {
  return MXMathOperatorSet::defaultOperatorSet()->operatorForFunction(function);
}

std::vector<Ref<MXMathOperator>> MXMathOperator::infosForOperatorToken(const String& token) {
  return MXMathOperatorSet::defaultOperatorSet()->operatorsForToken(token);
}

const std::vector<Ref<MXMathOperator>>& MXMathOperator::defaultOperators() {
  static const auto operators = makeDefaultOperators();
  return operators;
}

bool MXMathOperator::isValidToken(std::string_view token) {
  if (token.empty()) return false;
  const char first = token.front();
  if (detail::isDigit(first) || first == '"' || first == '$' || first == '\'' || first == '.') {
    return false;
  }
  std::size_t at = 0;
  char32_t point = detail::nextCodePoint(token, at);
  if (detail::isBlank(point)) return false;
  while (at < token.size()) point = detail::nextCodePoint(token, at);
  return !detail::isBlank(point);
}

void MXMathOperator::setPowerProbe(PowerProbe probe) noexcept { powerProbe.store(probe); }

void MXMathOperator::setAssociativity(MXOperatorAssociativity associativity) {
  associativity_ = associativity;
  noteChange();
}

void MXMathOperator::setPrecedence(std::int64_t precedence) {
  precedence_ = precedence;
  noteChange();
}

void MXMathOperator::addTokens(const std::vector<String>& tokens) {
  for (const String& token : tokens) tokens_.push_back(detail::lowerCase(token));
  noteChange();
}

bool MXMathOperator::hasToken(std::string_view token) const noexcept {
  return std::any_of(tokens_.begin(), tokens_.end(),
                     [token](const String& mine) { return mine == token; });
}

Ref<MXMathOperator> MXMathOperator::copy() const {
  return make<MXMathOperator>(function_, tokens_, arity_, precedence_, associativity_);
}

String MXMathOperator::description() const {
  std::string tokens;
  for (const String& token : tokens_) {
    if (!tokens.empty()) tokens += ", ";
    tokens += token.view();
  }
  return String(fmt::format("{} {{({}) => {}(), Arity: {}, Assoc: {}, Precedence: {}}}",
                            Object::description().view(), tokens, function_.view(), nameOf(arity_),
                            associativity_ == MXOperatorAssociativity::right ? "Right" : "Left",
                            precedence_));
}

void MXMathOperator::standIn(MXMathOperatorSet& set) {
  sets_.erase(std::remove_if(sets_.begin(), sets_.end(),
                             [&set](const WeakRef<MXMathOperatorSet>& each) {
                               return !each || each.get() == &set;
                             }),
              sets_.end());
  sets_.emplace_back(&set);
}

void MXMathOperator::noteChange() const noexcept {
  for (const auto& each : sets_) {
    if (const auto set = each.lock()) set->noteChange();
  }
}

}  // namespace tarnkit
