#pragma once

#include "tarnkit/platform/text/String.h"

namespace tarnkit {

/// A fresh random UUID (version 4, RFC 4122) in its upper-case 8-4-4-4-12 form. Safe on any thread.
String newUUIDString();

}  // namespace tarnkit
