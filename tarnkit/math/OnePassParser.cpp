#include "tarnkit/math/OnePassParser.h"

#include "tarnkit/math/MathText.h"
#include "tarnkit/math/TokenScannerReaders.h"

namespace tarnkit::detail {

void OnePassParser::noteMixedLevel(const OperatorRow& row) noexcept {
  auto& levels = row.parserAssociativity == MXOperatorAssociativity::right ? frame_->rightLevels
                                                                           : frame_->leftLevels;
  levels |= row.mixedLevel;
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

void OnePassParser::reduceTighter(std::uint8_t level) {
  while (operators_.size() > frame_->firstOperator) {
    const PendingOperator& top = operators_.back();
    if (top.level < level || (top.level == level && top.groupsRight)) return;
    reduceTop();
  }
}

bool OnePassParser::addBinary(std::uint16_t index) {
  const OperatorRow& row = table_.row(index);
  if (expectsOperand_ || row.level > lastPostfix_) return false;
  noteLevel(row);
  reduceTighter(row.level);
  PendingOperator& pending = operators_.add();
  pending.row = index;
  pending.level = pending.ownLevel = row.level;
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
  // Only an exponent: a number without digits, which is 0 and told in the log.
  if (first == '.' && length > 1 && (text_[offset + 1] | 0x20) == 'e') return false;
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

template <MXTokenType Type>
bool OnePassParser::take(const ScannedToken& token) {
  if constexpr (Type == MXTokenType::number) return addNumber(token);
  if constexpr (Type == MXTokenType::variable) return addVariable(token);
  if constexpr (Type == MXTokenType::function) return openFunction(token);
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
  frame_ = &frame;
  return frame;
}

bool OnePassParser::closeGroup() {
  if (frames_.size() == 1) return false;
  if (frame_->isFunction) {
    const bool isEmpty =
        expectsOperand_ && frame_->arguments == 0 && operators_.size() == frame_->firstOperator;
    if (!isEmpty) {
      if (!endGroup()) return false;
      ++frame_->arguments;
    }
    tree_.addFunction(frame_->builtin, frame_->arguments, tree_.count() - frame_->firstNode,
                      frame_->nameOffset, frame_->nameLength);
  } else if (!endGroup()) {
    return false;
  }
  endFrame();
  operandEnds();
  return true;
}

bool OnePassParser::nextArgument() {
  if (!frame_->isFunction || !endGroup()) return false;
  ++frame_->arguments;
  frame_->leftLevels = frame_->rightLevels = 0;
  expectsOperand_ = true;
  return true;
}

bool OnePassParser::addPrefix(std::uint16_t index) {
  if (!expectsOperand_) return false;
  const OperatorRow& row = table_.row(index);
  PendingOperator pending{index, row.level, row.level, true, true};
  if (operators_.size() > frame_->firstOperator) {
    // Whatever is on top stands directly before this one.
    const PendingOperator& before = operators_.back();
    if (before.isPrefix && before.ownLevel > row.level) return false;
    if (before.level > row.level) {
      pending.level = before.level;
      pending.groupsRight = before.groupsRight;
    }
  }
  noteLevel(row);
  operators_.push(pending);
  return true;
}

bool OnePassParser::addPostfix(std::uint16_t index) {
  const OperatorRow& row = table_.row(index);
  if (expectsOperand_ || row.level > lastPostfix_) return false;
  noteLevel(row);
  reduceTighter(row.level);
  addUnary(row);
  lastPostfix_ = row.level;
  return true;
}

void OnePassParser::addUnary(const OperatorRow& row) {
  if (row.hasTableName) {
    tree_.addUnary(row.builtin);
  } else {
    tree_.addUnary(row.builtin, row.info->function());
  }
}

bool OnePassParser::endGroup() {
  if (expectsOperand_ || (frame_->leftLevels & frame_->rightLevels) != 0) return false;
  while (operators_.size() > frame_->firstOperator) reduceTop();
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
