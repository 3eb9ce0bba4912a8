// A patch whose ports follow a parameter: its definitions are objects of a C++ class of their own,
// which is told when the parameter changes and builds the ports again.
#include "examples/plugin/Nodes.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/CountedPorts.h"

namespace example {

using namespace tarnkit;

namespace {

constexpr CountedPortsDescription kSteps{
    "Staircase.numberOfStepsParameter",
    "Step {}",
    {HXOrientationOutput, "Steps", "Staircase.step{}Output", makePortOf<HXRPrimitiveOutputPort>}};

class StaircaseNode final : public CountedPortsNode {
 public:
  explicit StaircaseNode(const HXRNodeClass& patchClass) : CountedPortsNode(patchClass, kSteps) {}
};

}  // namespace

const HXRNodeClass staircaseNode{"StaircaseNode",
                                 &HXRNode::kClass,
                                 {.defaultName = "Staircase",
                                  .libraryCategory = "Animation",
                                  .processClassName = "StaircasePatch"},
                                 [](PatchDeclaration& patch) {
                                   patch.parameter("Steps", kSteps.countParameterKey, 3, 1, 20);
                                   patch.in("Progress", "Staircase.progressInput",
                                            value::number(0));
                                   patch.definition<StaircaseNode>().buildPorts();
                                 },
                                 constructPatch<StaircaseNode>};

}  // namespace example
