#include "tarnkit/render/Label.h"

namespace tarnkit::detail {

Label::Label(String text, Font font, double room) : full(std::move(text)) {
  const FittedText fitted = fitText(full.view(), font, room);
  kept = static_cast<std::uint32_t>(fitted.kept.size());
  shortened = fitted.shortened;
  width = fitted.width;
}

}  // namespace tarnkit::detail
