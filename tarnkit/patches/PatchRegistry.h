#pragma once

#include <string_view>
#include <vector>

#include "tarnkit/patches/HXRNodeClass.h"

namespace tarnkit {

/// Enters the classes of this room that are made by name (the primitive value and every definition
/// of the catalogue) into the `ClassRegistry`. To be called before documents are read; calling it
/// again changes nothing. For one thread.
void registerPatchClasses();

/// Every definition class that can be placed: the catalogue by category, then what plug-ins have
/// added, in that order. Registers the catalogue when nobody has yet.
const std::vector<const HXRNodeClass*>& catalogue();

/// Adds a plug-in's definition class at run time; one of the same name is replaced. The record must
/// live as long as the process.
void addPatchClass(const HXRNodeClass& patchClass);

/// The definition class of that name, or null when there is none or the name is another kind of
/// class's. Takes constant time.
const HXRNodeClass* patchClassNamed(std::string_view name);

}  // namespace tarnkit
