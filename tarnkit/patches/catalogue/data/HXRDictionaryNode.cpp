#include "tarnkit/patches/catalogue/data/HXRDictionaryNode.h"

#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/CountedPorts.h"

namespace tarnkit {

namespace {

constexpr const char* kCountKey = "Tarn.numberOfEntriesParameter";

String groupKey(std::int32_t index) { return indexedText("Entry {}", index); }
String keyInputKey(std::int32_t index) { return indexedText("Tarn.key{}Input", index); }
String valueInputKey(std::int32_t index) { return indexedText("Tarn.value{}Input", index); }

}  // namespace

const HXRNodeClass HXRDictionaryNode::kClass{
    "HXRDictionaryNode",
    &HXRNode::kClass,
    {.defaultName = "Dictionary",
     .libraryCategory = "Data",
     .processClassName = "PMRDictionaryPatch"},
    [](PatchDeclaration& patch) {
      patch.parameter("Entries", kCountKey, 5, 0, 100);
      patch.definition<HXRDictionaryNode>().hxr_buildEntryInputs();
      patch.out<HXRValueOutputPort>("Dictionary", "Tarn.dictionaryOutput");
    },
    &detail::constructPatch<HXRDictionaryNode>};

void HXRDictionaryNode::hxr_buildEntryInputs() {
  const auto* const count = as<HXRIndexParameter>(parameterForKey(kCountKey));
  if (!count) return;
  const auto wanted = boundedCount(*count);
  // Every input group is an entry.
  const auto built = static_cast<std::int32_t>(portLayout().inputs().portGroups().size());
  for (std::int32_t i = built; i < wanted; ++i) {
    addPort(*make<HXRPrimitiveInputPort>(indexedText("Key {}", i), keyInputKey(i)), groupKey(i));
    addPort(*make<HXRValueInputPort>(indexedText("Value {}", i), valueInputKey(i)), groupKey(i));
  }
  for (std::int32_t i = built; i > wanted; --i) {
    const auto entry = entryAtIndex(i - 1);
    if (!entry) continue;
    removePort(*entry->keyInput());
    removePort(*entry->valueInput());
  }
}

Ref<HXRDictionaryEntry> HXRDictionaryNode::entryAtIndex(std::int32_t index) {
  if (index < 0 || index >= static_cast<std::int32_t>(portLayout().inputs().portGroups().size())) {
    return nullptr;
  }
  auto* const keyInput = portForKey(keyInputKey(index));
  auto* const valueInput = portForKey(valueInputKey(index));
  if (!keyInput || !valueInput) return nullptr;
  return make<HXRDictionaryEntry>(Ref<HXRPort>(keyInput), Ref<HXRPort>(valueInput));
}

void HXRDictionaryNode::parameterValueDidChange(HXRParameter& parameter) {
  if (&parameter == parameterForKey(kCountKey)) hxr_buildEntryInputs();
}

}  // namespace tarnkit
