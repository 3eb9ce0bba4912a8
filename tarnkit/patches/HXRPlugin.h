#pragma once

#include <vector>

#include "tarnkit/platform/objects/Object.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

class HXRNodeClass;

/// The principal class of a plug-in: says what it is and which patch definitions it contributes.
/// Derive from it, override, and export it (see `HXRPluginEntry`).
class HXRPlugin {
 public:
  virtual ~HXRPlugin();
  /// "Untitled" unless overridden.
  virtual String name() const;
  /// "This plugin has no description" unless overridden.
  virtual String description() const;
  /// The definition classes that the plug-in contributes; they must live as long as the process. A
  /// class may derive from any class of the catalogue. It may derive from another plug-in's when
  /// that one was loaded before: its record is made here, with `patchClassNamed` for its base, and
  /// is refused as one without a base when there is no such class. A base that is the plug-in's own
  /// need not be among the classes.
  virtual std::vector<const HXRNodeClass*> nodeClasses() const;
};

}  // namespace tarnkit
