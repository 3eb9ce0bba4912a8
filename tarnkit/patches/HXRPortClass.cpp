#include "tarnkit/patches/HXRPortClass.h"

namespace tarnkit {

const String& HXRPortClass::processClassName() const {
  const auto* from = this;
  while (!from->descriptors_.processClassName) {
    from = from->base_;
  }
  return from->processClassName_.string();
}

RGBA HXRPortClass::defaultColor() const noexcept {
  const auto* from = this;
  while (!from->descriptors_.defaultColor) {
    from = from->base_;
  }
  return *from->descriptors_.defaultColor;
}

const Class* HXRPortClass::acceptedPorts() const noexcept {
  for (const auto* from = this; from; from = from->base_) {
    if (from->descriptors_.acceptedPorts) return from->descriptors_.acceptedPorts;
  }
  return nullptr;
}

}  // namespace tarnkit
