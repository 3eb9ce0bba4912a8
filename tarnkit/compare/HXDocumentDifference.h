#pragma once

#include <vector>

#include "tarnkit/compare/HXDocumentChange.h"
#include "tarnkit/compare/HXDocumentState.h"
#include "tarnkit/compare/HXNodeMatching.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/platform/system/Status.h"

namespace tarnkit {

/// What leads from one document to another: a list of changes that people can read, and the way
/// from the one to the other, which can be gone.
///
/// One change is what one edit does. What follows from it is no change of its own: with a node go
/// its connections, its publications and what stands below it; with a patch, or with a parameter
/// that ports follow, go the ports that are there no more; with a publication those further out,
/// and the connections of the port; a node that is moved to another group arrives without
/// connections. That is told with the change (`HXDocumentChange::consequences`). So some edits of a
/// document never make more changes than there were edits, and nodes beside one that is inserted
/// have not changed.
///
/// Documents that were opened with fresh keys are told apart as those that kept them, but for what
/// keys alone tell: the order of the nodes in a group, which such a file does not keep.
///
/// Nothing of the documents is kept alive; they are asked while the difference is made, and not
/// changed. Time n log n. For the documents' thread.
class HXDocumentDifference {
 public:
  HXDocumentDifference(const HXDocument& oldDocument, const HXDocument& newDocument,
                       HXNodeMatching::Keys keys = HXNodeMatching::Keys::whereTheyAgree);

  /// Whether the two say the same, and are looked at in the same way.
  bool isEmpty() const noexcept { return changes_.empty(); }
  /// Whether there is another change than of how the documents are looked at.
  bool hasContentChanges() const noexcept;
  /// By the place where they are, from the top downward; what was removed before what was added.
  const std::vector<HXDocumentChange>& changes() const noexcept { return changes_; }
  const HXNodeMatching& matching() const noexcept { return matching_; }

  /// Makes the old document, or one of the same state, the new one, as one step of its history.
  /// What stays in it are the same objects.
  ///
  /// Saved with keys, the document then is the new one byte for byte, where both have the same
  /// keys. A node of other keys keeps those that it has in the old document, and the nodes of a
  /// group that has such nodes keep their order; apart from that the two are the same. Of images
  /// the document has the new one's counts.
  ///
  /// A failure, and nothing changed, for a document that is not what the old one was, while a step
  /// of its history is open, and where one of the two does not fit together
  /// (`HXDocumentState::fitsTogether`).
  Status applyTo(HXDocument& document) const;

 private:
  HXDocumentState goal() const;

  HXDocumentState old_;
  HXDocumentState new_;
  HXNodeMatching matching_;
  std::vector<HXDocumentChange> changes_;
  std::vector<Ref<Data>> pieces_;  // by the number of a new node; of those that may be needed
};

}  // namespace tarnkit
