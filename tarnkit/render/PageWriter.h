#pragma once

#include <string>

#include "tarnkit/render/HXGraphPage.h"

namespace tarnkit::detail {

class SceneDifference;

/// What a page to look around in is made of.
struct PageSource {
  const HXGroup& group;
  HXPictureTheme theme = HXPictureTheme::light;
  /// Null: the page shows one document, and not what has become of another.
  const SceneDifference* difference = nullptr;
  /// What stands in the page behind the stage, as HTML.
  std::string list;
};

/// See `writeGraphPage`.
void writePage(const PageSource& source, HXPagePieces pieces, HXPictureReport* report);

}  // namespace tarnkit::detail
