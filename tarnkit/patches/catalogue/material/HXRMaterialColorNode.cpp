#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRMaterialColorNode{
    "HXRMaterialColorNode",
    &HXRNode::kClass,
    {.defaultName = "Material Color Palette",
     .libraryCategory = "Material",
     .processClassName = "PMRMaterialColorPatch"},
    [](PatchDeclaration& patch) {
      patch.choice("Primary Color", "Tarn.primaryColorInput", 0,
                   {"Red", "Pink", "Purple", "Deep Purple", "Indigo", "Blue", "Light Blue", "Cyan",
                    "Teal", "Green", "Light Green", "Lime", "Yellow", "Amber", "Orange",
                    "Deep Orange", "Brown", "Grey", "Blue Grey"});
      patch.choice("Weight", "Tarn.weightInput", 5,
                   {"50", "100", "200", "300", "400", "500", "600", "700", "800", "900"});
      patch.in("Opacity", "Tarn.opacityInput", value::number(1));
      patch.out("Color", "Tarn.colorOutput");
    }};

}  // namespace tarnkit
