#pragma once

#include <string>

#include "tarnkit/platform/system/Status.h"

namespace tarnkit {

/// Loads a plug-in (see `HXRPluginEntry`) and adds its patch definitions to the catalogue, as
/// classes of a bundle whose identifier is the file's absolute path. A failure, of the path that
/// was given, when the file is no plug-in, was built for another version of this library or with
/// other settings, has taken a copy of the library into itself, brings no class, or brings one that
/// `addPatchClasses` refuses; nothing is registered then. Loading a plug-in again changes nothing.
///
/// A host links the whole of the rooms that plug-ins may use and exports their symbols (with CMake
/// by the properties LINK_LIBRARY_OVERRIDE, "WHOLE_ARCHIVE,tarnkit::patches,tarnkit::archive,
/// tarnkit::foundation,tarnkit::platform", and ENABLE_EXPORTS). One that uses the model registers
/// its classes first, so that their names are known to be taken. A plug-in stays loaded until the
/// process ends, and its code can do whatever the process can. For one thread.
Status loadPlugin(const std::string& path);

}  // namespace tarnkit
