#pragma once

#include "tarnkit/platform/text/String.h"

namespace tarnkit {

class CharacterSet;

/// The string without its leading, or trailing, characters that are in the set. Nil gives nil; a
/// string with nothing to trim is returned as it is. Safe on any thread; linear in what is trimmed.
String stringByTrimmingLeadingCharactersInSet(const String& string, const CharacterSet& set);
String stringByTrimmingTrailingCharactersInSet(const String& string, const CharacterSet& set);

}  // namespace tarnkit
