#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/patches/HXRDictionaryEntry.h"
#include "tarnkit/patches/HXRNode.h"

namespace tarnkit {

/// Collects pairs of a key and a value into a dictionary; there are as many entries, possibly none,
/// as its parameter says, each in a group of its own.
/// Made by its record; owned by its editor node. For one thread; a change of the count costs what
/// it adds or removes.
class HXRDictionaryNode final : public HXRNode {
 public:
  static const HXRNodeClass kClass;
  explicit HXRDictionaryNode(const HXRNodeClass& patchClass);

  /// Adds or removes entries at the end until there are as many as the parameter says.
  void hxr_buildEntryInputs();
  /// The entries, each with this definition's own ports, in order.
  std::vector<Ref<HXRDictionaryEntry>> entries();
  /// The ports of an entry, this definition's own; null past the last one.
  Ref<HXRDictionaryEntry> entryAtIndex(std::int32_t index);
  void parameterValueDidChange(HXRParameter& parameter) override;

 protected:
  std::unique_ptr<HXRBuiltState> builtState() const override;

 private:
  void addEntry(std::int32_t index);
  void removeEntry(std::int32_t index);

  std::int32_t built_ = 0;
};

}  // namespace tarnkit
