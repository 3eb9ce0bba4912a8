#include "tools/tarnkit/Plugins.h"

#include <dlfcn.h>

#include <filesystem>
#include <system_error>

#include "tarnkit/patches/HXRPlugin.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/Bundle.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Output.h"

namespace tarnkit::tool {

namespace {

// A bare file name would be looked for in the system's folders of libraries.
std::string absolutePath(const std::string& path) {
  std::error_code failure;
  const auto absolute = std::filesystem::absolute(path, failure);
  return failure ? path : absolute.string();
}

std::string lastLoadError() {
  const char* text = ::dlerror();
  return text ? text : "it cannot be loaded";
}

}  // namespace

void loadPlugin(const std::string& path) {
  const auto absolute = absolutePath(path);
  void* library = ::dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) failWithFile("plug-in", absolute, lastLoadError());
  using Entry = HXRPlugin* (*)();
  const auto entry = reinterpret_cast<Entry>(::dlsym(library, kPluginEntry));
  if (!entry) {
    throw CommandFailure("plug-in", path, std::string("it exports no function ") + kPluginEntry);
  }
  HXRPlugin* plugin = entry();
  if (!plugin) throw CommandFailure("plug-in", path, "it has no principal class");
  Bundle& bundle = Bundle::addBundle(String(absolute));
  for (const HXRNodeClass* patchClass : plugin->nodeClasses()) {
    if (!patchClass) continue;
    bundle.claimClass(*patchClass);
    addPatchClass(*patchClass);
  }
}

}  // namespace tarnkit::tool
