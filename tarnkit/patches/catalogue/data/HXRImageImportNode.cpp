#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRImageImportNode{
    "HXRImageImportNode",
    &HXRNode::kClass,
    {.defaultName = "Image Importer",
     .libraryCategory = "Data",
     .processClassName = "PMRImageImportPatch"},
    [](PatchDeclaration& patch) {
      patch.parameter("Scale", "Tarn.scaleParameter", 1.0F, 0.1F, 10.0F);
      patch.in("URL", "Tarn.urlInput", value::string("https://example.com/image.png"));
      patch.in("Load", "Tarn.loadInput");
      patch.out("Width", "Tarn.widthOutput");
      patch.out("Height", "Tarn.heightOutput");
      patch.out<HXRImageOutputPort>("Image", "Tarn.imageOutput");
      patch.group("Progress");
      patch.out("Error", "Tarn.errorOutput");
      patch.out("Done", "Tarn.doneOutput");
    }};

}  // namespace tarnkit
