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
    constructPatch<HXRDictionaryNode>};

void HXRDictionaryNode::hxr_buildEntryInputs() {
  const Ref<HXRIndexParameter> count(as<HXRIndexParameter>(parameterForKey(kCountKey)));
  if (!count) return;
  rebuild([&] {
    // Asked again after every step, because an observer of the step may change the count.
    for (;;) {
      const auto built = entryCount();
      const auto wanted = boundedCount(*count);
      if (built == wanted) return;
      if (built < wanted) {
        addEntry(built);
      } else if (!removeEntry(built - 1)) {
        return;
      }
    }
  });
}

// Every input group is an entry.
std::int32_t HXRDictionaryNode::entryCount() const {
  return static_cast<std::int32_t>(portLayout().inputs().portGroups().size());
}

void HXRDictionaryNode::addEntry(std::int32_t index) {
  const auto entry = make<HXRDictionaryEntry>(
      make<HXRPrimitiveInputPort>(indexedText("Key {}", index), keyInputKey(index)),
      make<HXRValueInputPort>(indexedText("Value {}", index), valueInputKey(index)));
  addPort(*entry->keyInput(), groupKey(index));
  addPort(*entry->valueInput(), groupKey(index));
}

bool HXRDictionaryNode::removeEntry(std::int32_t index) {
  const auto entry = entryAtIndex(index);
  if (!entry) return false;
  removePort(*entry->keyInput());
  removePort(*entry->valueInput());
  return true;
}

Ref<HXRDictionaryEntry> HXRDictionaryNode::entryAtIndex(std::int32_t index) {
  if (index < 0 || index >= entryCount()) return nullptr;
  auto* const keyInput = portForKey(keyInputKey(index));
  auto* const valueInput = portForKey(valueInputKey(index));
  if (!keyInput || !valueInput) return nullptr;
  return make<HXRDictionaryEntry>(Ref<HXRPort>(keyInput), Ref<HXRPort>(valueInput));
}

void HXRDictionaryNode::parameterValueDidChange(HXRParameter& parameter) {
  if (&parameter == parameterForKey(kCountKey)) hxr_buildEntryInputs();
}

}  // namespace tarnkit
