#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRGridLayoutNode{
    "HXRGridLayoutNode",
    &HXRNode::kClass,
    {.defaultName = "Grid Layout",
     .libraryCategory = "Layout",
     .processClassName = "PMRGridLayoutPatch"},
    [](PatchDeclaration& patch) {
      patch.parameter("Vertical", "Tarn.directionParameter", true);
      patch.in("Index", "Tarn.indexInput");
      patch.in("Total Width", "Tarn.totalSizeInput", value::number(300));
      patch.in("Columns", "Tarn.fixedDimensionInput", value::index(3));
      patch.in("Border", "Tarn.borderInput", value::number(0));
      patch.in("Spacing", "Tarn.spacingInput", value::number(0));
      patch.in("Item Width", "Tarn.itemWidthInput", value::number(100));
      patch.in("Item Height", "Tarn.itemHeightInput", value::number(100));
      patch.out("X Position", "Tarn.xPositionOutput");
      patch.out("Y Position", "Tarn.yPositionOutput");
      patch.out("Item Width", "Tarn.itemWidthOutput");
      patch.out("Item Height", "Tarn.itemHeightOutput");
    }};

}  // namespace tarnkit
