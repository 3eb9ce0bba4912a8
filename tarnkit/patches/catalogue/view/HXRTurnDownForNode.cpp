#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

namespace {
constexpr const char* kHiddenPortGroupKeys[] = {"Masked to Bounds", "View Index", "Opacity",
                                                nullptr};
}  // namespace

const HXRNodeClass HXRTurnDownForNode{
    "HXRTurnDownForNode",
    &HXRViewNode,
    {.defaultName = "Turn down for",
     .processClassName = "PMRTurnDownForPatch",
     .secretInLibrary = HXRNodeClass::Flag::yes,
     .hiddenPortGroupKeys = kHiddenPortGroupKeys},
    [](PatchDeclaration& patch) { patch.in("what", "Tarn.whatInput"); }};

}  // namespace tarnkit
