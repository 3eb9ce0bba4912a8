#pragma once

#include <string>

#include "tarnkit/render/HXGraphPage.h"

namespace tarnkit {

class HXDocument;
class HXDocumentDifference;

/// How a difference is to be shown.
struct HXDifferencePageOptions {
  /// The one that the page opens in.
  HXPictureTheme theme = HXPictureTheme::light;
  /// Whether what only tells how the documents are looked at is marked, too
  /// (`HXDocumentChange::isViewState`).
  bool viewState = false;
};

/// A page to look around in what leads from one document to another: that of the new one (see
/// `graphPage`), in which nodes, connections and published ports that came, went or changed are
/// marked, and a list of the changes to walk through.
///
/// What is gone is drawn where it stood, or right below what stands there now, with its connections
/// to what is still there; a group that is gone can be opened as any other. In the picture, marks
/// are classes of the elements: "is-added", "is-removed", "is-changed", and "holds-changes" of a
/// node with such things below it; the keys of what is gone begin with "removed/". Without scripts
/// the page shows the list, and the marked picture as that page does.
///
/// The difference is that of the two documents, neither of which was changed since. For one thread;
/// linear in both.
std::string differencePage(const HXDocument& oldDocument, const HXDocument& newDocument,
                           const HXDocumentDifference& difference,
                           const HXDifferencePageOptions& options = {},
                           HXPictureReport* report = nullptr);

/// The same, handed on as it is made (see `writeGraphPage`).
void writeDifferencePage(const HXDocument& oldDocument, const HXDocument& newDocument,
                         const HXDocumentDifference& difference,
                         const HXDifferencePageOptions& options, HXPagePieces pieces,
                         HXPictureReport* report = nullptr);

}  // namespace tarnkit
