#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRDateFormatterNode{"HXRDateFormatterNode",
                                        &HXRNode::kClass,
                                        {.defaultName = "Date Formatter",
                                         .libraryCategory = "Utility",
                                         .processClassName = "PMRDateFormatterPatch"},
                                        [](PatchDeclaration& patch) {
                                          patch.in("Format", "Tarn.formatInput",
                                                   value::string("yyyy-MM-dd 'at' HH:mm"));
                                          patch.out("Text", "Tarn.textOutput");
                                        }};

}  // namespace tarnkit
