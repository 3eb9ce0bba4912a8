#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <string>

#include "tarnkit/patches/HXRPlugin.h"
#include "tarnkit/patches/PMRPrimitive.h"
#include "tarnkit/patches/PatchDeclaration.h"

namespace tarnkit {

/// Counts the changes of the headers that a plug-in may include after which it must be built anew.
inline constexpr std::uint32_t kPluginInterfaceVersion = 2;

namespace detail {
/// One number for the sizes of what a plug-in and its host hand to each other. It differs where
/// compiler, settings or headers differ in a way that nobody counted.
consteval std::uint32_t pluginLayout() {
  std::uint32_t sum = 2166136261U;
  for (const auto size :
       {sizeof(void*), sizeof(Object), sizeof(String), sizeof(std::string), sizeof(Class),
        sizeof(HXRNodeClass), sizeof(HXRNodeClass::Descriptors), sizeof(HXRNode), sizeof(HXRPort),
        sizeof(HXRPrimitiveInputPort), sizeof(HXRPortLayout), sizeof(HXRParameter),
        sizeof(HXRNumberParameter), sizeof(HXRStringParameter), sizeof(PMRPrimitive),
        sizeof(PatchDeclaration), sizeof(HXRPlugin), sizeof(std::vector<const HXRNodeClass*>)}) {
    sum = (sum ^ static_cast<std::uint32_t>(size)) * 16777619U;
  }
  return sum;
}
}  // namespace detail

/// What a plug-in exports: constant data that its host can read before it runs any of its code.
///
/// A plug-in is a shared library that is linked against nothing: it takes the library's symbols
/// from its host. One of its sources holds
///
///     const tarnkit::HXRPluginEntry tarnkitPluginEntry = tarnkit::pluginEntry<MyPlugin>();
///
/// where `MyPlugin` derives from `HXRPlugin` and is made without arguments, once, when it is
/// loaded.
struct HXRPluginEntry {
  std::array<char, 8> mark{'t', 'a', 'r', 'n', 'k', 'i', 't', '\0'};
  std::uint32_t version = kPluginInterfaceVersion;
  std::uint32_t layout = detail::pluginLayout();
  /// The root of all definitions as the plug-in sees it: the host's, unless the plug-in has taken a
  /// copy of the library into itself.
  const HXRNodeClass* root = &HXRNode::kClass;
  HXRPlugin& (*principal)() = nullptr;
};

template <std::derived_from<HXRPlugin> Plugin>
constexpr HXRPluginEntry pluginEntry() {
  return {.principal = []() -> HXRPlugin& {
    static Plugin plugin;
    return plugin;
  }};
}

}  // namespace tarnkit

extern "C" {
/// The name under which a host looks for the entry.
extern __attribute__((visibility("default"))) const tarnkit::HXRPluginEntry tarnkitPluginEntry;
}
