#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/platform/text/String.h"

namespace tarnkit {

/// One change that leads from a document to another: what it is, where, and what stood there and
/// stands there now, as people read it. A value.
struct HXDocumentChange {
  enum class Kind : std::uint8_t {
    nodeAdded,
    nodeRemoved,
    nodeMoved,  // to another group
    nodeRenamed,
    commentChanged,
    patchReplaced,
    parameterChanged,
    valueChanged,  // the static value of a port
    connectionMade,
    connectionBroken,
    connectionRewired,  // the same input, from another output
    portPublished,
    portUnpublished,
    publicationRenamed,
    arrayOutputReplaced,  // a replicator collects the port under another key
    portGroupHidden,      // or shown
    portGroupOrder,
    subnodesForced,  // or not any more
    groupOpacity,
    groupKind,  // of views, or not
    nodeOrder,
    viewOrder,
    publicationOrder,
    connectionOrder,
    imageAdded,
    imageRemoved,
    imageChanged,
    imageCount,
    imageOrder,
    // How the editor looks at the document.
    position,
    selection,
    inspectorPanel,
    canvasCenter,
    portGroupCollapsed,
  };
  Kind kind = Kind::nodeAdded;
  /// Of the node, or of the group whose order or looks have changed (see `HXAddresses`), in the new
  /// document; of what was removed in the old one. "/" of the document and its images.
  std::string address;
  /// Of the group around the node: what changes are listed under.
  std::string place;
  /// The port, parameter, port group or image; "" where the node itself has changed.
  std::string subject;
  /// As they are said; "" where there was, or is, nothing to be said.
  std::string oldText;
  std::string newText;
  /// The unique keys of the node in either document; nil where it is not there.
  String oldKey;
  String newKey;
  /// The numbers of the node in the states of either document (`HXDocumentState`); -1 where it is
  /// not there.
  std::int32_t oldNumber = -1;
  std::int32_t newNumber = -1;
  /// The key of the port, parameter, port group or image; nil where the node itself has changed.
  String subjectKey;
  /// What went along with it: connections and publications that hung on what was removed, values of
  /// ports that a patch does not have.
  std::vector<std::string> consequences;

  /// Whether it is how the editor looks at the document, and not what the document says.
  bool isViewState() const noexcept { return kind >= Kind::position; }
  /// '+' for what came, '-' for what went, '~' for what is otherwise.
  char sign() const noexcept;
  /// Without where it is: "Maximum: 649 → 700", "renamed from Page to Card".
  std::string description() const;
};

/// "nodeAdded", "nodeRemoved", …: as the kind is written.
std::string_view nameOf(HXDocumentChange::Kind kind) noexcept;

}  // namespace tarnkit
