#include "tarnkit/patches/HXRValueParameters.h"

namespace tarnkit {

const HXRParameterClass HXRBooleanParameter::kClass{"HXRBooleanParameter", &HXRParameter::kClass,
                                                    "HXBooleanParameter", "PMRBooleanParameter"};
const HXRParameterClass HXRNumberParameter::kClass{"HXRNumberParameter", &HXRParameter::kClass,
                                                   "HXNumberParameter", "PMRNumberParameter"};
const HXRParameterClass HXRIndexParameter::kClass{"HXRIndexParameter", &HXRParameter::kClass,
                                                  "HXIndexParameter", "PMRIndexParameter"};
const HXRParameterClass HXRStringParameter::kClass{"HXRStringParameter", &HXRParameter::kClass,
                                                   "HXStringParameter", "PMRStringParameter"};
const HXRParameterClass HXRColorParameter::kClass{"HXRColorParameter", &HXRParameter::kClass,
                                                  "HXColorParameter", "PMRColorParameter"};
const HXRParameterClass HXRImageParameter::kClass{"HXRImageParameter", &HXRParameter::kClass,
                                                  "HXImageParameter", "PMRImageParameter"};

std::span<const HXRParameterClass* const> parameterClasses() {
  static constexpr const HXRParameterClass* kClasses[] = {
      &HXRParameter::kClass,      &HXRBooleanParameter::kClass, &HXRNumberParameter::kClass,
      &HXRIndexParameter::kClass, &HXRStringParameter::kClass,  &HXRColorParameter::kClass,
      &HXRImageParameter::kClass,
  };
  return kClasses;
}

Ref<HXRParameter> HXRBooleanParameter::copy() const { return make<HXRBooleanParameter>(*this); }
Ref<HXRParameter> HXRNumberParameter::copy() const { return make<HXRNumberParameter>(*this); }
Ref<HXRParameter> HXRIndexParameter::copy() const { return make<HXRIndexParameter>(*this); }
Ref<HXRParameter> HXRStringParameter::copy() const { return make<HXRStringParameter>(*this); }
Ref<HXRParameter> HXRColorParameter::copy() const { return make<HXRColorParameter>(*this); }
Ref<HXRParameter> HXRImageParameter::copy() const { return make<HXRImageParameter>(*this); }

}  // namespace tarnkit
