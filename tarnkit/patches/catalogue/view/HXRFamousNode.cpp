#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRFamousNode{
    "HXRFamousNode",
    &HXRViewNode,
    {.defaultName = "Web View (legacy)",
     .processClassName = "PMRFamousPatch",
     .hiddenInLibrary = HXRNodeClass::Flag::yes},
    [](PatchDeclaration& patch) { patch.parameter("URL", "Tarn.URL", "https://example.com/"); }};

}  // namespace tarnkit
