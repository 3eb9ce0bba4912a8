#pragma once

#include "tarnkit/platform/Data.h"
#include "tarnkit/platform/String.h"

namespace tarnkit {

/// The MD5 digest of the bytes as 32 lowercase hexadecimal digits: a name for content, no
/// protection against anybody. Nil only where the system's cryptography refuses the digest. Safe on
/// any thread; linear in the bytes.
String md5StringRepresentation(ByteSpan bytes);

}  // namespace tarnkit
