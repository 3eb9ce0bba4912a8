#include "tarnkit/render/HXGraphPage.h"

#include "tarnkit/render/PageWriter.h"

namespace tarnkit {

std::string graphPage(const HXGroup& group, HXPictureTheme theme, HXPictureReport* report) {
  return detail::makePage({group, theme, nullptr, {}}, report);
}

}  // namespace tarnkit
