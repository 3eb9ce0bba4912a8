#pragma once

#include "tarnkit/patches/RGBA.h"
#include "tarnkit/platform/Class.h"
#include "tarnkit/platform/Symbol.h"

namespace tarnkit {

/// The class record of a port description: with the device-side process class, the colour, and which
/// outputs an input of the class takes. What is left out is inherited from the base's record.
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
  constexpr HXRPortClass(const char* name, const Class* superclass, Descriptors descriptors,
                         const HXRPortClass* base = nullptr) noexcept
      : Class(name, superclass),
        base_(base),
        descriptors_(descriptors),
        processClassName_(descriptors.processClassName) {}

  /// The name of the class that stands for the port on the device.
  const String& processClassName() const;
  RGBA defaultColor() const noexcept;
  /// Null: ports of the class accept nothing.
  const Class* acceptedPorts() const noexcept;

 private:
  const HXRPortClass* base_;
  Descriptors descriptors_;
  Symbol processClassName_;
};

}  // namespace tarnkit
