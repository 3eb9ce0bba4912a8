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

HXRDictionaryNode::HXRDictionaryNode(const HXRNodeClass& patchClass) : HXRNode(patchClass) {
  if (prototype()) built_ = static_cast<const HXRDictionaryNode*>(prototype())->built_;
}

void HXRDictionaryNode::hxr_buildEntryInputs() {
  const Ref<HXRIndexParameter> count(as<HXRIndexParameter>(parameterForKey(kCountKey)));
  if (!count) return;
  rebuild([&] {
    followCount(
        built_, [&] { return boundedCount(*count); }, [&](std::int32_t index) { addEntry(index); },
        [&](std::int32_t index) { removeEntry(index); });
  });
}

void HXRDictionaryNode::addEntry(std::int32_t index) {
  const auto keyInput =
      make<HXRPrimitiveInputPort>(indexedText("Key {}", index), keyInputKey(index));
  addPort(*keyInput, groupKey(index));
  // An observer may have had the entry removed, and another made in its place.
  if (keyInput->node() != this) return;
  addPort(*make<HXRValueInputPort>(indexedText("Value {}", index), valueInputKey(index)),
          groupKey(index));
}

// Both ports are looked up first: an observer of the first removal may have the entry made anew.
void HXRDictionaryNode::removeEntry(std::int32_t index) {
  const Ref<HXRPort> keyInput(portForKey(keyInputKey(index)));
  const Ref<HXRPort> valueInput(portForKey(valueInputKey(index)));
  if (keyInput) removePort(*keyInput);
  if (valueInput) removePort(*valueInput);
}

std::vector<Ref<HXRDictionaryEntry>> HXRDictionaryNode::entries() {
  std::vector<Ref<HXRDictionaryEntry>> list;
  for (std::int32_t i = 0; i < built_; ++i) {
    if (auto entry = entryAtIndex(i)) list.push_back(std::move(entry));
  }
  return list;
}

Ref<HXRDictionaryEntry> HXRDictionaryNode::entryAtIndex(std::int32_t index) {
  if (index < 0 || index >= built_) return nullptr;
  auto* const keyInput = portForKey(keyInputKey(index));
  auto* const valueInput = portForKey(valueInputKey(index));
  if (!keyInput || !valueInput) return nullptr;
  return make<HXRDictionaryEntry>(Ref<HXRPort>(keyInput), Ref<HXRPort>(valueInput));
}

void HXRDictionaryNode::parameterValueDidChange(HXRParameter& parameter) {
  if (&parameter == parameterForKey(kCountKey)) hxr_buildEntryInputs();
}

std::unique_ptr<HXRBuiltState> HXRDictionaryNode::builtState() const {
  return builtStateOf(*this, &HXRDictionaryNode::built_);
}

}  // namespace tarnkit
