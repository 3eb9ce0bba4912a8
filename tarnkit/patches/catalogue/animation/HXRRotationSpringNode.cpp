#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRRotationSpringNode{
    "HXRRotationSpringNode",
    &HXRNode::kClass,
    {.defaultName = "Rotation Spring",
     .libraryCategory = "Animation",
     .processClassName = "PMRRotationSpringPatch"},
    [](PatchDeclaration& patch) {
      patch.parameter("Dimensions", "Tarn.numberOfDimensionsParameter", 3, 1, 10);
      patch.in("Strength", "Tarn.strengthInput", value::number(0.05F));
      patch.in("Damping", "Tarn.dampingInput", value::number(0.2F));
      patch.in("Sampling", "Tarn.samplingInput", value::boolean(false));
    }};

}  // namespace tarnkit
