#include "tests/math/ReferenceParser.h"

#include <memory>
#include <vector>

#include "tests/math/MathTesting.h"

namespace tarnkit::testing {

namespace {

struct Failure {
  int code;
  std::string message;
};
[[noreturn]] void fail(int code, const std::string& message) { throw Failure{code, message}; }

struct Term {
  enum Kind { number, variable, op, function, group } kind;
  Ref<MXMathStringToken> token;
  std::string name;
  std::vector<std::shared_ptr<Term>> subterms;

  std::string text() const { return token->token().toStdString(); }
  std::string describe() const {
    if (kind == number || kind == op) return text();
    if (kind == variable) return "$" + text();
    std::string inside;
    for (std::size_t i = 0; i < subterms.size(); ++i) {
      if (kind == function && i > 0) inside += ",";
      inside += subterms[i]->describe();
    }
    return (kind == function ? name : "") + "(" + inside + ")";
  }
};
using TermRef = std::shared_ptr<Term>;
using Terms = std::vector<TermRef>;

bool isUnary(const Term& term) {
  return term.kind == Term::op && term.token->operatorArity() == MXOperatorArity::unary;
}

class Reference {
 public:
  explicit Reference(Ref<MXMathStringTokenizer> tokenizer) : tokenizer_(std::move(tokenizer)) {}

  std::string parse() {
    const auto root = std::make_shared<Term>(Term{Term::group, nullptr, "", {}});
    while (tokenizer_->peekNextObject()) root->subterms.push_back(readTerm());
    resolve(*root);
    return expression(*root);
  }

 private:
  TermRef readTerm() {
    const auto token = tokenizer_->peekNextObject();
    switch (token->tokenType()) {
      case MXTokenType::number:
        return leaf(Term::number);
      case MXTokenType::variable:
        return leaf(Term::variable);
      case MXTokenType::function:
        return readFunction();
      case MXTokenType::op:
        break;
    }
    return token->operatorFunction() == "open_paren" ? readGroup() : leaf(Term::op);
  }

  TermRef leaf(Term::Kind kind) {
    return std::make_shared<Term>(Term{kind, tokenizer_->nextObject(), "", {}});
  }

  TermRef readGroup() {
    auto group = leaf(Term::group);
    for (;;) {
      const auto next = tokenizer_->peekNextObject();
      if (!next) fail(7, "imbalanced parentheses");
      if (next->tokenType() == MXTokenType::op && next->operatorFunction() == "close_paren") break;
      group->subterms.push_back(readTerm());
    }
    tokenizer_->nextObject();
    return group;
  }

  TermRef readFunction() {
    auto function = leaf(Term::function);
    function->name = function->text();
    TermRef group;
    try {
      group = readGroup();
    } catch (const Failure&) {
      fail(7, "missing parentheses after function \"" + function->name + "\"");
    }
    Terms stretch;
    const auto close = [&](bool mayBeEmpty) {
      if (stretch.size() == 1) {
        function->subterms.push_back(stretch.front());
      } else if (!stretch.empty() || mayBeEmpty) {
        function->subterms.push_back(
            std::make_shared<Term>(Term{Term::group, nullptr, "", stretch}));
      }
      stretch.clear();
    };
    for (const auto& term : group->subterms) {
      if (term->kind == Term::op && term->token->operatorFunction() == "comma") {
        close(true);
      } else {
        stretch.push_back(term);
      }
    }
    close(false);
    return function;
  }

  bool groupsRight(const Term& op) const {
    const auto info = tokenizer_->operatorSet()->operatorForFunction(op.token->operatorFunction());
    return info && info->associativity() == MXOperatorAssociativity::right;
  }

  void resolve(Term& term) {
    if (term.kind == Term::op) {
      if (!isUnary(term)) fail(13, "missing operands for operator: " + term.text());
      fail(groupsRight(term) ? 12 : 11, std::string(groupsRight(term) ? "no right" : "no left") +
                                            " operand to unary " + term.text());
    }
    if (term.kind == Term::function) {
      for (const auto& argument : term.subterms) resolve(*argument);
    }
    if (term.kind != Term::group) return;
    while (term.subterms.size() > 1) foldOnce(term);
    if (term.subterms.size() == 1) resolve(*term.subterms.front());
  }

