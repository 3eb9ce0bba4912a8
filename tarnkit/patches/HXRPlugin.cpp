#include "tarnkit/patches/HXRPlugin.h"

namespace tarnkit {

HXRPlugin::~HXRPlugin() = default;
String HXRPlugin::name() const { return "Untitled"; }
String HXRPlugin::description() const { return "This plugin has no description"; }
std::vector<const HXRNodeClass*> HXRPlugin::nodeClasses() const { return {}; }

}  // namespace tarnkit
