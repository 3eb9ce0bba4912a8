// A patch that is its record: nothing about it ever changes.
#include "examples/plugin/Nodes.h"
#include "tarnkit/patches/PatchDeclaration.h"

namespace example {

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

}  // namespace example
