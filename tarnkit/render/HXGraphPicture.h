#pragma once

#include <string>
#include <vector>

namespace tarnkit {

class HXGroup;

enum class HXPictureTheme { light, dark };

/// How a picture is to be drawn.
struct HXPictureOptions {
  /// Of a picture that stands alone. An embedded one takes its colours from the page.
  HXPictureTheme theme = HXPictureTheme::light;
  /// Off: a whole SVG file with its own style block. On: one `svg` element to stand inside an HTML
  /// page, without prologue and style; the page brings `pictureStyle` and, in both themes,
  /// `pictureColors`.
  bool embedded = false;
  /// Whether the group's name and its counts stand above the picture.
  bool caption = true;
  /// Stands before every id, so that several pictures can share a page. Letters, digits, "_", "."
  /// and "-", beginning with a letter.
  std::string idPrefix;
};

/// What came of drawing.
struct HXPictureReport {
  /// In canvas units, which are the pixels of the picture at 100 %.
  double width = 0;
  double height = 0;
  /// The nodes do not stand at their own positions, because those overlapped or were unusable.
  bool laidOut = false;
  /// What whoever looks at the picture should know, one sentence each: that it was laid out anew,
  /// what is missing. They stand in the picture too.
  std::vector<std::string> notes;
};

/// Draws one group of a document as SVG: its nodes with their ports, values and port groups at
/// their positions, the connections between them, and its published ports at its edge.
///
/// A node's position is the upper left corner of its box, y growing downward. When boxes overlap,
/// or a position is no number or beyond 100,000, the whole group is laid out by layers instead, and
/// a note says so. Collapsed port groups are one line, hidden ones are left out; a connection to a
/// port that is not drawn ends at the node's title bar.
///
/// The elements can be found by class, each with an id: `g.tk-node` (data-node, data-patch,
/// data-group, data-count), `g.tk-port` (data-port, data-orientation, data-connected,
/// data-published), `path.tk-wire` (data-connection, data-from, data-to), and `g.tk-edge`
/// (data-port, data-orientation) for the published ports; data-from and data-to are "NODE/PORT".
///
/// The same group gives the same bytes. The text is well-formed XML whatever the names hold, and
/// every text fits its box in the fonts of the style (and in narrower ones). Costs time linear in
/// what stands in the group and below it. For one thread.
std::string graphPicture(const HXGroup& group, const HXPictureOptions& options = {},
                         HXPictureReport* report = nullptr);

/// The style rules of the classes in a picture, with the theme's colours written in.
std::string pictureStyle(HXPictureTheme theme);
/// The same rules with the colours as CSS variables, for pages with several themes.
std::string pictureStyle();
/// The variables of a theme as declarations, "--tk-canvas:#f6f7f9;…", to stand in a rule of the
/// page, such as ":root{…}".
std::string pictureColors(HXPictureTheme theme);

}  // namespace tarnkit
