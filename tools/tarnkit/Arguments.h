#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/platform/collections/OrderedMap.h"
#include "tools/tarnkit/ValueReading.h"

namespace tarnkit {
class HXRNodeClass;
}  // namespace tarnkit

namespace tarnkit::tool {

/// The arguments of one operation of a session. Reading one of another type than asked for throws
/// CommandFailure; so does asking for one that is not there, except where a fallback is given.
/// Refers to the operation's JSON, which must outlive it.
class Arguments {
 public:
  explicit Arguments(const Json& operation) : operation_(operation) {}

  /// Checks the names: `allowed` lists them, separated by blanks, those that may be missing
  /// followed by "?". Throws for one that is missing, or that is not in the list.
  void check(std::string_view allowed) const;

  bool has(std::string_view name) const;

  std::string text(std::string_view name) const;
  /// "" when it is missing.
  std::string optionalText(std::string_view name) const;
  /// Nil for null, and when it is missing.
  String textOrNil(std::string_view name) const;
  bool boolean(std::string_view name) const;
  std::int32_t integer(std::string_view name) const;
  std::int32_t integer(std::string_view name, std::int32_t fallback) const;
  std::uint64_t unsignedInteger(std::string_view name) const;
  float number(std::string_view name) const;
  HXPoint point(std::string_view name) const;
  RGBA color(std::string_view name) const;
  Ref<PMRPrimitive> primitive(std::string_view name) const;
  /// Null for null.
  Ref<PMRPrimitive> primitiveOrNull(std::string_view name) const;
  std::vector<String> texts(std::string_view name) const;
  /// Of an object whose values are strings; empty when it is missing.
  OrderedMap<String> textsByKey(std::string_view name) const;
  /// 1 or 2.
  std::int32_t orientation(std::string_view name) const;
  /// One of the given words.
  std::string word(std::string_view name, std::initializer_list<std::string_view> words) const;

 private:
  const Json& at(std::string_view name) const;

  const Json& operation_;
};

/// The patch class of that name; throws CommandFailure, with what was probably meant, when there is
/// none. The name that people see in the library leads to its class.
const HXRNodeClass& patchClassGiven(std::string_view name);

}  // namespace tarnkit::tool
