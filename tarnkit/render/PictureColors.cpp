#include "tarnkit/render/PictureColors.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <iterator>
#include <string>

#include "tarnkit/render/HXGraphPicture.h"
#include "tarnkit/render/PageParts.h"

namespace tarnkit {

namespace {

struct ThemeColor {
  std::string_view name;
  std::string_view light;
  std::string_view dark;
};

constexpr ThemeColor kColors[] = {
    {"canvas", "#f5f6f8", "#15171b"},  {"frame", "#cfd5dd", "#3a404a"},
    {"body", "#ffffff", "#21252b"},    {"line", "#ccd2da", "#3d444e"},
    {"text", "#1c2026", "#e7eaee"},    {"muted", "#636b76", "#9ba4b0"},
    {"chip", "#eef0f3", "#2d323a"},    {"accent", "#0067c0", "#5cb3ff"},
    {"warn", "#a83a00", "#ffa366"},    {"added", "#12702c", "#4ecb71"},
    {"removed", "#b3261e", "#ff8f86"}, {"changed", "#7a3cc4", "#c79bff"},
};

const ThemeColor& colorNamed(std::string_view name) {
  const auto* const at = std::find_if(std::begin(kColors), std::end(kColors),
                                      [&](const ThemeColor& color) { return color.name == name; });
  assert(at != std::end(kColors));
  return *at;
}

std::string_view of(const ThemeColor& color, HXPictureTheme theme) {
  return theme == HXPictureTheme::dark ? color.dark : color.light;
}

double linear(float component) {
  const double c = component > 0 ? std::min(static_cast<double>(component), 1.0) : 0.0;
  return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

}  // namespace

std::string pictureStyle() { return std::string(detail::kPictureStyle); }

std::string pictureStyle(HXPictureTheme theme) {
  constexpr std::string_view kVariable = "var(--tk-";
  const std::string_view rules = detail::kPictureStyle;
  std::string out;
  for (std::size_t at = 0; at < rules.size();) {
    const auto variable = rules.find(kVariable, at);
    out.append(rules.substr(at, variable - at));
    if (variable == std::string_view::npos) break;
    const auto name = variable + kVariable.size();
    const auto end = rules.find(')', name);
    out.append(of(colorNamed(rules.substr(name, end - name)), theme));
    at = end + 1;
  }
  return out;
}

std::string pictureColors(HXPictureTheme theme) {
  std::string out;
  for (const ThemeColor& color : kColors) {
    out.append("--tk-").append(color.name).append(1, ':').append(of(color, theme)) += ';';
  }
  return out;
}

namespace detail {

double luminance(RGBA color) {
  return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

double contrast(double first, double second) {
  return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

bool wantsLightText(RGBA color) {
  const double below = luminance(color);
  return contrast(below, 1) >= contrast(below, 0);
}

}  // namespace detail

}  // namespace tarnkit
