#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRJSONImportNode{"HXRJSONImportNode",
                                     &HXRNode::kClass,
                                     {.defaultName = "JSON Importer",
                                      .libraryCategory = "Data",
                                      .processClassName = "PMRJSONImportPatch"},
                                     [](PatchDeclaration& patch) {
                                       patch.in("URL", "Tarn.urlInput",
                                                value::string("https://example.com/weather.json"));
                                       patch.in("Load", "Tarn.loadInput");
                                       patch.out<HXRValueOutputPort>("Data", "Tarn.dataOutput");
                                       patch.group("Progress");
                                       patch.out("Error", "Tarn.errorOutput");
                                       patch.out("Done", "Tarn.doneOutput");
                                     }};

}  // namespace tarnkit
