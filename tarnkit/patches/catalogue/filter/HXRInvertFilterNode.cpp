#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRInvertFilterNode{"HXRInvertFilterNode",
                                       &HXRNode::kClass,
                                       {.defaultName = "Invert Filter",
                                        .libraryCategory = "Filter",
                                        .processClassName = "PMRInvertFilterPatch"},
                                       [](PatchDeclaration& patch) {
                                         patch.in<HXRFilterInputPort>("Filter", "Tarn.filterInput");
                                         patch.out<HXRFilterOutputPort>("Filter",
                                                                        "Tarn.filterOutput");
                                       }};

}  // namespace tarnkit
