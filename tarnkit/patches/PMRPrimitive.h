#pragma once

#include <cstdint>

#include "tarnkit/patches/RGBA.h"
#include "tarnkit/platform/objects/Object.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

/// The one tagged scalar value of the system: port defaults, static values and parameter values.
///
/// It holds nil, a boolean, an index, a number, an angle in radians or degrees, a colour or a
/// string, and every kind reads as every other. It is mutable, and changes kind when a setter of
/// another kind is used, until it becomes a port's default or mapped value: many ports share those.
/// Archived under its own name in both vocabularies. For one thread at a time.
class PMRPrimitive final : public Object {
  TARNKIT_CLASS
 public:
  /// Signed and 64 bits wide, because a code read from an archive is kept as it is, known or not.
  enum StorageType : std::int64_t {
    nil = 0,
    boolean = 1,
    index = 2,
    number = 3,
    radians = 4,
    degrees = 5,
    color = 6,
    string = 7,
  };

  /// Nil.
  PMRPrimitive() noexcept = default;
  static Ref<PMRPrimitive> primitiveWithNilValue();
  static Ref<PMRPrimitive> primitiveWithBooleanValue(bool value);
  static Ref<PMRPrimitive> primitiveWithIndexValue(std::int32_t value);
  static Ref<PMRPrimitive> primitiveWithNumberValue(float value);
  /// Angles stay in the unit in which they are given.
  static Ref<PMRPrimitive> primitiveWithRadiansValue(float value);
  static Ref<PMRPrimitive> primitiveWithDegreesValue(float value);
  static Ref<PMRPrimitive> primitiveWithColorValue(RGBA value);
  /// A nil string is stored as "".
  static Ref<PMRPrimitive> primitiveWithStringValue(String value);

  std::int64_t storageType() const noexcept {
    return type_ == kUnknownType ? payload_.code : type_;
  }

  /// From now on the value stays as it is: a setter logs one line and does nothing. A copy may be
  /// changed.
  void freeze() noexcept { frozen_ = true; }
  bool isFrozen() const noexcept { return frozen_; }

  void setBooleanValue(bool value);
  void setIndexValue(std::int32_t value);
  void setNumberValue(float value);
  void setRadiansValue(float value);
  void setDegreesValue(float value);
  void setColorValue(RGBA value);
  void setStringValue(String value);
  /// Makes the value nil.
  void clearStorage();

  bool booleanValue() const;
  std::int32_t indexValue() const;
  float numberValue() const;
  float radiansValue() const;
  float degreesValue() const;
  RGBA colorValue() const;
  String stringValue() const;

  /// The value as a platform object (`Number`, `Color`, a string), angles in radians; null for nil.
  Ref<Object> toObject() const;
  Ref<PMRPrimitive> copy() const;
  String description() const override;
  /// Kind is part of the value: a number never equals an index, nor radians the same angle in
  /// degrees.
  bool isEqual(const Object& other) const override;
  std::uint64_t hash() const override;
  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;

 private:
  static constexpr std::int32_t kUnknownType = -1;
  /// Makes the value of that kind, its payload to be set; false, and one line logged, when it is
  /// frozen.
  bool startChange(StorageType type);

  std::int32_t type_ = nil;  // kUnknownType: the payload's code
  bool frozen_ = false;
  union Payload {
    std::int64_t code;
    bool boolean;
    std::int32_t index;
    float number;
    RGBA color{};
  } payload_;
  String string_;
};

}  // namespace tarnkit
