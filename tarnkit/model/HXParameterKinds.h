#pragma once

#include <cstdint>
#include <utility>

#include "tarnkit/model/HXImageStoreEntry.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/patches/HXRValueParameters.h"

namespace tarnkit {

namespace detail {

/// What the parameter kinds have in common: a value, and how it meets its description.
/// `Description` is the kind of the definition's parameter.
///
/// What changes the value stands in the source: a change is known by an address, of which there
/// must be one in the process, also where the library is a shared object.
template <class Value, class Description>
class HXValueParameter : public HXParameter, public HXRValueHolder<Value> {
 public:
  HXRValueHolderKind valueHolder() final { return static_cast<HXRValueHolder<Value>*>(this); }
  Value value() const override { return value_; }
  /// Stores the value unless it equals the present one, and tells the document and the node.
  void setValue(Value value) override;
  void setPatchParameter(Ref<HXRParameter> patchParameter) override;

 protected:
  /// Null while none is attached.
  const Description* definition() const noexcept {
    return as<Description>(static_cast<const Object*>(patchParameter().get()));
  }
  void decodedValue(Value value) { value_ = std::move(value); }

 private:
  struct Field;
  void storeValue(Value value);

  Value value_{};
};

/// A kind with bounds, read from the description on every call; 0 without one.
template <class Value, class Description>
class HXBoundedParameter : public HXValueParameter<Value, Description> {
 public:
  Value minimumValue() const {
    const auto* definition = this->definition();
    return definition ? definition->minimumValue() : Value{};
  }
  Value maximumValue() const {
    const auto* definition = this->definition();
    return definition ? definition->maximumValue() : Value{};
  }
};

}  // namespace detail

/// A whole number, such as a count of ports. Nothing clamps it to its bounds.
class HXIndexParameter final : public detail::HXBoundedParameter<std::int32_t, HXRIndexParameter> {
  TARNKIT_CLASS
 public:
  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;

 protected:
  HXParameterKind hx_kind() override { return this; }
};

/// A number. Nothing clamps it to its bounds.
class HXNumberParameter final : public detail::HXBoundedParameter<float, HXRNumberParameter> {
  TARNKIT_CLASS
 public:
  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;

 protected:
  HXParameterKind hx_kind() override { return this; }
};

/// A switch.
class HXBooleanParameter final : public detail::HXValueParameter<bool, HXRBooleanParameter> {
  TARNKIT_CLASS
 public:
  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;

 protected:
  HXParameterKind hx_kind() override { return this; }
};

/// A text, such as an expression or a script.
class HXStringParameter final : public detail::HXValueParameter<String, HXRStringParameter> {
  TARNKIT_CLASS
 public:
  /// 0 one line, 1 several; read from the description, 0 without one.
  std::int32_t displayStyle() const;
  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;

 protected:
  HXParameterKind hx_kind() override { return this; }
};

/// A colour.
class HXColorParameter final : public detail::HXValueParameter<RGBA, HXRColorParameter> {
  TARNKIT_CLASS
 public:
  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;

 protected:
  HXParameterKind hx_kind() override { return this; }
};

/// The value is an entry of the document's image store, or null.
class HXImageParameter final : public detail::HXValueParameter<Ref<Object>, HXRImageParameter> {
  TARNKIT_CLASS
 public:
  HXImageStoreEntry* imageEntry() const;
  void setImageEntry(const Ref<HXImageStoreEntry>& entry) { setValue(Ref<Object>(entry.get())); }
  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;

 protected:
  HXParameterKind hx_kind() override { return this; }
};

}  // namespace tarnkit
