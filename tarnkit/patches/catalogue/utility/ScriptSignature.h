#pragma once

#include "tarnkit/platform/text/String.h"

namespace tarnkit::detail {

/// What stands between the parentheses of the first function "expression" with arguments in a
/// script: the first match of `function\s+expression\s*\((.+)\)`, in any case. It reaches to the
/// last closing parenthesis of the line, however many there are. Nil when there is no match.
///
/// Takes time linear in the script, whatever it holds. Safe on any thread.
String scriptSignature(const String& script);

}  // namespace tarnkit::detail
