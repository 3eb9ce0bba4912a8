#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRStatusBarNode{
    "HXRStatusBarNode",
    &HXRNode::kClass,
    {.defaultName = "Status Bar",
     .libraryCategory = "Device",
     .processClassName = "PMRStatusBarPatch"},
    [](PatchDeclaration& patch) {
      patch.group("Hidden");
      patch.in("Hide", "Tarn.hideInput", value::boolean(false));
      patch.in("Show", "Tarn.showInput", value::boolean(false));
      patch.choice("Animation", "Tarn.hideAnimationInput", 0, {"None", "Fade", "Slide"});
      patch.group();
      patch.in("Darken", "Tarn.darkenInput", value::boolean(false));
      patch.in("Lighten", "Tarn.lightenInput", value::boolean(false));
      patch.in("Animate", "Tarn.animateStyleInput", value::boolean(false));
      patch.out("Hidden", "Tarn.hiddenOutput");
      patch.out("Style", "Tarn.styleOutput");
    }};

}  // namespace tarnkit
