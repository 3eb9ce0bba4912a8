#pragma once

namespace tarnkit {

/// Enters the classes of the model and the catalogue of patch definitions into the class registry,
/// so that they can be made by name, and lets definitions make documents. Nodes call it when they
/// are made, documents when they are opened; a program that starts from a name or from a definition
/// calls it itself. Calling it again costs nothing.
void registerModelClasses();

}  // namespace tarnkit
