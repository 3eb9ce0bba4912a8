#pragma once

#include <atomic>
#include <memory>

#include "tarnkit/model/HXChange.h"

namespace tarnkit {

class HXDocument;
class HXGroup;
class HXImageStore;
class HXNode;
class HXParameter;
class HXPort;
class HXPortGroup;
class HXPortGroupCollection;

/// Who is told, before they happen, of all changes of one document: the base of an undo history.
/// While no recorder is at work in the process, the model pays one test for this.
///
/// Every function of the model that changes a field or a table says so through `detail::willChange`
/// and its kin below; there is no other way to change one. Lives on the thread of its document.
class HXChangeRecorder : public Object {
 public:
  /// The recorder at work for the document that holds the source, or from which its node was taken
  /// in a change that the recorder still holds; null for none. Costs the depth.
  static HXChangeRecorder* of(const HXNode& source);
  static HXChangeRecorder* of(const HXGroup& source);
  static HXChangeRecorder* of(const HXPort& source);
  static HXChangeRecorder* of(const HXPortGroup& source);
  static HXChangeRecorder* of(const HXPortGroupCollection& source);
  static HXChangeRecorder* of(const HXParameter& source);
  static HXChangeRecorder* of(const HXImageStore& source);
  /// Whether `of` could find one.
  static bool anyAtWork() noexcept { return atWork_.load(std::memory_order_relaxed) != 0; }
  /// Whether `of` could find one for the source; most changes of a node are made before it is put
  /// anywhere. Takes the header of `HXNode`.
  template <class Source>
  static bool couldConcern(const Source& source) noexcept {
    if constexpr (requires { source.parentGroup_; }) {
      return source.parentGroup_.wasSet() || source.isRecorded_ || source.mayBeRecorded_;
    } else if constexpr (requires { source.node(); }) {
      const auto* const node = source.node();
      return node && couldConcern(*node);
    } else {
      return true;
    }
  }

  /// The change is about to happen.
  virtual void record(std::unique_ptr<HXChange> change) = 0;
  /// A public operation of the model begins and ends, maybe one inside another: what it changes
  /// belongs together.
  virtual void operationWillBegin() = 0;
  virtual void operationDidEnd() = 0;

 protected:
  HXChangeRecorder();
  ~HXChangeRecorder() override;
  /// A document has one recorder at most (std::logic_error).
  void beginRecording(HXDocument& document);
  void endRecording(HXDocument& document) noexcept;
  /// From now on `holdsSubnode` is asked about the node.
  static void mark(HXNode& node) noexcept;
  /// The node that holds it in the end. A node is held by the one that encloses it, or would if the
  /// group that it stands in had not been replaced: what a group took along that was dropped comes
  /// back with it. Costs the depth.
  static const HXNode& rootOf(const HXNode& node) noexcept;
  /// Whether a change that is held has the node come or go.
  virtual bool holdsSubnode(const HXNode& node) const = 0;

 private:
  /// Null for none, and for null.
  static HXChangeRecorder* ofNode(const HXNode* node);
  /// Of a node that left a document, and that no other node holds.
  static HXChangeRecorder* ofHeld(const HXNode& root);

  static std::atomic<std::uint32_t> atWork_;
};

namespace detail {

/// The recorder that wants to know of changes of `source`; null, at the cost of one test, while
/// none is at work.
template <class Source>
[[gnu::always_inline]] inline HXChangeRecorder* recorderOf(const Source& source) {
  if (!HXChangeRecorder::anyAtWork()) [[likely]] {
    return nullptr;
  }
  return HXChangeRecorder::couldConcern(source) ? HXChangeRecorder::of(source) : nullptr;
}

/// While one lives, a public operation on `source` is under way.
class RecordedOperation {
 public:
  template <class Source>
  explicit RecordedOperation(const Source& source) : recorder_(recorderOf(source)) {
    if (recorder_) recorder_->operationWillBegin();
  }
  ~RecordedOperation() {
    if (recorder_) recorder_->operationDidEnd();
  }
  RecordedOperation(const RecordedOperation&) = delete;
  RecordedOperation& operator=(const RecordedOperation&) = delete;

 private:
  Ref<HXChangeRecorder> recorder_;
};

}  // namespace detail

}  // namespace tarnkit
