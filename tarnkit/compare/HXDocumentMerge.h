#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tarnkit/compare/HXNodeMatching.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit {

/// Which of two branches: ours, into which is merged, or theirs.
enum class HXMergeSide : std::uint8_t { ours, theirs };

/// One place where two branches do not go together: what each says there, and what was taken.
struct HXMergeConflict {
  enum class Kind : std::uint8_t {
    twoValues,          // one property set to two values
    patchReplaced,      // one patch replaced twice
    removedAndChanged,  // removed here and changed there
    joinedTwice,        // an input of one connection
    movedIntoItself,    // moves that would close a circle
    movedTwice,         // to two groups
    twoOrders,
    hungOnRemoved,  // what one made is of no use since the other removed what it hung on
  };
  Kind kind = Kind::twoValues;
  /// Of the node (see `HXAddresses`), in the document where it is.
  std::string address;
  /// The property, as it is said: "name", "Maximum", "connection".
  std::string subject;
  std::string ours;
  std::string theirs;
  /// What stands in the merged document.
  std::string taken;
  /// Whether somebody had said beforehand what to take.
  bool isDecided = false;

  /// One line: "Album / Page: name, ours \"Card\", theirs \"Sheet\", taken \"Card\"".
  std::string description() const;
};
/// "twoValues", "patchReplaced", …: as the kind is written.
std::string_view nameOf(HXMergeConflict::Kind kind) noexcept;

/// What two branches have made of a document, as one document.
///
/// What one branch changed and the other left is taken; what both changed alike is taken once.
/// Where they differ, ours is taken unless something else was asked for, and the conflict is told.
/// What one removed and the other changed stays, with what it needs around it. Nodes that the
/// branches made are different nodes whatever their keys; theirs draws another key where ours has
/// it. Selections, panels, canvas centres and collapsed groups are ours where both have changed
/// them, without a word.
///
/// The merged document has the keys of ours. The three documents are not changed. Time n log n. For
/// the documents' thread.
class HXDocumentMerge {
 public:
  /// How to merge.
  struct Options {
    HXNodeMatching::Keys keys = HXNodeMatching::Keys::whereTheyAgree;
    /// What is taken where nothing else is said.
    HXMergeSide preference = HXMergeSide::ours;
    /// Whether the preference was asked for: what it takes is decided then.
    bool isPreferenceDecided = false;
    /// What is taken at an address, or of the property there ("Album / Page: name").
    std::unordered_map<std::string, HXMergeSide> favored;
  };
  /// What a merge came to.
  struct Outcome {
    Ref<HXDocument> document;
    std::vector<HXMergeConflict> conflicts;

    /// Whether nobody had decided one of the conflicts.
    bool hasOpenConflicts() const;
  };

  HXDocumentMerge() = delete;
  /// A failure when one of the documents does not fit together (`HXDocumentState::fitsTogether`) or
  /// cannot be saved.
  static Result<Outcome> merge(const HXDocument& base, const HXDocument& ours,
                               const HXDocument& theirs, const Options& options);
  static Result<Outcome> merge(const HXDocument& base, const HXDocument& ours,
                               const HXDocument& theirs) {
    return merge(base, ours, theirs, Options());
  }
};

}  // namespace tarnkit
