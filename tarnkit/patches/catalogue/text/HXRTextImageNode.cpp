#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRTextImageNode{
    "HXRTextImageNode",
    &HXRNode::kClass,
    {.defaultName = "Text Image",
     .libraryCategory = "Text",
     .processClassName = "PMRTextImagePatch"},
    [](PatchDeclaration& patch) {
      patch.in("Text", "Tarn.textInput");
      patch.in("Font", "Tarn.fontNameInput");
      patch.in("Size", "Tarn.fontSizeInput", value::number(14));
      patch.in("Color", "Tarn.fontColorInput", value::color(OIColorBlackRGBA));
      patch.in("Bounds Width", "Tarn.boundsWidthInput", value::number(-1));
      patch.in("Bounds Height", "Tarn.boundsHeightInput", value::number(-1));
      patch.out("Width", "Tarn.widthOutput");
      patch.out("Height", "Tarn.heightOutput");
      patch.out<HXRImageOutputPort>("Image", "Tarn.imageOutput");
    }};

}  // namespace tarnkit
