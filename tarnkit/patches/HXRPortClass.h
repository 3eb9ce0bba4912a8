#pragma once

#include "tarnkit/patches/RGBA.h"
#include "tarnkit/platform/objects/Class.h"
#include "tarnkit/platform/text/Symbol.h"

namespace tarnkit {

/// The class record of a port description: with the device-side process class, the colour, and
/// which outputs an input of the class takes. What is left out is inherited from the base's record.
class HXRPortClass : public Class {
 public:
  struct Descriptors {
    /// Null: the base's.
    const char* processClassName = nullptr;
    const RGBA* defaultColor = nullptr;
    /// The class whose instances (subclasses included) a port of this class may be connected to;
    /// null: the base's rule.
    const Class* acceptedPorts = nullptr;
  };
  /// The record of the root port class, which leaves nothing out but what it accepts.
  constexpr HXRPortClass(const char* name, const Class* superclass,
                         const Descriptors& descriptors) noexcept
      : Class(name, superclass),
        descriptors_(descriptors),
        processClassName_(descriptors.processClassName) {}
  constexpr HXRPortClass(const char* name, const HXRPortClass* base,
                         const Descriptors& descriptors) noexcept
      : Class(name, base),
        base_(base),
        descriptors_(descriptors),
        processClassName_(descriptors.processClassName) {}

  /// The name of the class that stands for the port on the device.
  const String& processClassName() const;
  RGBA defaultColor() const noexcept;
  /// Null: ports of the class accept nothing.
  const Class* acceptedPorts() const noexcept;

 private:
  const HXRPortClass* base_ = nullptr;
  Descriptors descriptors_;
  Symbol processClassName_;
};

}  // namespace tarnkit
