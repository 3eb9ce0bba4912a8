#pragma once

#include <optional>
#include <string>

#include "tarnkit/render/HXGraphPicture.h"

namespace tarnkit::tool {

/// The one stylesheet of a reference, rules of the pictures included. Without a theme the pages
/// follow the reader's system; paper is light whatever the theme.
std::string referenceStylesheet(std::optional<HXPictureTheme> theme);

}  // namespace tarnkit::tool
