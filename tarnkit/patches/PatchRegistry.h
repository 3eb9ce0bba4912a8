#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "tarnkit/patches/HXRNodeClass.h"
#include "tarnkit/platform/system/Status.h"

namespace tarnkit {

class Bundle;

/// Enters the classes of this room (the primitive value, every definition of the catalogue, and
/// those that are not made by name but keep theirs) into the `ClassRegistry`. To be called before
/// documents are read; calling it again changes nothing. For one thread.
void registerPatchClasses();

/// Every definition class that can be placed: the catalogue by category, then what plug-ins have
/// added, in that order, as they are now. Registers the catalogue when nobody has yet.
std::vector<const HXRNodeClass*> catalogue();

/// Adds a definition class at run time. The record and all it stands on must live as long as the
/// process. Adding it again changes nothing. Refused as by `addPatchClasses`.
Status addPatchClass(const HXRNodeClass& patchClass);

/// Adds all the definition classes that a bundle brings, as its own, or none of them when one is
/// refused. Its declarations run here. Refused are a null record; a class without a name, or with
/// one that is taken: by any other class that is registered, in archives by the platform's values,
/// or on the device by what stands for a built-in class; one that does not derive from `HXRNode`,
/// or from a class that goes under the name of another; and one whose definitions cannot be made
/// (see `HXRNodeClass::makeDefinition`).
/// Classes that the bundle has brought before are passed over.
Status addPatchClasses(std::span<const HXRNodeClass* const> patchClasses, Bundle& bundle);

/// The definition class of that name, or null when there is none or the name is another kind of
/// class's. Takes constant time.
const HXRNodeClass* patchClassNamed(std::string_view name);

}  // namespace tarnkit
