#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnkit::tool {

// What the terminal that the program runs in is asked for: colours, and its width.

/// When output is coloured. `automatic`: where it goes to a terminal, and `NO_COLOR` is not set or
/// empty.
enum class ColorChoice : unsigned char { automatic, always, never };

/// For the rest of the process.
void setColorChoice(ColorChoice choice) noexcept;

/// Whether what goes to the stream (a file descriptor) is coloured.
bool isColored(int stream) noexcept;
/// The text in a style (the numbers of an escape sequence, "1" or "31"), where the stream takes it.
std::string styled(int stream, std::string_view style, std::string_view text);

bool isTerminal(int stream) noexcept;
/// The width of the terminal in columns; 0 where the stream goes to none.
std::size_t terminalWidth(int stream) noexcept;

/// How many columns a terminal takes for the text, which is UTF-8.
std::size_t columnsOf(std::string_view text) noexcept;

/// The text with its lines broken at blanks so that they fit the width; what goes on stands below
/// the last column of a line that is laid out in columns (two blanks or more between). Unchanged
/// for a width of 0, and where it is too narrow to be read.
std::string wrapped(std::string_view text, std::size_t width);

}  // namespace tarnkit::tool
