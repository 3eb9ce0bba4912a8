#pragma once

#include <cstdint>
#include <string_view>

#include "tarnkit/platform/text/String.h"
#include "tarnkit/render/TextMetrics.h"

namespace tarnkit::detail {

/// A text with as much of it as fits its place. Shares the text, and costs what fits.
struct Label {
  String full;
  std::uint32_t kept = 0;  // bytes
  bool shortened = false;
  /// Of what is shown.
  double width = 0;

  Label() = default;
  Label(String text, Font font, double room);
  std::string_view shown() const noexcept { return full.view().substr(0, kept); }
};

}  // namespace tarnkit::detail
