#pragma once

#include <optional>

#include "tarnkit/math/MXExpression.h"

namespace tarnkit {

/// What the engine adds to strings: their value as expressions, by the default evaluator.

/// The value without substitutions; a failure is logged ("error: …") and gives nothing.
std::optional<MXNumber> numberByEvaluatingString(const String& string);
std::optional<MXNumber> numberByEvaluatingStringWithSubstitutions(
    const String& string, const MXSubstitutions& substitutions);
/// A failure goes to the slot.
std::optional<MXNumber> numberByEvaluatingStringWithSubstitutions(
    const String& string, const MXSubstitutions& substitutions, MXError* error);

/// Enters the expression classes into the class registry, so that archives can be read.
void registerMathClasses();

}  // namespace tarnkit