  void foldOnce(Term& group) {
    std::vector<std::size_t> tightest;
    std::int64_t precedence = 0;
    for (std::size_t i = 0; i < group.subterms.size(); ++i) {
      const Term& term = *group.subterms[i];
      if (term.kind != Term::op) continue;
      if (tightest.empty() || term.token->operatorPrecedence() > precedence) {
        tightest.clear();
        precedence = term.token->operatorPrecedence();
      }
      if (term.token->operatorPrecedence() == precedence) tightest.push_back(i);
    }
    if (tightest.empty()) fail(1, "invalid format: " + group.describe());
    const bool fromRight = groupsRight(*group.subterms[tightest.front()]);
    const std::size_t at = fromRight ? tightest.back() : tightest.front();
    const Term& op = *group.subterms[at];
    if (op.token->operatorArity() == MXOperatorArity::binary) {
      foldBinary(group.subterms, at);
    } else if (isUnary(op)) {
      foldUnary(group.subterms, at);
    } else {
      fail(8, "unknown arity for operator: " + op.text());
    }
  }

  static void replace(Terms& terms, std::size_t from, std::size_t to, const TermRef& with) {
    terms.erase(terms.begin() + static_cast<std::ptrdiff_t>(from),
                terms.begin() + static_cast<std::ptrdiff_t>(to));
    terms.insert(terms.begin() + static_cast<std::ptrdiff_t>(from), with);
  }

  static TermRef folded(const Term& op, Terms operands) {
    return std::make_shared<Term>(Term{
        Term::function, nullptr, op.token->operatorFunction().toStdString(), std::move(operands)});
  }

  static void foldBinary(Terms& terms, std::size_t at) {
    const std::string text = terms[at]->text();
    if (at == 0) fail(9, "no left operand to binary " + text);
    if (at + 1 == terms.size()) fail(10, "no right operand to binary " + text);
    if (terms[at + 1]->kind == Term::op) {
      std::size_t end = at + 1;
      while (end < terms.size() && isUnary(*terms[end])) ++end;
      if (end == terms.size()) fail(12, "no right operand to unary " + terms[end - 1]->text());
      if (end > at + 1 && terms[end]->kind != Term::op) {
        const Terms run(terms.begin() + static_cast<std::ptrdiff_t>(at) + 1,
                        terms.begin() + static_cast<std::ptrdiff_t>(end) + 1);
        replace(terms, at + 1, end + 1,
                std::make_shared<Term>(Term{Term::group, nullptr, "", run}));
      }
    }
    replace(terms, at - 1, at + 2, folded(*terms[at], {terms[at - 1], terms[at + 1]}));
  }

  void foldUnary(Terms& terms, std::size_t at) const {
    const std::string text = terms[at]->text();
    if (groupsRight(*terms[at])) {
      if (at + 1 == terms.size()) fail(12, "no right operand to unary " + text);
      replace(terms, at, at + 2, folded(*terms[at], {terms[at + 1]}));
    } else {
      if (at == 0) fail(11, "no left operand to unary " + text);
      replace(terms, at - 1, at + 1, folded(*terms[at], {terms[at - 1]}));
    }
  }

  static std::string expression(const Term& term) {
    if (term.kind == Term::number) return term.token->numberValue().text();
    if (term.kind == Term::variable) {
      std::string name = term.text();
      if (!name.empty() && name.front() == '$') name.erase(0, 1);
      if (name.empty()) fail(4, "variable names must be at least 1 character long");
      return "$" + name;
    }
    if (term.kind == Term::group) {
      if (term.subterms.size() != 1) {
        fail(1, "Unable to create expression from term: " + term.describe());
      }
      return expression(*term.subterms.front());
    }
    std::string text = term.name + "(";
    for (std::size_t i = 0; i < term.subterms.size(); ++i) {
      text += (i > 0 ? "," : "") + expression(*term.subterms[i]);
    }
    return text + ")";
  }

  Ref<MXMathStringTokenizer> tokenizer_;
};

}  // namespace

std::string referenceParse(std::string_view text) {
  MXError error;
  auto tokenizer = MXMathStringTokenizer::tokenizerWithString(text, &error);
  if (!tokenizer) return textOf(error);
  try {
    return Reference(std::move(tokenizer)).parse();
  } catch (const Failure& failure) {
    return std::to_string(failure.code) + " " + failure.message;
  }
}

}  // namespace tarnkit::testing
