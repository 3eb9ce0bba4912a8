#pragma once

#include <cstdint>

#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit {

// How to read the names of the editor's side.
//
// `HX` begins the classes of the editor's model, `HXR` those of the patch definitions that it
// follows, `PM` and `PMR` the names of the device's classes, which stand in device graphs.
//
// An operation that begins with `hx_` (in the model), `hxr_` or `trn_` (in definitions) is not the
// public interface: it is a step of the class that declares it, public or virtual at most because
// another class of the library takes part. These names are kept because the editor's own sources
// and its error reports speak of the steps by them. Editors call the operation without a prefix
// whose comment says when the step is taken.

/// Enters the classes of the model and the catalogue of patch definitions into the class registry,
/// so that they can be made by name, and lets definitions make documents. Nodes, groups and image
/// stores call it when they are made, documents when they are opened; a program that starts from a
/// name or from a definition calls it itself. Calling it again costs nothing.
///
/// Readers of the platform know the model's classes only from then on. A program whose first step
/// is to read a part of a document (a node that was copied in another process) with
/// `StandardKeyedUnarchiver` calls this before, or reads it with `unarchivedModelObject`.
void registerModelClasses();

/// The root object of a standard keyed archive of a part of a document: a node, a group, whatever
/// stands in one. As `StandardKeyedUnarchiver::unarchive`, with the model's classes entered; the
/// bytes need not be trusted. Whole documents are read by `HXDocumentFile`.
Result<Ref<Object>> unarchivedModelObject(ByteSpan bytes, std::int32_t codingType);

}  // namespace tarnkit
