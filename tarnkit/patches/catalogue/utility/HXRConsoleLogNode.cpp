#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRConsoleLogNode{
    "HXRConsoleLogNode",
    &HXRNode::kClass,
    {.defaultName = "Console Log",
     .libraryCategory = "Utility",
     .processClassName = "PMRConsoleLogPatch"},
    [](PatchDeclaration& patch) { patch.in("Value", "Tarn.valueInput"); }};

}  // namespace tarnkit
