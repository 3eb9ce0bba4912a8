#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRMaterialViewNode{"HXRMaterialViewNode",
                                       &HXRViewNode,
                                       {.defaultName = "Material View",
                                        .libraryCategory = "Material",
                                        .processClassName = "PMRMaterialViewPatch"}};

}  // namespace tarnkit
