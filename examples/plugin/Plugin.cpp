// A plug-in with two patch definitions, for `tarnkit --plugin FILE …` and for every host that calls
// `loadPlugin`. It is linked against nothing: the host has the library's symbols.
#include "examples/plugin/Nodes.h"
#include "tarnkit/patches/HXRPluginEntry.h"

namespace {

class ExamplePlugin final : public tarnkit::HXRPlugin {
 public:
  tarnkit::String name() const override { return "Example"; }
  std::vector<const tarnkit::HXRNodeClass*> nodeClasses() const override {
    return {&example::wiggleNode, &example::staircaseNode};
  }
};

}  // namespace

const tarnkit::HXRPluginEntry tarnkitPluginEntry = tarnkit::pluginEntry<ExamplePlugin>();
