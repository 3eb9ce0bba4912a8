#include "tarnkit/model/HXChangeRecorder.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"

namespace tarnkit {

namespace {

// Those at work on this thread.
std::vector<HXChangeRecorder*>& recorders() {
  static thread_local std::vector<HXChangeRecorder*> ofThread;
  return ofThread;
}

}  // namespace

HXChangeRecorder::HXChangeRecorder() = default;
HXChangeRecorder::~HXChangeRecorder() {
  if (std::erase(recorders(), this) != 0) atWork_.fetch_sub(1, std::memory_order_relaxed);
}

void HXChangeRecorder::beginRecording(HXDocument& document) {
  if (document.recorder_) throw std::logic_error("a document has one recorder at most");
  document.recorder_ = this;
  mark(document);
  recorders().push_back(this);
  atWork_.fetch_add(1, std::memory_order_relaxed);
}

void HXChangeRecorder::endRecording(HXDocument& document) noexcept {
  if (document.recorder_ == this) document.recorder_ = nullptr;
}

void HXChangeRecorder::mark(HXNode& node) noexcept { node.mayBeRecorded_ = true; }

const HXNode& HXChangeRecorder::rootOf(const HXNode& node) noexcept {
  const HXNode* root = &node;
  while (const HXGroup* const group = root->parentGroup_.get()) {
    const HXNode* const holder = group->presentOrFormerNode();
    if (!holder) break;
    root = holder;
  }
  return *root;
}

// Asked for every change, and of fresh nodes most of the time.
HXChangeRecorder* HXChangeRecorder::of(const HXNode* node) {
  if (!node) return nullptr;
  const HXNode& root = rootOf(*node);
  return root.mayBeRecorded_ ? ofRoot(root) : nullptr;
}

HXChangeRecorder* HXChangeRecorder::ofRoot(const HXNode& root) {
  if (const auto* document = as<HXDocument>(&root)) return document->recorder_;
  const auto found = std::find_if(recorders().begin(), recorders().end(),
                                  [&](auto* recorder) { return recorder->holdsSubnode(root); });
  return found == recorders().end() ? nullptr : *found;
}

namespace detail {

HXChangeRecorder* recorderAtWork(const HXNode& node) { return HXChangeRecorder::of(&node); }
HXChangeRecorder* recorderAtWork(const HXGroup& group) {
  return HXChangeRecorder::of(group.node());
}
HXChangeRecorder* recorderAtWork(const HXPort& port) { return HXChangeRecorder::of(port.node()); }
HXChangeRecorder* recorderAtWork(const HXPortGroup& group) {
  return HXChangeRecorder::of(group.node());
}
HXChangeRecorder* recorderAtWork(const HXPortGroupCollection& collection) {
  return HXChangeRecorder::of(collection.node());
}
HXChangeRecorder* recorderAtWork(const HXParameter& parameter) {
  return HXChangeRecorder::of(parameter.node());
}
HXChangeRecorder* recorderAtWork(const HXImageStore& store) {
  return HXChangeRecorder::of(store.document());
}

}  // namespace detail

}  // namespace tarnkit
