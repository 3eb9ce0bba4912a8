#pragma once

#include <vector>

#include "tarnkit/model/HXNode.h"
#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit {

/// Copies of nodes: as bytes for a pasteboard or another process, and in place.
///
/// What is copied are the chosen nodes with everything below them: names, patches (those that
/// nobody knows, too), parameters with the images that they show, static values, published ports,
/// subnodes and views in their order, flags; and the connections that begin and end in them.
/// Nothing else: wires to other nodes, and publications by the groups that the nodes stand in, are
/// left out. The chosen nodes themselves are not touched.
///
/// The chosen nodes may stand in several groups, and in any order; the copies come in that order.
/// One that is inside another chosen one comes along with that one only, and one that is given
/// twice comes once. A document cannot be copied, and neither can no nodes at all.
///
/// What is pasted or duplicated has unique keys of its own, at every level, and is one step of the
/// document's history, if it has one. It is announced as ever: images, then each node when it is in
/// its group with all that is below it but no connection, then each connection. For the document's
/// thread; linear in what is copied. An operation that fails changes nothing.
class HXClipboard {
 public:
  /// The nodes as a standard keyed archive.
  static Result<Ref<Data>> copy(const std::vector<Ref<HXNode>>& nodes);

  /// Adds the nodes of a clipboard, which need not be trusted, to a group of a document, each moved
  /// by the offset on the canvas; gives them in the order in which they were chosen.
  ///
  /// An image is added to the document's store once for each parameter that shows it, and is the
  /// store's own where that has one of the key. A connection that a port does not take is left out,
  /// with one line logged. A failure, before anything has changed, when the bytes are no clipboard,
  /// or damaged, or the group is in no document.
  static Result<std::vector<Ref<HXNode>>> paste(ByteSpan bytes, HXGroup& group,
                                                HXPoint offset = {});

  /// Copies nodes of one document in place: each copy stands in the group of its original, moved by
  /// the offset, with images as pasted ones.
  ///
  /// With `keepInputs` the connections that come in from other nodes are copied too: inputs of the
  /// copies are fed by the same outputs, through publications of the same names where those of the
  /// originals are published by groups that are not copied. An output that takes no further
  /// connection feeds the original only.
  static Result<std::vector<Ref<HXNode>>> duplicate(const std::vector<Ref<HXNode>>& nodes,
                                                    HXPoint offset, bool keepInputs = false);
};

}  // namespace tarnkit
