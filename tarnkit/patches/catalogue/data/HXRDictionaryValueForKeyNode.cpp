#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRDictionaryValueForKeyNode{
    "HXRDictionaryValueForKeyNode",
    &HXRNode::kClass,
    {.defaultName = "Dictionary Value for Key",
     .libraryCategory = "Data",
     .processClassName = "PMRDictionaryValueForKeyPatch"},
    [](PatchDeclaration& patch) {
      patch.in<HXRDictionaryInputPort>("Dictionary", "Tarn.dictionaryInput");
      patch.in("Key", "Tarn.keyInput");
      patch.out<HXRValueOutputPort>("Value", "Tarn.valueOutput");
    }};

}  // namespace tarnkit
