#include "tarnkit/render/PictureColors.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>

#include "tarnkit/render/HXGraphPicture.h"
#include "tarnkit/render/TextMetrics.h"

namespace tarnkit {

namespace {

struct ThemeColor {
  std::string_view name;
  std::string_view light;
  std::string_view dark;
};

constexpr ThemeColor kColors[] = {
    {"canvas", "#f5f6f8", "#15171b"}, {"frame", "#cfd5dd", "#3a404a"},
    {"body", "#ffffff", "#21252b"},   {"line", "#ccd2da", "#3d444e"},
    {"text", "#1c2026", "#e7eaee"},   {"muted", "#636b76", "#9ba4b0"},
    {"chip", "#eef0f3", "#2d323a"},   {"accent", "#0067c0", "#5cb3ff"},
    {"warn", "#a83a00", "#ffa366"},
};

// "$fonts" stands for the fonts, every other "$name" for a colour.
constexpr std::string_view kRules =
    ".tk-picture{fill:$text;font-size:11px;font-family:$fonts;-webkit-text-size-adjust:none}\n"
    ".tk-canvas{fill:$canvas}\n"
    ".tk-frame{fill:none;stroke:$frame;stroke-width:1.5}\n"
    ".tk-body,.tk-stack,.tk-tab{fill:$body;stroke:$line}\n"
    ".tk-missing .tk-body,.tk-missing .tk-tab{stroke:$warn;stroke-dasharray:4 3}\n"
    ".tk-title{font-size:12px;font-weight:bold}\n"
    ".tk-light{fill:#fff}\n"
    ".tk-dark{fill:#000}\n"
    ".tk-badge{fill-opacity:.18}\n"
    ".tk-count{font-size:10px;font-weight:bold}\n"
    ".tk-heading{fill:$muted;font-size:10px;font-weight:bold}\n"
    ".tk-chevron{fill:none;stroke:$muted;stroke-width:1.5;stroke-linecap:round;"
    "stroke-linejoin:round}\n"
    ".tk-chip{fill:$chip}\n"
    ".tk-value{fill:$muted;font-size:10px}\n"
    ".tk-set{fill:$text}\n"
    ".tk-swatch{stroke:$line}\n"
    ".tk-switch{fill:$chip;stroke:$line}\n"
    ".tk-switch.tk-on{fill:$accent;stroke:$accent}\n"
    ".tk-knob{fill:$body;stroke:$line;stroke-width:.5}\n"
    ".tk-dot{stroke-width:1.5}\n"
    ".tk-open{fill:$body}\n"
    ".tk-many{fill:$muted;stroke:$muted}\n"
    ".tk-many.tk-open{fill:$body}\n"
    ".tk-ring{fill:none;stroke-width:1.25}\n"
    ".tk-wire{fill:none;stroke-width:2;stroke-linecap:round}\n"
    ".tk-far{fill:$canvas;stroke-width:1.5}\n"
    ".tk-link{fill:none;stroke-width:1.25;stroke-dasharray:1 4;stroke-linecap:round}\n"
    ".tk-caption{font-size:15px;font-weight:bold}\n"
    ".tk-counts,.tk-note{fill:$muted}\n"
    ".tk-warn{fill:$warn}\n";

const ThemeColor* colorNamed(std::string_view name) {
  const auto* const at = std::find_if(std::begin(kColors), std::end(kColors),
                                      [&](const ThemeColor& color) { return color.name == name; });
  return at == std::end(kColors) ? nullptr : at;
}

template <class Append>
std::string rulesWith(Append appendColor) {
  std::string out;
  for (std::size_t at = 0; at < kRules.size();) {
    const auto dollar = kRules.find('$', at);
    out.append(kRules.substr(at, dollar - at));
    if (dollar == std::string_view::npos) break;
    const auto end = kRules.find_first_not_of("abcdefghijklmnopqrstuvwxyz", dollar + 1);
    const auto name = kRules.substr(dollar + 1, end - dollar - 1);
    if (const auto* const color = colorNamed(name)) {
      appendColor(out, *color);
    } else {
      out += detail::kPictureFonts;
    }
    at = end;
  }
  return out;
}

std::string_view of(const ThemeColor& color, HXPictureTheme theme) {
  return theme == HXPictureTheme::dark ? color.dark : color.light;
}

double linear(float component) {
  const double c = component > 0 ? std::min(static_cast<double>(component), 1.0) : 0.0;
  return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

}  // namespace

std::string pictureStyle(HXPictureTheme theme) {
  return rulesWith([&](std::string& out, const ThemeColor& color) { out += of(color, theme); });
}

std::string pictureStyle() {
  return rulesWith([](std::string& out, const ThemeColor& color) {
    out.append("var(--tk-").append(color.name) += ')';
  });
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
