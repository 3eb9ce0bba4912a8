#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tarnkit/platform/collections/OrderedMap.h"

namespace tarnkit {

/// What went wrong in the engine; the numbers are part of its interface.
enum class MXErrorCode : int {
  none = 0,
  invalidFormat = 1,
  invalidOperator = 2,
  invalidIdentifier = 3,
  invalidVariable = 4,
  invalidNumber = 5,
  unknownOperatorPrecedence = 6,
  imbalancedParentheses = 7,
  unknownArity = 8,
  noLeftOperandToBinary = 9,
  noRightOperandToBinary = 10,
  noLeftOperandToUnary = 11,
  noRightOperandToUnary = 12,
  missingOperands = 13,
  invalidArgument = 18,
};

/// The error domain of the engine.
inline constexpr std::string_view MXErrorDomain = "org.tarnkit.math";
/// User-info key of the name of a variable that could not be resolved.
inline constexpr const char* MXUnknownVariableKey = "org.tarnkit.math.Variable";
/// User-info key of the name of a function that could not be resolved.
inline constexpr const char* MXUnknownFunctionKey = "org.tarnkit.math.Function";

/// The engine's error: a code, a message, for unresolved names the name, and where it can be told
/// the place in the text.
///
/// A default-made one is an empty slot. Operations that can fail take an `MXError*`, which may be
/// null, and write it only when they fail. A plain value, copied freely.
class MXError {
 public:
  /// The offset of an error that has no place.
  static constexpr std::size_t kNoOffset = static_cast<std::size_t>(-1);

  MXError() = default;
  MXError(MXErrorCode code, std::string message) : code_(code), message_(std::move(message)) {}

  /// Whether the slot holds an error.
  explicit operator bool() const noexcept { return code_ != MXErrorCode::none; }
  MXErrorCode code() const noexcept { return code_; }
  std::string_view domain() const noexcept { return MXErrorDomain; }
  const std::string& localizedDescription() const noexcept { return message_; }
  /// Further facts by key: `MXUnknownVariableKey` or `MXUnknownFunctionKey`.
  const OrderedMap<String>& userInfo() const noexcept { return userInfo_; }
  void setUserInfo(const String& value, const String& forKey) { userInfo_.set(forKey, value); }

  /// Where in the text what is at fault begins, and how long it is, in bytes of UTF-8. The text is
  /// the one that was handed over for this operation, or of which the expression was made; what is
  /// wrong in the text of a variable's value is at fault where the variable stands. A length of 0
  /// is a place between two characters.
  ///
  /// Tokenizing and parsing always tell a place, and so does evaluation where the expression was
  /// made of a text. There is none in a text that is not UTF-8 or too long to be read at all, and
  /// none of a variable whose name is written with backslashes; compiled expressions tell none.
  std::size_t offset() const noexcept { return offset_; }
  /// 0 without a place.
  std::size_t length() const noexcept { return length_; }
  bool hasPlace() const noexcept { return offset_ != kNoOffset; }
  void setPlace(std::size_t offset, std::size_t length) noexcept {
    offset_ = offset;
    length_ = length;
  }
  void removePlace() noexcept { setPlace(kNoOffset, 0); }

  /// Writes an error into a slot that may be null.
  static void set(MXError* slot, MXErrorCode code, std::string message) {
    if (slot) *slot = MXError(code, std::move(message));
  }
  static void set(MXError* slot, const MXError& error) {
    if (slot) *slot = error;
  }

 private:
  MXErrorCode code_ = MXErrorCode::none;
  std::size_t offset_ = kNoOffset;
  std::size_t length_ = 0;
  std::string message_;
  OrderedMap<String> userInfo_;
};

}  // namespace tarnkit
