#include "tarnkit/patches/PluginLoader.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

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

Status lastLoadFailure(const std::string& path) {
  const char* const error = ::dlerror();
  std::string_view text = error ? error : "it cannot be loaded";
  const std::string prefix = path + ": ";
  if (text.starts_with(prefix)) text.remove_prefix(prefix.size());
  // The loader tells only in words what was in its way.
  if (::access(path.c_str(), R_OK) == 0) return Status::damaged(std::string(text));
  return Status::failure(Status::ofSystem(errno).code(), std::string(text));
}

Status unsupported(std::string why) {
  return Status::failure(StatusCode::unsupported, std::move(why));
}

/// What speaks against the entry. The fields are read in an order in which each says that the next
/// can be read.
Status checkEntry(const HXRPluginEntry* entry) {
  if (!entry || entry->mark != HXRPluginEntry().mark) {
    return unsupported(
        fmt::format("it exports no {}: it is no plug-in, or one of an older version", kEntryName));
  }
  if (entry->version != kPluginInterfaceVersion) {
    return unsupported(
        fmt::format("it is built for version {} of the plug-in interface, this is version {}",
                    entry->version, kPluginInterfaceVersion));
  }
  if (entry->layout != detail::pluginLayout()) {
    return unsupported("it is built with headers or settings that do not fit this program");
  }
  if (entry->root != &HXRNode::kClass) {
    return unsupported(
        "it has a copy of the library of its own: a plug-in is linked against "
        "nothing");
  }
  return entry->principal ? Status() : unsupported("it has no principal class");
}

Status addClasses(const HXRPlugin& plugin, const std::string& path) {
  const auto patchClasses = plugin.nodeClasses();
  if (patchClasses.empty()) return unsupported("it brings no patch");
  return addPatchClasses(patchClasses, Bundle::addBundle(String(path)));
}

// What was opened is never closed, even if it is refused: once its static objects were made nobody
// knows who holds them.
Status load(const std::string& path) {
  const std::string absolute = absolutePath(path);
  void* const library = ::dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) return lastLoadFailure(absolute);
  const auto* const entry = static_cast<const HXRPluginEntry*>(::dlsym(library, kEntryName));
  if (auto status = checkEntry(entry); !status) return status;
  try {
    return addClasses(entry->principal(), absolute);
  } catch (const std::exception& thrown) {
    return Status::failure(StatusCode::refused, thrown.what());
  }
}

}  // namespace

Status loadPlugin(const std::string& path) { return load(path).at(path); }

}  // namespace tarnkit
