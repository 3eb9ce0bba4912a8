#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRDictionaryKeysAndValuesNode{
    "HXRDictionaryKeysAndValuesNode",
    &HXRNode::kClass,
    {.defaultName = "Dictionary Values/Keys",
     .libraryCategory = "Data",
     .processClassName = "PMRDictionaryKeysAndValuesPatch"},
    [](PatchDeclaration& patch) {
      patch.in<HXRDictionaryInputPort>("Dictionary", "Tarn.dictionaryInput");
      patch.out<HXRArrayOutputPort>("Keys", "Tarn.keysOutput");
      patch.out<HXRArrayOutputPort>("Values", "Tarn.valuesOutput");
    }};

}  // namespace tarnkit
