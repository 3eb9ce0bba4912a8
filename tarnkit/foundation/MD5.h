#pragma once

#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

/// The MD5 digest of the bytes as 32 lowercase hexadecimal digits: a name for content, no
/// protection against anybody. Nil only where the system's cryptography refuses the digest. Safe on
/// any thread; linear in the bytes.
String md5StringRepresentation(ByteSpan bytes);

}  // namespace tarnkit
