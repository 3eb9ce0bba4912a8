#pragma once

#include <vector>

#include "tarnkit/platform/Object.h"
#include "tarnkit/platform/String.h"

namespace tarnkit {

class HXRNodeClass;

/// The principal class of a plug-in: says what it is and which patch definitions it contributes.
/// Derive from it and override.
class HXRPlugin {
 public:
  virtual ~HXRPlugin();
  /// "Untitled" unless overridden.
  virtual String name() const;
  /// "This plugin has no description" unless overridden.
  virtual String description() const;
  /// The definition classes that the plug-in contributes; they must live as long as the process.
  virtual std::vector<const HXRNodeClass*> nodeClasses() const;
};

}  // namespace tarnkit
