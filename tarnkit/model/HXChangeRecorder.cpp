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

const HXNode* HXChangeRecorder::holderOf(const HXNode& node) noexcept {
  const HXGroup* const group = node.parentGroup_.get();
  return group ? group->presentOrFormerNode() : nullptr;
}

// Asked for every change, and of fresh nodes most of the time.
HXChangeRecorder* HXChangeRecorder::of(const HXNode* node) {
  if (!node) return nullptr;
  const HXNode* root = node;
  while (const HXNode* const holder = holderOf(*root)) root = holder;
  if (!root->mayBeRecorded_) return nullptr;
  if (const auto* document = as<HXDocument>(root)) return document->recorder_;
  const auto found = std::find_if(recorders().begin(), recorders().end(),
                                  [&](auto* recorder) { return recorder->holdsSubnode(*root); });
  return found == recorders().end() ? nullptr : *found;
}

namespace detail {

const HXNode* nodeOfChange(const HXNode& node) noexcept { return &node; }
const HXNode* nodeOfChange(const HXGroup& group) noexcept { return group.node(); }
const HXNode* nodeOfChange(const HXPort& port) noexcept { return port.node(); }
const HXNode* nodeOfChange(const HXPortGroup& group) noexcept { return group.node(); }
const HXNode* nodeOfChange(const HXPortGroupCollection& collection) noexcept {
  return collection.node();
}
const HXNode* nodeOfChange(const HXParameter& parameter) noexcept { return parameter.node(); }
const HXNode* nodeOfChange(const HXImageStore& store) noexcept { return store.document(); }

}  // namespace detail

}  // namespace tarnkit
