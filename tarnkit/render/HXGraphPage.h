#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tarnkit/platform/objects/FunctionRef.h"
#include "tarnkit/render/HXGraphPicture.h"

namespace tarnkit {

class HXGroup;

/// The most groups that one page holds pictures of, nearest first.
inline constexpr std::size_t kMostGroupsOfPage = 10'000;

/// A page to look around a document in: the picture of the group, and those of every group below it
/// that can be opened from it, with pan, zoom, search by name, and a panel that tells of a node
/// what the picture leaves out.
///
/// One HTML file that refers to nothing outside itself: the data of the groups, from which its
/// script draws the one that is open, and of a large one the part that is to be seen. Without
/// scripts it shows the group's picture while that is of no more than 250 nodes, and says else that
/// it needs them. The theme is the one it opens in; the page can switch. The report is that of the
/// group; further notes tell how many groups below were laid out anew, and when some have no
/// picture. The same document gives the same bytes. Costs time linear in what stands in the group
/// and below it. For one thread.
std::string graphPage(const HXGroup& group, HXPictureTheme theme,
                      HXPictureReport* report = nullptr);

/// Takes the next piece of a page, from its beginning to its end.
using HXPagePieces = FunctionRef<void(std::string_view)>;

/// The same, handed on as it is made: what is kept meanwhile are one group's data and what the
/// nodes of all have in common. What `pieces` throws goes to the caller.
void writeGraphPage(const HXGroup& group, HXPictureTheme theme, HXPagePieces pieces,
                    HXPictureReport* report = nullptr);

}  // namespace tarnkit
