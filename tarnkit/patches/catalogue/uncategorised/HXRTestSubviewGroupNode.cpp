#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRTestSubviewGroupNode{"HXRTestSubviewGroupNode",
                                           &HXRNode::kClass,
                                           {.processClassName = "PMRTestPatch",
                                            .hiddenInLibrary = HXRNodeClass::Flag::yes,
                                            .allowsSubnodes = HXRNodeClass::Flag::yes}};

}  // namespace tarnkit
