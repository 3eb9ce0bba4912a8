#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"

namespace tarnkit::fuzz {

/// Edits a document as bytes say, one operation after the other, and while it is told of a change
/// edits it once more in the middle, to a bounded depth. It holds nothing but what it was asked to
/// keep: the operations work on bare pointers, as an editor's do.
class ModelEditor {
 public:
  /// Edits the document that it is told of last; `run` makes one of its own.
  ModelEditor(const std::uint8_t* bytes, std::size_t size);
  ~ModelEditor();
  ModelEditor(const ModelEditor&) = delete;
  ModelEditor& operator=(const ModelEditor&) = delete;

  /// Edits until the bytes are used up.
  void run();
  /// Edits this document only, which is not let go either. Nor is what was taken out of it: an
  /// archive tells whether somebody still has the port that a published port of it stands for, so a
  /// loose node that ends would change the document's bytes without an edit.
  void keepTo(HXDocument& document);
  /// Makes one edit, with those of observers in the middle of it; false when the bytes are used up.
  bool runOne();
  bool isUsedUp() const noexcept { return isDone(); }
  /// While set, observers do not edit.
  void setPaused(bool paused) noexcept { paused_ = paused; }
  /// The next byte, which edits nothing; 0 when they are used up.
  std::uint32_t nextByte() { return byte(); }
  /// Only what others do is followed by edits no more.
  void stop() noexcept { next_ = end_; }
  /// The document that was edited last; null when there was none.
  const Ref<HXDocument>& document() const noexcept { return document_; }
  /// Whether a port may have been published twice.
  bool doublePublications() const noexcept { return doublePublications_; }

  /// How many edits have been made in the process.
  static std::uint64_t editCount() noexcept;

 private:
  void observe(const Notification& notification);
  void edit();
  std::uint32_t byte();
  bool isDone() const noexcept { return next_ == end_; }

  std::uint32_t upTo(std::size_t count) { return byte() % static_cast<std::uint32_t>(count); }
  template <class T>
  void keep(std::vector<Ref<T>>& kept, const Ref<T>& object);
  std::vector<HXNode*> nodes() const;
  HXNode* anyNode();
  HXNode* anyContainer();
  HXPort* anyPort(HXNode* node, bool published);
  HXSymbolicPort* anySymbolicPort();
  Ref<HXRNode> anyPatch();

  void addNode();
  void moveNode();
  void setPatch();
  void swapGroup();
  void connect();
  void disconnect();
  void publish();
  void unpublish();
  void restore();
  void rename();
  void setValue();
  void setParameter();
  void changePortGroup();
  void changeDefinition();
  void changeViews();
  void changeDocument();

  const std::uint8_t* next_;
  const std::uint8_t* end_;
  Ref<HXDocument> document_;
  NotificationCenter::Token token_;
  int depth_ = 0;
  bool doublePublications_ = false;
  bool keepsDocument_ = false;
  bool paused_ = false;
  WeakRef<HXNode> toldOf_;
  // Removed ones that may come back.
  std::vector<Ref<HXNode>> nodes_;
  std::vector<Ref<HXConnection>> connections_;
  std::vector<Ref<HXSymbolicPort>> symbolicPorts_;
  std::vector<Ref<Object>> loose_;  // all of them, with a document that is kept
};

}  // namespace tarnkit::fuzz
