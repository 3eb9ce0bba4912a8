#pragma once

#include <cstdint>
#include <string>

#include "tarnkit/archive/HXArchiveReader.h"
#include "tarnkit/platform/objects/Data.h"

namespace tarnkit::tool {

/// What a file is that some command takes.
enum class FileKind : std::uint8_t {
  unknown,
  document,
  textDocument,
  deviceGraph,
  imageArchive,
  script,
  picture,
};

/// Told by its first bytes and its root. A text is read whole for it, as JSON.
FileKind fileKindOf(ByteSpan bytes);
FileKind fileKindOf(HXArchiveKind kind) noexcept;

/// What a file is that is not what was asked for, and what reads it: "it is a device graph; tarnkit
/// inspect reads it". "" of an unknown one.
std::string describeOther(FileKind kind);

}  // namespace tarnkit::tool
