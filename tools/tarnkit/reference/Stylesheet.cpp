#include "tools/tarnkit/reference/Stylesheet.h"

#include <fmt/format.h>

#include "tools/tarnkit/reference/PageFrame.h"
#include "tools/tarnkit/reference/ReferenceParts.h"

namespace tarnkit::tool {

namespace {

constexpr const char* kLightColors =
    "color-scheme:light;--paper:#fff;--ink:#1c2026;--soft:#5a626d;--faint:#f5f6f8;--rule:#e2e5ea;"
    "--link:#0058a8;";
constexpr const char* kDarkColors =
    "color-scheme:dark;--paper:#1b1e23;--ink:#e7eaee;--soft:#a3abb6;--faint:#22262c;--rule:#343a43;"
    "--link:#7cc0ff;";

std::string colorsOf(HXPictureTheme theme) {
  const char* const page = theme == HXPictureTheme::dark ? kDarkColors : kLightColors;
  return fmt::format(":root{{{}{}}}\n", page, pictureColors(theme));
}

}  // namespace

std::string referenceStylesheet(std::optional<HXPictureTheme> theme) {
  std::string css = fmt::format("/* {} */\n", kReferenceMark);
  css += colorsOf(theme.value_or(HXPictureTheme::light));
  if (!theme) {
    css +=
        fmt::format("@media (prefers-color-scheme:dark){{{}}}\n", colorsOf(HXPictureTheme::dark));
  }
  css += fmt::format("@media print{{{}}}\n", colorsOf(HXPictureTheme::light));
  css += kReferenceStyle;
  return css + pictureStyle();
}

}  // namespace tarnkit::tool
