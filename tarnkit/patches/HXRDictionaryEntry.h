#pragma once

#include "tarnkit/patches/HXRPort.h"

namespace tarnkit {

/// One entry of a Dictionary patch: the input of its key and the input of its value, both held.
/// For one thread.
class HXRDictionaryEntry final : public Object {
  TARNKIT_CLASS
 public:
  HXRDictionaryEntry() = default;
  HXRDictionaryEntry(Ref<HXRPort> keyInput, Ref<HXRPort> valueInput) noexcept
      : keyInput_(std::move(keyInput)), valueInput_(std::move(valueInput)) {}

  const Ref<HXRPort>& keyInput() const noexcept { return keyInput_; }
  void setKeyInput(Ref<HXRPort> port) noexcept { keyInput_ = std::move(port); }
  const Ref<HXRPort>& valueInput() const noexcept { return valueInput_; }
  void setValueInput(Ref<HXRPort> port) noexcept { valueInput_ = std::move(port); }

 private:
  Ref<HXRPort> keyInput_;
  Ref<HXRPort> valueInput_;
};

}  // namespace tarnkit
