#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

namespace {
constexpr const char* kHiddenPortGroupKeys[] = {"Local Origin", "View Index", "Masking", nullptr};
}  // namespace

const HXRNodeClass HXRTextInputViewNode{
    "HXRTextInputViewNode",
    &HXRViewNode,
    {.defaultName = "Text Input View",
     .processClassName = "PMRTextInputViewPatch",
     .hiddenPortGroupKeys = kHiddenPortGroupKeys},
    [](PatchDeclaration& patch) {
      patch.in("Placeholder", "Tarn.placeholderTextInput");
      patch.in("Font", "Tarn.fontNameInput");
      patch.in("Size", "Tarn.fontSizeInput", value::number(14));
      patch.in("Color", "Tarn.fontColorInput", value::color(OIColorBlackRGBA));
      patch.in("Background Color", "Tarn.backgroundColorInput", value::color(OIColorWhiteRGBA));
      patch.in("Dismiss", "Tarn.dismissInput", value::boolean(false));
      patch.out("Text", "Tarn.textOutput");
    }};

}  // namespace tarnkit
