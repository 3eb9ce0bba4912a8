#pragma once

#include <string>

namespace tarnkit::tool {

/// What a plug-in exports: a function that gives its principal class (`HXRPlugin`), which lives as
/// long as the process.
///
///     extern "C" tarnkit::HXRPlugin* tarnkitPlugin() {
///       static MyPlugin plugin;
///       return &plugin;
///     }
inline constexpr const char* kPluginEntry = "tarnkitPlugin";

/// Loads a shared library and adds its patch definitions to the catalogue, as classes of a bundle
/// of their own. Throws CommandFailure when it is no plug-in.
void loadPlugin(const std::string& path);

}  // namespace tarnkit::tool
