#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRAlignLayoutNode{"HXRAlignLayoutNode",
                                      &HXRNode::kClass,
                                      {.defaultName = "Align Layout",
                                       .libraryCategory = "Layout",
                                       .processClassName = "PMRAlignLayoutPatch"},
                                      [](PatchDeclaration& patch) {
                                        patch.group("Size");
                                        patch.in("Width", "Tarn.widthInput");
                                        patch.in("Height", "Tarn.heightInput", value::number(0));
                                        patch.in("Depth", "Tarn.depthInput", value::number(0));
                                        patch.group();
                                        patch.in("X Align", "Tarn.xAlignInput", value::number(0));
                                        patch.in("Y Align", "Tarn.yAlignInput", value::number(0));
                                        patch.in("Z Align", "Tarn.zAlignInput", value::number(0));
                                        patch.out("X Position", "Tarn.xPositionOutput");
                                        patch.out("Y Position", "Tarn.yPositionOutput");
                                        patch.out("Z Position", "Tarn.zPositionOutput");
                                        patch.out("X Anchor", "Tarn.xAnchorPointOutput");
                                        patch.out("Y Anchor", "Tarn.yAnchorPointOutput");
                                        patch.out("Z Anchor", "Tarn.zAnchorPointOutput");
                                      }};

}  // namespace tarnkit
