#pragma once

#include <string>

#include "tarnkit/render/HXGraphPicture.h"

namespace tarnkit {

class HXGroup;

/// The most groups that one page holds pictures of, nearest first.
inline constexpr std::size_t kMostGroupsOfPage = 10'000;

/// A page to look around a document in: the picture of the group, and those of every group below it
/// that can be opened from it, with pan, zoom, search by name, and a panel that tells of a node
/// what the picture leaves out.
///
/// One HTML file that refers to nothing outside itself. Without scripts it shows the group's
/// picture. The theme is the one it opens in; the page can switch. The report is that of the group;
/// further notes tell how many groups below were laid out anew, and when some have no picture. The
/// same document gives the same bytes. Costs time linear in what stands in the group and below it.
/// For one thread.
std::string graphPage(const HXGroup& group, HXPictureTheme theme,
                      HXPictureReport* report = nullptr);

}  // namespace tarnkit
