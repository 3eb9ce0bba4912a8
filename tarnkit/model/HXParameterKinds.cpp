#include "tarnkit/model/HXParameterKinds.h"

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXFieldChange.h"
#include "tarnkit/patches/HXArchivedKeys.h"

namespace tarnkit {

const Class HXIndexParameter::kClass{"HXIndexParameter", &HXParameter::kClass,
                                     &detail::makeByDefault<HXIndexParameter>};
const Class HXNumberParameter::kClass{"HXNumberParameter", &HXParameter::kClass,
                                      &detail::makeByDefault<HXNumberParameter>};
const Class HXBooleanParameter::kClass{"HXBooleanParameter", &HXParameter::kClass,
                                       &detail::makeByDefault<HXBooleanParameter>};
const Class HXStringParameter::kClass{"HXStringParameter", &HXParameter::kClass,
                                      &detail::makeByDefault<HXStringParameter>};
const Class HXColorParameter::kClass{"HXColorParameter", &HXParameter::kClass,
                                     &detail::makeByDefault<HXColorParameter>};
const Class HXImageParameter::kClass{"HXImageParameter", &HXParameter::kClass,
                                     &detail::makeByDefault<HXImageParameter>};

namespace {

namespace key = archived::parameter;

constinit const Symbol kDeviceIndexClass{"PMIndexParameter"};
constinit const Symbol kDeviceIndexValue{"PMIndexParameter.value"};
constinit const Symbol kDeviceNumberClass{"PMNumberParameter"};
constinit const Symbol kDeviceNumberValue{"PMNumberParameter.value"};
constinit const Symbol kDeviceBooleanClass{"PMBooleanParameter"};
constinit const Symbol kDeviceBooleanValue{"PMBooleanParameter.value"};
constinit const Symbol kDeviceStringClass{"PMStringParameter"};
constinit const Symbol kDeviceStringValue{"PMStringParameter.value"};
constinit const Symbol kDeviceColorClass{"PMColorParameter"};
constinit const Symbol kDeviceImageClass{"PMImageParameter"};
constinit const Symbol kDeviceImageKey{"PMImageParameter.imageKey"};

constinit const archived::ColorKeys kDeviceColorKeys{
    Symbol{"PMColorParameter.redValue"}, Symbol{"PMColorParameter.greenValue"},
    Symbol{"PMColorParameter.blueValue"}, Symbol{"PMColorParameter.alphaValue"}};

// What a kind adds after the base: its substitution and its value in the device's vocabulary, or
// its value in the editor's.
template <class Encode>
void encodeValue(const HXParameter& parameter, Encoder& coder, const Symbol& editorKey,
                 const Symbol& deviceClass, const Symbol& deviceKey, Encode encode) {
  if (isEditorCodingType(coder.codingType())) {
    encode(editorKey);
  } else if (coder.codingType() == HXCodingTypeDevice) {
    coder.setClassName(deviceClass, parameter.isa());
    encode(deviceKey);
  }
}

template <class T>
bool equals(const T& a, const T& b) {
  return a == b;
}
// Deliberately by identity: the editor's text fields count an equal string that is another object
// as a change.
bool equals(const String& a, const String& b) { return a.isSameObject(b); }

}  // namespace

namespace detail {

// Whether the value was set goes back with it.
template <class Value, class Description>
struct HXValueParameter<Value, Description>::Field : FieldOf<HXValueParameter> {
  static constexpr const char* kName = "value";
  static constexpr bool kIsSimple = true;
  static std::pair<Value, bool> get(const HXValueParameter& parameter) {
    return {parameter.value_, parameter.valueInitialized()};
  }
  static void set(HXValueParameter& parameter, std::pair<Value, bool> value) {
    parameter.value_ = std::move(value.first);
    parameter.setValueInitialized(value.second);
  }
  static void addNotices(HXValueParameter& parameter, const std::pair<Value, bool>&,
                         HXChangeNotices& notices) {
    notices.addValue(parameter, kName, [&parameter] { parameter.announceExchangedValue(); });
  }
};

/// All changes of the field, but for what is read from an archive.
template <class Value, class Description>
void HXValueParameter<Value, Description>::storeValue(Value value) {
  willSet<Field>(*this);
  value_ = std::move(value);
}

template <class Value, class Description>
void HXValueParameter<Value, Description>::setValue(Value value) {
  if (equals(value_, value)) return;
  storeValue(std::move(value));
  setValueInitialized();
  valueDidChange();
}

template <class Value, class Description>
void HXValueParameter<Value, Description>::setPatchParameter(Ref<HXRParameter> patchParameter) {
  const RecordedOperation operation(static_cast<const HXParameter&>(*this));
  const bool changed = exchangePatchParameter(std::move(patchParameter));
  if (!valueInitialized()) {
    if (const auto* definition = this->definition()) storeValue(definition->defaultValue());
  } else if (changed) {
    valueDidChange();
  }
}

template class HXValueParameter<std::int32_t, HXRIndexParameter>;
template class HXValueParameter<float, HXRNumberParameter>;
template class HXValueParameter<bool, HXRBooleanParameter>;
template class HXValueParameter<String, HXRStringParameter>;
template class HXValueParameter<RGBA, HXRColorParameter>;
template class HXValueParameter<Ref<Object>, HXRImageParameter>;

}  // namespace detail

void HXIndexParameter::encodeWithCoder(Encoder& coder) const {
  HXParameter::encodeWithCoder(coder);
  encodeValue(*this, coder, key::kIndexValue, kDeviceIndexClass, kDeviceIndexValue,
              [&](const Symbol& key) { coder.encodeInt(value(), key); });
}
void HXIndexParameter::initWithCoder(Decoder& coder) {
  HXParameter::initWithCoder(coder);
  decodedValue(coder.decodeInt(key::kIndexValue));
}

void HXNumberParameter::encodeWithCoder(Encoder& coder) const {
  HXParameter::encodeWithCoder(coder);
  encodeValue(*this, coder, key::kNumberValue, kDeviceNumberClass, kDeviceNumberValue,
              [&](const Symbol& key) { coder.encodeFloat(value(), key); });
}
void HXNumberParameter::initWithCoder(Decoder& coder) {
  HXParameter::initWithCoder(coder);
  decodedValue(coder.decodeFloat(key::kNumberValue));
}

void HXBooleanParameter::encodeWithCoder(Encoder& coder) const {
  HXParameter::encodeWithCoder(coder);
  encodeValue(*this, coder, key::kBooleanValue, kDeviceBooleanClass, kDeviceBooleanValue,
              [&](const Symbol& key) { coder.encodeBool(value(), key); });
}
void HXBooleanParameter::initWithCoder(Decoder& coder) {
  HXParameter::initWithCoder(coder);
  decodedValue(coder.decodeBool(key::kBooleanValue));
}

std::int32_t HXStringParameter::displayStyle() const {
  const auto* parameter = definition();
  return parameter ? parameter->displayStyle() : 0;
}
void HXStringParameter::encodeWithCoder(Encoder& coder) const {
  HXParameter::encodeWithCoder(coder);
  encodeValue(*this, coder, key::kStringValue, kDeviceStringClass, kDeviceStringValue,
              [&](const Symbol& key) { coder.encodeString(value(), key); });
}
void HXStringParameter::initWithCoder(Decoder& coder) {
  HXParameter::initWithCoder(coder);
  decodedValue(coder.decodeString(key::kStringValue));
}

void HXColorParameter::encodeWithCoder(Encoder& coder) const {
  HXParameter::encodeWithCoder(coder);
  const auto encode = [&](const archived::ColorKeys& keys) {
    const RGBA color = value();
    coder.encodeFloat(color.red, keys.red);
    coder.encodeFloat(color.green, keys.green);
    coder.encodeFloat(color.blue, keys.blue);
    coder.encodeFloat(color.alpha, keys.alpha);
  };
  if (isEditorCodingType(coder.codingType())) {
    encode(key::kColorValue);
  } else if (coder.codingType() == HXCodingTypeDevice) {
    coder.setClassName(kDeviceColorClass, isa());
    encode(kDeviceColorKeys);
  }
}
void HXColorParameter::initWithCoder(Decoder& coder) {
  HXParameter::initWithCoder(coder);
  decodedValue({coder.decodeFloat(key::kColorValue.red), coder.decodeFloat(key::kColorValue.green),
                coder.decodeFloat(key::kColorValue.blue),
                coder.decodeFloat(key::kColorValue.alpha)});
}

HXImageStoreEntry* HXImageParameter::imageEntry() const {
  return as<HXImageStoreEntry>(value().get());
}
void HXImageParameter::encodeWithCoder(Encoder& coder) const {
  HXParameter::encodeWithCoder(coder);
  const auto* entry = imageEntry();
  if (isEditorCodingType(coder.codingType())) {
    coder.encodeObject(static_cast<const Object*>(entry), key::kImageEntry);
  } else if (coder.codingType() == HXCodingTypeDevice) {
    coder.setClassName(kDeviceImageClass, isa());
    coder.encodeString(entry ? entry->key() : String(), kDeviceImageKey);
  }
}
void HXImageParameter::initWithCoder(Decoder& coder) {
  HXParameter::initWithCoder(coder);
  decodedValue(coder.decode<HXImageStoreEntry>(key::kImageEntry));
}

}  // namespace tarnkit
