#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

namespace {
constexpr const char* kHiddenPortGroupKeys[] = {"Local Origin", "View Index", "Masked to Bounds",
                                                nullptr};
}  // namespace

const HXRNodeClass HXRMaterialCardNode{"HXRMaterialCardNode",
                                       &HXRViewNode,
                                       {.defaultName = "Material Card",
                                        .libraryCategory = "Material",
                                        .processClassName = "PMRMaterialViewPatch",
                                        .hiddenPortGroupKeys = kHiddenPortGroupKeys}};

}  // namespace tarnkit
