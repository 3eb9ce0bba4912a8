#include "tarnkit/patches/PluginLoader.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <exception>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "tarnkit/patches/HXRPluginEntry.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/system/Bundle.h"

namespace tarnkit {

namespace {

constexpr const char* kEntryName = "tarnkitPluginEntry";

// A bare file name would be looked for in the system's folders of libraries.
std::string absolutePath(const std::string& path) {
  std::error_code failure;
  const auto absolute = std::filesystem::absolute(path, failure);
  return failure ? path : absolute.string();
}

std::string lastLoadError(const std::string& path) {
  const char* const error = ::dlerror();
  if (!error) return "it cannot be loaded";
  std::string_view text = error;
  const std::string prefix = path + ": ";
  if (text.starts_with(prefix)) text.remove_prefix(prefix.size());
  return std::string(text);
}

/// What speaks against the entry; empty: nothing. The fields are read in an order in which each
/// says that the next can be read.
std::string faultOf(const HXRPluginEntry* entry) {
  if (!entry || entry->mark != HXRPluginEntry().mark) {
    return fmt::format("it exports no {}: it is no plug-in, or one of an older version",
                       kEntryName);
  }
  if (entry->version != kPluginInterfaceVersion) {
    return fmt::format("it is built for version {} of the plug-in interface, this is version {}",
                       entry->version, kPluginInterfaceVersion);
  }
  if (entry->layout != detail::pluginLayout()) {
    return "it is built with headers or settings that do not fit this program";
  }
  if (entry->root != &HXRNode::kClass) {
    return "it has a copy of the library of its own: a plug-in is linked against nothing";
  }
  return entry->principal ? "" : "it has no principal class";
}

bool addClasses(const HXRPlugin& plugin, const std::string& path, std::string& reason) {
  const auto patchClasses = plugin.nodeClasses();
  if (patchClasses.empty()) {
    reason = "it brings no patch";
    return false;
  }
  return addPatchClasses(patchClasses, Bundle::addBundle(String(path)), reason);
}

}  // namespace

// What was opened is never closed, even if it is refused: once its static objects were made nobody
// knows who holds them.
bool loadPlugin(const std::string& path, std::string& reason) {
  const std::string absolute = absolutePath(path);
  void* const library = ::dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) {
    reason = lastLoadError(absolute);
    return false;
  }
  const auto* const entry = static_cast<const HXRPluginEntry*>(::dlsym(library, kEntryName));
  reason = faultOf(entry);
  if (!reason.empty()) return false;
  try {
    return addClasses(entry->principal(), absolute, reason);
  } catch (const std::exception& failure) {
    reason = failure.what();
    return false;
  }
}

}  // namespace tarnkit
