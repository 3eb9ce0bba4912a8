#pragma once

#include <string>

#include "tarnkit/render/HXGraphPicture.h"

namespace tarnkit::detail {

class SceneDifference;

/// What a page to look around in is made of.
struct PageSource {
  const HXGroup& group;
  HXPictureTheme theme = HXPictureTheme::light;
  /// Null: the page shows one document, and not what has become of another.
  const SceneDifference* difference = nullptr;
  /// What stands in the page behind the pictures, as HTML.
  std::string list;
};

/// See `graphPage`.
std::string makePage(const PageSource& source, HXPictureReport* report);

}  // namespace tarnkit::detail
