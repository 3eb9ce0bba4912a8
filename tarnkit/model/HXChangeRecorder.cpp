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

// One in the process, also where a program that hides its names is linked with a shared library.
constinit std::atomic<std::uint32_t> HXChangeRecorder::atWork_{0};

HXChangeRecorder::HXChangeRecorder() = default;
HXChangeRecorder::~HXChangeRecorder() {
  if (std::erase(recorders(), this) != 0) atWork_.fetch_sub(1, std::memory_order_relaxed);
}

void HXChangeRecorder::beginRecording(HXDocument& document) {
  if (document.recorder_) throw std::logic_error("a document has one recorder at most");
  document.recorder_ = this;
  document.isRecorded_ = true;
  recorders().push_back(this);
  atWork_.fetch_add(1, std::memory_order_relaxed);
}

void HXChangeRecorder::endRecording(HXDocument& document) noexcept {
  if (document.recorder_ != this) return;
  document.recorder_ = nullptr;
  document.isRecorded_ = false;
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

HXChangeRecorder* HXChangeRecorder::ofNode(const HXNode* node) {
  if (!node) return nullptr;
  const HXNode& root = rootOf(*node);
  if (root.isRecorded_) return static_cast<const HXDocument&>(root).recorder_;
  return root.mayBeRecorded_ ? ofHeld(root) : nullptr;
}

HXChangeRecorder* HXChangeRecorder::ofHeld(const HXNode& root) {
  const auto found = std::find_if(recorders().begin(), recorders().end(),
                                  [&](auto* recorder) { return recorder->holdsSubnode(root); });
  return found == recorders().end() ? nullptr : *found;
}

HXChangeRecorder* HXChangeRecorder::of(const HXNode& source) { return ofNode(&source); }
HXChangeRecorder* HXChangeRecorder::of(const HXGroup& source) { return ofNode(source.node()); }
HXChangeRecorder* HXChangeRecorder::of(const HXPort& source) { return ofNode(source.node()); }
HXChangeRecorder* HXChangeRecorder::of(const HXPortGroup& source) { return ofNode(source.node()); }
HXChangeRecorder* HXChangeRecorder::of(const HXPortGroupCollection& source) {
  return ofNode(source.node());
}
HXChangeRecorder* HXChangeRecorder::of(const HXParameter& source) { return ofNode(source.node()); }
HXChangeRecorder* HXChangeRecorder::of(const HXImageStore& source) {
  return ofNode(source.document());
}

}  // namespace tarnkit
