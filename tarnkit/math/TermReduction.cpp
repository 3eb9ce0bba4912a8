#include "tarnkit/math/TermReduction.h"

#include <fmt/format.h>

#include <algorithm>

#include "tarnkit/math/MXParser.h"

namespace tarnkit::detail {

bool TermReduction::reduce(MXError* error) {
  if (buildTerms() && resolveAll() && produce()) return true;
  MXError::set(error, error_);
  return false;
}

TermReduction::Index TermReduction::addTerm(Kind kind, Index token) {
  Term term;
  term.kind = kind;
  term.token = token;
  terms_.push_back(term);
  return static_cast<Index>(terms_.size() - 1);
}

void TermReduction::append(Index group, Index index) {
  Term& owner = terms_[group];
  Term& term = terms_[index];
  term.owner = group;
  term.next = kNone;
  term.previous = owner.last;
  (owner.last == kNone ? owner.first : terms_[owner.last].next) = index;
  owner.last = index;
  ++owner.count;
}

void TermReduction::detach(Index group, Index index) {
  Term& owner = terms_[group];
  Term& term = terms_[index];
  (term.previous == kNone ? owner.first : terms_[term.previous].next) = term.next;
  (term.next == kNone ? owner.last : terms_[term.next].previous) = term.previous;
  term.next = term.previous = term.owner = kNone;
  --owner.count;
}

bool TermReduction::buildTerms() {
  terms_.reserve(tokens_.size() + 1);
  open_.push_back(addTerm(Kind::group, kNone));
  for (Index i = 0; i < tokens_.size(); ++i) {
    const MXMathStringToken& token = *tokens_[i];
    Index term = kNone;
    switch (token.tokenType()) {
      case MXTokenType::number:
        term = addTerm(Kind::number, i);
        break;
      case MXTokenType::variable:
        term = addTerm(Kind::variable, i);
        break;
      case MXTokenType::function:
        term = addTerm(Kind::function, i);
        append(open_.back(), term);
        open_.push_back(term);
        ++i;  // its "(", which the tokenizer has made sure of
        continue;
      case MXTokenType::op:
        if (token.operatorFunction() == MXOperatorParenthesisOpen) {
          term = addTerm(Kind::group, i);
          append(open_.back(), term);
          open_.push_back(term);
          continue;
        }
        if (open_.size() > 1 && token.operatorFunction() == MXOperatorParenthesisClose) {
          closeGroup();
          continue;
        }
        term = addTerm(Kind::op, i);
        break;
    }
    append(open_.back(), term);
  }
  return open_.size() == 1 || failUnclosed();
}

void TermReduction::closeGroup() {
  const Index group = open_.back();
  open_.pop_back();
  if (terms_[group].kind == Kind::function) splitArguments(group);
}

// The error of the innermost group travels outward, and each function on its way puts its own name.
bool TermReduction::failUnclosed() {
  const auto function = std::find_if(open_.begin(), open_.end(), [this](Index term) {
    return terms_[term].kind == Kind::function;
  });
  if (function == open_.end()) {
    return failOf(MXErrorCode::imbalancedParentheses, "imbalanced parentheses",
                  tokenOf(open_.back()));
  }
  const MXMathStringToken& name = tokenOf(*function);
  return failOf(MXErrorCode::imbalancedParentheses,
                fmt::format("missing parentheses after function \"{}\"", name.token().view()),
                name);
}

void TermReduction::splitArguments(Index function) {
  Index at = terms_[function].first;
  terms_[function].first = terms_[function].last = kNone;
  terms_[function].count = 0;
  Index first = kNone;
  Index last = kNone;
  Index count = 0;
  while (at != kNone) {
    const Index next = terms_[at].next;
    if (isOperator(at) && tokenOf(at).operatorFunction() == MXOperatorComma) {
      addArgument(function, first, last, count, true);
      first = last = kNone;
      count = 0;
    } else {
      if (first == kNone) first = at;
      last = at;
      ++count;
    }
    at = next;
  }
  addArgument(function, first, last, count, false);
}

void TermReduction::addArgument(Index function, Index first, Index last, Index count, bool closes) {
  if (count == 1) {
    append(function, first);
    return;
  }
  if (count == 0 && !closes) return;
  const Index group = addTerm(Kind::group, kNone);
  append(function, group);
  for (Index at = first; count > 0; --count) {
    const Index next = at == last ? kNone : terms_[at].next;
    append(group, at);
    at = next;
  }
}

bool TermReduction::resolveAll() {
  waiting_.push_back(0);
  while (!waiting_.empty()) {
    const Index index = waiting_.back();
    waiting_.pop_back();
    switch (terms_[index].kind) {
      case Kind::number:
      case Kind::variable:
        break;
      case Kind::op:
        return failUnfolded(index);
      case Kind::group:
        if (!reduceGroup(index)) return false;
        if (terms_[index].count == 1) waiting_.push_back(terms_[index].first);
        break;
      case Kind::function:
        for (Index at = terms_[index].last; at != kNone; at = terms_[at].previous) {
          waiting_.push_back(at);
        }
        break;
    }
  }
  return true;
}

bool TermReduction::reduceGroup(Index group) {
  if (terms_[group].count < 2) return true;
  candidates_.clear();
  for (Index at = terms_[group].first; at != kNone; at = terms_[at].next) {
    if (isOperator(at)) candidates_.push_back({tokenOf(at).operatorPrecedence(), at});
  }
  std::stable_sort(
      candidates_.begin(), candidates_.end(),
      [](const Candidate& a, const Candidate& b) { return a.precedence > b.precedence; });
  const Candidate* const end = candidates_.data() + candidates_.size();
  for (const Candidate* from = candidates_.data(); from != end && terms_[group].count > 1;) {
    const Candidate* to = from;
    while (to != end && to->precedence == from->precedence) ++to;
    if (!reduceLevel(group, from, to)) return false;
    from = to;
  }
  if (terms_[group].count > 1) {
    return failFor(MXErrorCode::invalidFormat, fmt::format("invalid format: {}", describe(group)),
                   group);
  }
  return true;
}

bool TermReduction::reduceLevel(Index group, const Candidate* from, const Candidate* to) {
  while (terms_[group].count > 1) {
    while (from != to && terms_[from->term].owner != group) ++from;
    while (from != to && terms_[to[-1].term].owner != group) --to;
    if (from == to) return true;
    if (!fold(group, groupsRight(from->term) ? to[-1].term : from->term)) return false;
  }
  return true;
}

bool TermReduction::fold(Index group, Index op) {
  switch (tokenOf(op).operatorArity()) {
    case MXOperatorArity::binary:
      return foldBinary(group, op);
    case MXOperatorArity::unary:
      return foldUnary(group, op);
    default:
      return failAt(MXErrorCode::unknownArity, "unknown arity for operator: {}", op);
  }
}

bool TermReduction::foldBinary(Index group, Index op) {
  if (terms_[op].previous == kNone) {
    return failAt(MXErrorCode::noLeftOperandToBinary, "no left operand to binary {}", op);
  }
  if (terms_[op].next == kNone) {
    return failAt(MXErrorCode::noRightOperandToBinary, "no right operand to binary {}", op);
  }
  if (isOperator(terms_[op].next) && !wrapRightOperand(group, op)) return false;
  replace(group, terms_[op].previous, terms_[op].next, op);
  return true;
}

// A run of unary operators and the operand behind it become a group. A run before a binary operator
// has no operand to wrap: its first operator stays as the operand and fails when it is resolved.
bool TermReduction::wrapRightOperand(Index group, Index op) {
  const Index first = terms_[op].next;
  Index end = first;
  Index last = kNone;
  while (end != kNone && isOperator(end) &&
         tokenOf(end).operatorArity() == MXOperatorArity::unary) {
    last = end;
    end = terms_[end].next;
  }
  if (end == kNone) {
    return failAt(MXErrorCode::noRightOperandToUnary, "no right operand to unary {}", last);
  }
  if (last == kNone || isOperator(end)) return true;
  const Index behind = terms_[end].next;
  const Index wrapped = addTerm(Kind::group, kNone);
  for (Index at = first; at != behind;) {
    const Index next = terms_[at].next;
    detach(group, at);
    append(wrapped, at);
    at = next;
  }
  terms_[wrapped].owner = group;
  terms_[wrapped].previous = op;
  terms_[wrapped].next = behind;
  terms_[op].next = wrapped;
  (behind == kNone ? terms_[group].last : terms_[behind].previous) = wrapped;
  ++terms_[group].count;
  return true;
}

bool TermReduction::foldUnary(Index group, Index op) {
  const bool prefix = groupsRight(op);
  if (prefix && terms_[op].next == kNone) {
    return failAt(MXErrorCode::noRightOperandToUnary, "no right operand to unary {}", op);
  }
  if (!prefix && terms_[op].previous == kNone) {
    return failAt(MXErrorCode::noLeftOperandToUnary, "no left operand to unary {}", op);
  }
  replace(group, prefix ? op : terms_[op].previous, prefix ? terms_[op].next : op, op);
  return true;
}

// Puts a function of the other terms between `first` and `last` in the place of all of them.
void TermReduction::replace(Index group, Index first, Index last, Index op) {
  const Index function = addTerm(Kind::function, terms_[op].token);
  terms_[function].folded = true;
  const Index before = terms_[first].previous;
  const Index behind = terms_[last].next;
  for (Index at = first; at != behind;) {
    const Index next = terms_[at].next;
    detach(group, at);
    if (at != op) append(function, at);
    at = next;
  }
  terms_[function].owner = group;
  terms_[function].previous = before;
  terms_[function].next = behind;
  (before == kNone ? terms_[group].first : terms_[before].next) = function;
  (behind == kNone ? terms_[group].last : terms_[behind].previous) = function;
  ++terms_[group].count;
}

bool TermReduction::failUnfolded(Index op) {
  if (tokenOf(op).operatorArity() != MXOperatorArity::unary) {
    return failAt(MXErrorCode::missingOperands, "missing operands for operator: {}", op);
  }
  if (groupsRight(op)) {
    return failAt(MXErrorCode::noRightOperandToUnary, "no right operand to unary {}", op);
  }
  return failAt(MXErrorCode::noLeftOperandToUnary, "no left operand to unary {}", op);
}

bool TermReduction::produce() {
  // A function comes twice: before its arguments, and behind them when they stand in the tree.
  struct Step {
    Index term;
    bool closes;
    std::uint32_t firstNode;
  };
  std::vector<Step> steps{{0, false, 0}};
  while (!steps.empty()) {
    const Step step = steps.back();
    steps.pop_back();
    const Term& term = terms_[step.term];
    if (step.closes) {
      addNamed(term, tree_.count() - step.firstNode);
    } else if (term.kind == Kind::group) {
      if (term.count != 1) {
        return failFor(
            MXErrorCode::invalidFormat,
            fmt::format("Unable to create expression from term: {}", describe(step.term)),
            step.term);
      }
      steps.push_back({term.first, false, 0});
    } else if (term.kind == Kind::function) {
      steps.push_back({step.term, true, tree_.count()});
      for (Index at = term.last; at != kNone; at = terms_[at].previous) {
        steps.push_back({at, false, 0});
      }
    } else if (!produceLeaf(step.term)) {
      return false;
    }
  }
  return true;
}

bool TermReduction::produceLeaf(Index index) {
  const MXMathStringToken& token = tokenOf(index);
  if (terms_[index].kind == Kind::number) {
    tree_.addNumber(token.numberValue());
    return true;
  }
  auto name = token.token().view();
  if (!name.empty() && name.front() == '$') name.remove_prefix(1);
  if (name.empty()) {
    return failOf(MXErrorCode::invalidVariable, "variable names must be at least 1 character long",
                  token);
  }
  tree_.addVariable(sliceOf(name, token), static_cast<std::uint32_t>(name.size()));
  return true;
}

void TermReduction::addNamed(const Term& term, std::uint32_t nodes) {
  const std::string name = functionName(term);
  const Builtin builtin = builtinNamed(name);
  if (term.folded) return tree_.addNamed(builtin, name, term.count, nodes);
  tree_.addFunction(builtin, term.count, nodes, sliceOf(name, *tokens_[term.token]),
                    static_cast<std::uint32_t>(name.size()));
}

// In the text, so that its place is known, unless the name is not written there as it is.
std::uint32_t TermReduction::sliceOf(std::string_view name, const MXMathStringToken& token) {
  const auto written =
      tree_.text().substr(std::min(token.offset(), tree_.text().size()), token.length());
  const auto at = written.find(name);
  if (at == written.npos) return tree_.keep(name);
  return static_cast<std::uint32_t>(token.offset() + at);
}

bool TermReduction::groupsRight(Index op) const {
  return parser_.associativityForOperatorFunction(tokenOf(op).operatorFunction()) ==
         MXOperatorAssociativity::right;
}

std::string TermReduction::functionName(const Term& term) const {
  const MXMathStringToken& token = *tokens_[term.token];
  return (term.folded ? token.operatorFunction() : token.token()).toStdString();
}

std::string TermReduction::describe(Index term) const {
  std::string text;
  struct Step {
    Index term;
    const char* text;  // written when there is no term
  };
  std::vector<Step> steps{{term, nullptr}};
  while (!steps.empty()) {
    const Step step = steps.back();
    steps.pop_back();
    if (step.term == kNone) {
      text += step.text;
      continue;
    }
    const Term& at = terms_[step.term];
    if (at.kind == Kind::group || at.kind == Kind::function) {
      const bool isFunction = at.kind == Kind::function;
      text += isFunction ? functionName(at) + "(" : "(";
      steps.push_back({kNone, ")"});
      for (Index sub = at.last; sub != kNone; sub = terms_[sub].previous) {
        steps.push_back({sub, nullptr});
        if (isFunction && terms_[sub].previous != kNone) steps.push_back({kNone, ","});
      }
    } else {
      text += tokenOf(step.term).description().view();
    }
  }
  return text;
}

bool TermReduction::failAt(MXErrorCode code, const char* message, Index op) {
  return failOf(code, fmt::format(fmt::runtime(message), tokenOf(op).token().view()), tokenOf(op));
}

bool TermReduction::failOf(MXErrorCode code, std::string message, const MXMathStringToken& token) {
  error_ = MXError(code, std::move(message));
  error_.setPlace(token.offset(), token.length());
  return false;
}

// From the first token to the last of those in it, unless an operator stands where an operand
// should: that is at fault then. An empty one is where its owner is, and an empty text at its
// beginning.
bool TermReduction::failFor(MXErrorCode code, std::string message, Index term) {
  const Term& empty = terms_[term];
  if (empty.count == 0 && empty.token == kNone && empty.owner != kNone) {
    return failOf(code, std::move(message), tokenOf(empty.owner));
  }
  error_ = MXError(code, std::move(message));
  std::size_t from = MXError::kNoOffset;
  std::size_t to = 0;
  const MXMathStringToken* misplaced = nullptr;
  std::vector<Index> terms{term};
  while (!terms.empty()) {
    const Term& at = terms_[terms.back()];
    terms.pop_back();
    if (at.kind == Kind::op && (!misplaced || tokens_[at.token]->offset() < misplaced->offset())) {
      misplaced = tokens_[at.token].get();
    }
    if (at.token != kNone && tokens_[at.token]->offset() != MXError::kNoOffset) {
      const MXMathStringToken& token = *tokens_[at.token];
      from = std::min(from, token.offset());
      to = std::max(to, token.offset() + token.length());
    }
    for (Index sub = at.first; sub != kNone; sub = terms_[sub].next) terms.push_back(sub);
  }
  if (misplaced) {
    error_.setPlace(misplaced->offset(), misplaced->length());
  } else if (from != MXError::kNoOffset) {
    error_.setPlace(from, to - from);
  } else if (tokens_.empty()) {
    error_.setPlace(0, 0);
  }
  return false;
}

}  // namespace tarnkit::detail
