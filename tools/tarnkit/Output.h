#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/objects/FunctionRef.h"
#include "tarnkit/platform/system/Status.h"

namespace tarnkit::tool {

/// The name that stands for standard input, or for standard output.
inline constexpr const char* kStandardStream = "-";

/// Writes to standard output at once. Throws CommandFailure when that cannot be written.
void writeToStandardOutput(std::string_view text);

/// The whole of a file, or of standard input. Throws CommandFailure; `what` says what it is read
/// for.
std::vector<std::uint8_t> readFile(std::string_view what, const std::string& path);
/// Writes a file whole or not at all, or standard output. Throws CommandFailure.
void writeFile(std::string_view what, const std::string& path, ByteSpan bytes);
/// The same for what never stands in memory as a whole. `write` hands its pieces on from the first
/// to the last; it is asked again where the file has to be written a second time.
using OutputPieces = FunctionRef<void(std::string_view)>;
void writeFileInPieces(std::string_view what, const std::string& path,
                       FunctionRef<void(OutputPieces)> write);

/// Tells the user something: one line on standard error, "tarnkit: TEXT".
void complain(std::string_view text);

/// The text with blanks for its control characters: names and paths may hold anything, and are
/// shown within lines and on terminals.
std::string oneLine(std::string_view text);

/// Throws the CommandFailure of work on that file.
[[noreturn]] void failWithFile(std::string_view what, const std::string& path,
                               std::string_view why);
/// The same for a failure of the library, which may be about another file on the way.
[[noreturn]] void failWithFile(std::string_view what, const std::string& path,
                               const Status& status);

}  // namespace tarnkit::tool
