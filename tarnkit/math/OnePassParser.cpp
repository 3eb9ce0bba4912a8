#include "tarnkit/math/OnePassParser.h"

#include "tarnkit/math/MathText.h"

namespace tarnkit::detail {

void OnePassParser::noteLevel(const OperatorRow& row) noexcept {
  auto& levels = row.parserAssociativity == MXOperatorAssociativity::right
                     ? frames_.back().rightLevels
                     : frames_.back().leftLevels;
  levels |= std::uint64_t{1} << row.level;
}

void OnePassParser::reduceTighter(std::int64_t precedence) {
  while (operators_.size() > frames_.back().firstOperator) {
    const PendingOperator& top = operators_.back();
    if (top.precedence < precedence || (top.precedence == precedence && top.groupsRight)) return;
    reduceTop();
  }
}

bool OnePassParser::addBinary(std::uint16_t index) {
  const OperatorRow& row = table_.row(index);
  if (expectsOperand_ || row.precedence > lastPostfix_) return false;
  noteLevel(row);
  reduceTighter(row.precedence);
  PendingOperator& pending = operators_.add();
  pending.precedence = pending.ownPrecedence = row.precedence;
  pending.row = index;
  pending.groupsRight = row.parserAssociativity == MXOperatorAssociativity::right;
  pending.isPrefix = false;
  expectsOperand_ = true;
  return true;
}

bool OnePassParser::addNumber(const ScannedToken& token) {
  if (!expectsOperand_) return false;
  if (token.form == TokenForm::hexadecimal) return addRewrittenNumber(token);
  const std::uint32_t offset = token.offset();
  const std::uint32_t length = token.length();
  const char first = text_[offset];
  tree_.addLiteral(length == 1 ? first - '0' : readNumber(text_.substr(offset, length)), offset,
                   length);
  operandEnds();
  return true;
}

bool OnePassParser::addVariable(const ScannedToken& token) {
  if (!expectsOperand_ || token.length() == 0) return false;
  if (token.form == TokenForm::escaped || text_[token.offset()] == '$') {
    return addRewrittenVariable(token);
  }
  tree_.addVariable(token.offset(), token.length());
  operandEnds();
  return true;
}

bool OnePassParser::operator()(const ScannedToken& token) {
  switch (token.type) {
    case MXTokenType::number:
      return addNumber(token);
    case MXTokenType::variable:
      return addVariable(token);
    case MXTokenType::function:
      return openFunction(token);
    case MXTokenType::op:
      break;
  }
  if (token.row == OperatorTable::kNoRow) return false;
  return table_.row(token.row).role == OperatorRole::binary ? addBinary(token.row)
                                                            : addOtherOperator(token.row);
}

bool OnePassParser::addOtherOperator(std::uint16_t index) {
  switch (table_.row(index).role) {
    case OperatorRole::prefix:
      return addPrefix(index);
    case OperatorRole::postfix:
      return addPostfix(index);
    case OperatorRole::open:
      return openGroup();
    case OperatorRole::close:
      return closeGroup();
    case OperatorRole::comma:
      return nextArgument();
    default:
      return false;
  }
}

bool OnePassParser::addRewrittenNumber(const ScannedToken& token) {
  const std::uint64_t value = hexadecimalValue(text_.substr(token.offset(), token.length()));
  const std::string digits = std::to_string(value);
  tree_.addLiteral(static_cast<double>(value), tree_.keep(digits),
                   static_cast<std::uint32_t>(digits.size()));
  operandEnds();
  return true;
}

bool OnePassParser::addRewrittenVariable(const ScannedToken& token) {
  const std::string name = tokenText(token, text_, table_);
  const std::size_t dollar = name.front() == '$' ? 1 : 0;
  if (name.size() == dollar) return false;
  tree_.addVariable(tree_.keep(std::string_view(name).substr(dollar)),
                    static_cast<std::uint32_t>(name.size() - dollar));
  operandEnds();
  return true;
}

bool OnePassParser::openFunction(const ScannedToken& token) {
  if (!expectsOperand_) return false;
  Frame& frame = beginFrame();
  frame.isFunction = true;
  frame.builtin = builtinNamed(text_.substr(token.offset(), token.length()));
  frame.nameOffset = token.offset();
  frame.nameLength = token.length();
  opensArguments_ = true;
  return true;
}

bool OnePassParser::openGroup() {
  if (opensArguments_) {
    opensArguments_ = false;
    return true;
  }
  if (!expectsOperand_) return false;
  beginFrame();
  return true;
}

OnePassParser::Frame& OnePassParser::beginFrame() {
  Frame& frame = frames_.add();
  frame.firstOperator = static_cast<std::uint32_t>(operators_.size());
  frame.firstNode = tree_.count();
  frame.arguments = 0;
  frame.isFunction = false;
  frame.leftLevels = frame.rightLevels = 0;
  return frame;
}

bool OnePassParser::closeGroup() {
  if (frames_.size() == 1) return false;
  if (frames_.back().isFunction) {
    const bool isEmpty = expectsOperand_ && frames_.back().arguments == 0 &&
                         operators_.size() == frames_.back().firstOperator;
    if (!isEmpty) {
      if (!endGroup()) return false;
      ++frames_.back().arguments;
    }
    tree_.addFunction(frames_.back().builtin, frames_.back().arguments,
                      tree_.count() - frames_.back().firstNode, frames_.back().nameOffset,
                      frames_.back().nameLength);
  } else if (!endGroup()) {
    return false;
  }
  frames_.pop();
  operandEnds();
  return true;
}

bool OnePassParser::nextArgument() {
  if (!frames_.back().isFunction || !endGroup()) return false;
  ++frames_.back().arguments;
  frames_.back().leftLevels = frames_.back().rightLevels = 0;
  expectsOperand_ = true;
  return true;
}

bool OnePassParser::addPrefix(std::uint16_t index) {
  if (!expectsOperand_) return false;
  const OperatorRow& row = table_.row(index);
  PendingOperator pending{row.precedence, row.precedence, index, true, true};
  if (operators_.size() > frames_.back().firstOperator) {
    // Whatever is on top stands directly before this one.
    const PendingOperator& before = operators_.back();
    if (before.isPrefix && before.ownPrecedence > row.precedence) return false;
    if (before.precedence > row.precedence) {
      pending.precedence = before.precedence;
      pending.groupsRight = before.groupsRight;
    }
  }
  noteLevel(row);
  operators_.push(pending);
  return true;
}

bool OnePassParser::addPostfix(std::uint16_t index) {
  const OperatorRow& row = table_.row(index);
  if (expectsOperand_ || row.precedence > lastPostfix_) return false;
  noteLevel(row);
  reduceTighter(row.precedence);
  addUnary(row);
  lastPostfix_ = row.precedence;
  return true;
}

void OnePassParser::reduceTop() {
  const PendingOperator& top = operators_.back();
  const OperatorRow& row = table_.row(top.row);
  if (top.isPrefix) {
    addUnary(row);
  } else if (row.hasTableName) {
    tree_.addBinary(row.builtin);
  } else {
    tree_.addBinary(row.builtin, row.info->function());
  }
  operators_.pop();
}

void OnePassParser::addUnary(const OperatorRow& row) {
  if (row.hasTableName) {
    tree_.addUnary(row.builtin);
  } else {
    tree_.addUnary(row.builtin, row.info->function());
  }
}

bool OnePassParser::endGroup() {
  if (expectsOperand_ || (frames_.back().leftLevels & frames_.back().rightLevels) != 0)
    return false;
  while (operators_.size() > frames_.back().firstOperator) reduceTop();
  return true;
}

namespace {
constexpr std::size_t kLongText = 4096;
}

bool OnePassParser::parse() {
  if (!table_.allowsOnePass()) return false;
  // There are hardly more nodes than bytes; growing would copy a long tree again and again.
  if (text_.size() > kLongText) tree_.reserve(text_.size());
  TokenScanner scanner(text_, table_, *this);
  return scanner.run() && frames_.size() == 1 && endGroup();
}

}  // namespace tarnkit::detail
