#include "tarnkit/render/HXGraphPage.h"

#include "tarnkit/render/PageWriter.h"

namespace tarnkit {

std::string graphPage(const HXGroup& group, HXPictureTheme theme, HXPictureReport* report) {
  std::string page;
  writeGraphPage(
      group, theme, [&](std::string_view piece) { page += piece; }, report);
  return page;
}

void writeGraphPage(const HXGroup& group, HXPictureTheme theme, HXPagePieces pieces,
                    HXPictureReport* report) {
  detail::writePage({group, theme, nullptr, {}}, pieces, report);
}

}  // namespace tarnkit
