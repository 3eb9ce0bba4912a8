// A plug-in that is built with nothing but the installed headers.
#include "tarnkit/patches/HXRPluginEntry.h"

namespace {

using namespace tarnkit;

const HXRNodeClass consumersNode{
    "ConsumersNode", &HXRNode::kClass, {.libraryCategory = "Utility"}, [](PatchDeclaration& patch) {
      patch.out("Output", "Consumers.output");
    }};

class ConsumersPlugin final : public HXRPlugin {
 public:
  std::vector<const HXRNodeClass*> nodeClasses() const override { return {&consumersNode}; }
};

}  // namespace

const HXRPluginEntry tarnkitPluginEntry = pluginEntry<ConsumersPlugin>();
