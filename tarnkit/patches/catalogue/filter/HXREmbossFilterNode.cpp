#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXREmbossFilterNode{"HXREmbossFilterNode",
                                       &HXRNode::kClass,
                                       {.defaultName = "Emboss Filter",
                                        .libraryCategory = "Filter",
                                        .processClassName = "PMREmbossFilterPatch"},
                                       [](PatchDeclaration& patch) {
                                         patch.in<HXRFilterInputPort>("Filter", "Tarn.filterInput");
                                         patch.out<HXRFilterOutputPort>("Filter",
                                                                        "Tarn.filterOutput");
                                       }};

}  // namespace tarnkit
