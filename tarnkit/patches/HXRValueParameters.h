#pragma once

#include <cstdint>
#include <span>

#include "tarnkit/patches/HXRParameter.h"
#include "tarnkit/patches/RGBA.h"

namespace tarnkit {

/// What a parameter description needs of its editor twin: to read and set its value.
template <class Value>
class HXRValueHolder {
 public:
  virtual Value value() const = 0;
  virtual void setValue(Value value) = 0;

 protected:
  ~HXRValueHolder() = default;
};

/// The common part of the parameter kinds: a stored default, and a value that is the editor twin's
/// once there is one.
template <class Value>
class HXRValueParameter : public HXRParameter {
 public:
  using HXRParameter::HXRParameter;

  HXRParameterKind kind() const override = 0;

  /// The twin's value; without a twin the default. Never clamped to the bounds.
  Value value() const {
    const auto* holder = this->holder();
    return holder ? holder->value() : defaultValue_;
  }
  /// Sets the twin's value; without a twin the default.
  void setValue(Value value) {
    if (auto* holder = this->holder()) {
      holder->setValue(std::move(value));
    } else {
      defaultValue_ = std::move(value);
    }
  }
  /// The stored default, never the twin's value.
  const Value& defaultValue() const noexcept { return defaultValue_; }

  void setParameter(HXRParameterTwin* parameter) override {
    HXRParameter::setParameter(holderOf(parameter) ? parameter : nullptr);
  }
  HXRValueParameter(const HXRValueParameter& other)
      : HXRParameter(other), defaultValue_(other.defaultValue_) {}

 private:
  /// Null for no twin, and for one of another kind.
  static HXRValueHolder<Value>* holderOf(HXRParameterTwin* parameter) {
    if (!parameter) return nullptr;
    const auto kind = parameter->valueHolder();
    const auto* const holder = std::get_if<HXRValueHolder<Value>*>(&kind);
    return holder ? *holder : nullptr;
  }
  HXRValueHolder<Value>* holder() const { return holderOf(parameter()); }

  Value defaultValue_{};
};

/// Describes a switch.
class HXRBooleanParameter final : public HXRValueParameter<bool> {
  TARNKIT_CLASS_OF(HXRParameterClass)
 public:
  using HXRValueParameter::HXRValueParameter;
  HXRParameterKind kind() const override { return this; }
  Ref<HXRParameter> copy() const override;
};

/// A parameter with bounds. The bounds are the editor's business: nothing here clamps to them.
template <class Value>
class HXRBoundedParameter : public HXRValueParameter<Value> {
 public:
  using HXRValueParameter<Value>::HXRValueParameter;
  Value minimumValue() const noexcept { return minimumValue_; }
  void setMinimumValue(Value value) noexcept { minimumValue_ = value; }
  Value maximumValue() const noexcept { return maximumValue_; }
  void setMaximumValue(Value value) noexcept { maximumValue_ = value; }

 private:
  Value minimumValue_{};
  Value maximumValue_{};
};

/// Describes a number.
class HXRNumberParameter final : public HXRBoundedParameter<float> {
  TARNKIT_CLASS_OF(HXRParameterClass)
 public:
  using HXRBoundedParameter::HXRBoundedParameter;
  HXRParameterKind kind() const override { return this; }
  Ref<HXRParameter> copy() const override;
};

/// Describes a whole number, such as a count of ports.
class HXRIndexParameter final : public HXRBoundedParameter<std::int32_t> {
  TARNKIT_CLASS_OF(HXRParameterClass)
 public:
  using HXRBoundedParameter::HXRBoundedParameter;
  HXRParameterKind kind() const override { return this; }
  Ref<HXRParameter> copy() const override;
};

/// Describes a text.
class HXRStringParameter final : public HXRValueParameter<String> {
  TARNKIT_CLASS_OF(HXRParameterClass)
 public:
  using HXRValueParameter::HXRValueParameter;
  /// How the editor shows the text field: 0 one line, 1 several.
  std::int32_t displayStyle() const noexcept { return displayStyle_; }
  void setDisplayStyle(std::int32_t style) noexcept { displayStyle_ = style; }
  HXRParameterKind kind() const override { return this; }
  Ref<HXRParameter> copy() const override;

 private:
  std::int32_t displayStyle_ = 0;
};

/// Describes a colour.
class HXRColorParameter final : public HXRValueParameter<RGBA> {
  TARNKIT_CLASS_OF(HXRParameterClass)
 public:
  using HXRValueParameter::HXRValueParameter;
  HXRParameterKind kind() const override { return this; }
  Ref<HXRParameter> copy() const override;
};

/// The value is an image store entry (`HXImageStoreEntry` of the model), or null.
class HXRImageParameter final : public HXRValueParameter<Ref<Object>> {
  TARNKIT_CLASS_OF(HXRParameterClass)
 public:
  using HXRValueParameter::HXRValueParameter;
  Ref<Object> imageEntry() const { return value(); }
  void setImageEntry(Ref<Object> entry) { setValue(std::move(entry)); }
  const Ref<Object>& defaultImageEntry() const noexcept { return defaultValue(); }
  HXRParameterKind kind() const override { return this; }
  Ref<HXRParameter> copy() const override;
};

/// Every class of parameter descriptions, `HXRParameter` included.
std::span<const HXRParameterClass* const> parameterClasses();

}  // namespace tarnkit
