#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRAccumulatorNode{"HXRAccumulatorNode",
                                      &HXRNode::kClass,
                                      {.defaultName = "Accumulator",
                                       .libraryCategory = "State",
                                       .processClassName = "PMRAccumulatorPatch"},
                                      [](PatchDeclaration& patch) {
                                        patch.in("Value", "Tarn.valueInput", value::number(0));
                                        patch.in("Reset", "Tarn.resetInput", value::boolean(false));
                                        patch.out("Value", "Tarn.valueOutput");
                                      }};

}  // namespace tarnkit
