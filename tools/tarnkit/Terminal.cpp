#include "tools/tarnkit/Terminal.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "tarnkit/platform/text/UTF8.h"

namespace tarnkit::tool {

namespace {

ColorChoice colorChoice = ColorChoice::automatic;

struct Range {
  char32_t first;
  char32_t last;
};
// What terminals show over the character before, and what they show in two columns.
constexpr Range kNarrow[] = {{0x300, 0x36F},   {0x200B, 0x200F}, {0x20D0, 0x20FF},
                             {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}};
constexpr Range kWide[] = {{0x1100, 0x115F},   {0x2E80, 0x303E},  {0x3041, 0xA4CF},
                           {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},  {0xFE30, 0xFE6F},
                           {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},  {0x1F300, 0x1F64F},
                           {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

template <std::size_t N>
bool isIn(const Range (&ranges)[N], char32_t point) noexcept {
  return std::any_of(ranges, ranges + N, [point](const Range& range) {
    return point >= range.first && point <= range.last;
  });
}

// Where the last column of a line begins: behind the last run of several blanks.
std::size_t lastColumn(std::string_view line) noexcept {
  const auto text = line.find_first_not_of(' ');
  if (text == line.npos) return 0;
  const auto gap = line.rfind("  ");
  return gap == line.npos || gap < text ? text : gap + 2;
}

void appendWrapped(std::string& out, std::string_view line, std::size_t width) {
  constexpr std::size_t kNarrowest = 20;
  std::size_t indent = lastColumn(line);
  if (indent + kNarrowest > width) indent = 0;
  std::size_t used = 0;
  while (columnsOf(line) + used > width) {
    // The last blank that fits, or the first one that does not.
    std::size_t end = line.npos;
    for (auto blank = line.find(' ', used == 0 ? indent : 0); blank != line.npos;
         blank = line.find(' ', blank + 1)) {
      if (end != line.npos && used + columnsOf(line.substr(0, blank)) > width) break;
      end = blank;
    }
    if (end == line.npos || line.find_first_not_of(' ', end) == line.npos) break;
    out += line.substr(0, end);
    out += '\n';
    line.remove_prefix(line.find_first_not_of(' ', end));
    out.append(indent, ' ');
    used = indent;
  }
  out += line;
}

}  // namespace

void setColorChoice(ColorChoice choice) noexcept { colorChoice = choice; }

bool isColored(int stream) noexcept {
  if (colorChoice != ColorChoice::automatic) return colorChoice == ColorChoice::always;
  const char* const refused = std::getenv("NO_COLOR");
  return isTerminal(stream) && (!refused || *refused == '\0');
}

std::string styled(int stream, std::string_view style, std::string_view text) {
  return isColored(stream) ? fmt::format("\x1b[{}m{}\x1b[0m", style, text) : std::string(text);
}

bool isTerminal(int stream) noexcept { return ::isatty(stream) == 1; }

std::size_t terminalWidth(int stream) noexcept {
  constexpr std::size_t kUsual = 80;
  if (!isTerminal(stream)) return 0;
  winsize size{};
  return ::ioctl(stream, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

std::size_t columnsOf(std::string_view text) noexcept {
  std::size_t columns = 0;
  for (std::size_t at = 0; at < text.size();) {
    const auto next = detail::codePointAt(text, at);
    at += next.size;
    if (!isIn(kNarrow, next.value)) columns += isIn(kWide, next.value) ? 2 : 1;
  }
  return columns;
}

std::string wrapped(std::string_view text, std::size_t width) {
  constexpr std::size_t kNarrowest = 30;
  if (width < kNarrowest) return std::string(text);
  std::string out;
  for (std::size_t at = 0; at < text.size();) {
    const auto end = std::min(text.find('\n', at), text.size());
    appendWrapped(out, text.substr(at, end - at), width);
    if (end < text.size()) out += '\n';
    at = end + 1;
  }
  return out;
}

}  // namespace tarnkit::tool
