#pragma once

namespace tarnkit {

class PatchDeclaration;

/// What the two oscillators have in common: they run as one class on the device and differ in the
/// default of their amplitude.
void declareLFO(PatchDeclaration& patch, float amplitude);

}  // namespace tarnkit
