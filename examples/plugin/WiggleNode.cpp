// A plug-in with one patch definition, for `tarnkit --plugin FILE …`. It is linked against nothing:
// the host has the library's symbols.
#include <vector>

#include "tarnkit/patches/HXRPluginEntry.h"
#include "tarnkit/patches/PatchDeclaration.h"

namespace {

using namespace tarnkit;

const HXRNodeClass wiggleNode{
    "WiggleNode",
    &HXRNode::kClass,
    {.defaultName = "Wiggle", .libraryCategory = "Animation", .processClassName = "WigglePatch"},
    [](PatchDeclaration& patch) {
      patch.in("Amount", "Wiggle.amountInput", value::number(1));
      patch.parameter("Seed", "Wiggle.seedParameter", 7, 0, 100);
      patch.out("Offset", "Wiggle.offsetOutput");
    }};

class WigglePlugin final : public HXRPlugin {
 public:
  String name() const override { return "Wiggle"; }
  std::vector<const HXRNodeClass*> nodeClasses() const override { return {&wiggleNode}; }
};

}  // namespace

const HXRPluginEntry tarnkitPluginEntry = pluginEntry<WigglePlugin>();
