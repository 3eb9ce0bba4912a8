#include "tarnkit/math/OnePassParser.h"

#include "tarnkit/math/MathText.h"

namespace tarnkit::detail {

bool OnePassParser::parse() {
  if (!table_.allowsOnePass()) return false;
  TokenScanner scanner(text_, table_, *this);
  return scanner.run() && frames_.empty() && endGroup();
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
  switch (table_.row(token.row).role) {
    case OperatorRole::binary:
      return addBinary(token.row);
    case OperatorRole::prefix:
      return addPrefix(token.row);
    case OperatorRole::postfix:
      return addPostfix(token.row);
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

bool OnePassParser::addNumber(const ScannedToken& token) {
  if (!expectsOperand_) return false;
  const auto slice = text_.substr(token.offset, token.length);
  if (token.form == TokenForm::hexadecimal) {
    const std::uint64_t value = hexadecimalValue(slice);
    const std::string digits = std::to_string(value);
    tree_.addLiteral(static_cast<double>(value), tree_.keep(digits),
                     static_cast<std::uint32_t>(digits.size()));
  } else {
    tree_.addLiteral(readNumber(slice), token.offset, token.length);
  }
  operandEnds();
  return true;
}

bool OnePassParser::addVariable(const ScannedToken& token) {
  if (!expectsOperand_ || token.length == 0) return false;
  if (token.form == TokenForm::escaped || text_[token.offset] == '$') {
    const std::string name = tokenText(token, text_, table_);
    const std::size_t dollar = name.front() == '$' ? 1 : 0;
    if (name.size() == dollar) return false;
    tree_.addVariable(tree_.keep(std::string_view(name).substr(dollar)),
                      static_cast<std::uint32_t>(name.size() - dollar));
  } else {
    tree_.addVariable(token.offset, token.length);
  }
  operandEnds();
  return true;
}

bool OnePassParser::openFunction(const ScannedToken& token) {
  if (!expectsOperand_) return false;
  beginFrame();
  frame_.isFunction = true;
  frame_.builtin = builtinNamed(text_.substr(token.offset, token.length));
  frame_.nameOffset = token.offset;
  frame_.nameLength = token.length;
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

void OnePassParser::beginFrame() {
  frames_.push(frame_);
  frame_.firstOperator = static_cast<std::uint32_t>(operators_.size());
  frame_.firstNode = tree_.count();
  frame_.arguments = 0;
  frame_.isFunction = false;
  frame_.leftLevels = frame_.rightLevels = 0;
}

bool OnePassParser::closeGroup() {
  if (frames_.empty()) return false;
  if (frame_.isFunction) {
    const bool isEmpty =
        expectsOperand_ && frame_.arguments == 0 && operators_.size() == frame_.firstOperator;
    if (!isEmpty) {
      if (!endGroup()) return false;
      ++frame_.arguments;
    }
    tree_.addFunction(frame_.builtin, frame_.arguments, tree_.count() - frame_.firstNode,
                      frame_.nameOffset, frame_.nameLength);
  } else if (!endGroup()) {
    return false;
  }
  frame_ = frames_.back();
  frames_.pop();
  operandEnds();
  return true;
}

bool OnePassParser::nextArgument() {
  if (!frame_.isFunction || !endGroup()) return false;
  ++frame_.arguments;
  frame_.leftLevels = frame_.rightLevels = 0;
  expectsOperand_ = true;
  return true;
}

bool OnePassParser::addPrefix(std::uint16_t index) {
  if (!expectsOperand_) return false;
  const OperatorRow& row = table_.row(index);
  PendingOperator pending{row.precedence, row.precedence, index, true, true};
  if (operators_.size() > frame_.firstOperator) {
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

void OnePassParser::noteLevel(const OperatorRow& row) noexcept {
  auto& levels = row.parserAssociativity == MXOperatorAssociativity::right ? frame_.rightLevels
                                                                           : frame_.leftLevels;
  levels |= std::uint64_t{1} << row.level;
}

void OnePassParser::reduceTighter(std::int64_t precedence) {
  while (operators_.size() > frame_.firstOperator) {
    const PendingOperator& top = operators_.back();
    if (top.precedence < precedence || (top.precedence == precedence && top.groupsRight)) return;
    reduceTop();
  }
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
  if (expectsOperand_ || (frame_.leftLevels & frame_.rightLevels) != 0) return false;
  while (operators_.size() > frame_.firstOperator) reduceTop();
  return true;
}

}  // namespace tarnkit::detail
