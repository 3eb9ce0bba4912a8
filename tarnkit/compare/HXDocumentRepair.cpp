#include "tarnkit/compare/HXDocumentRepair.h"

#include <cmath>
#include <utility>

#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXSymbolicPort.h"

namespace tarnkit {

namespace {

using Code = HXFindingCode;

// Each answer asks again what it answers: an earlier one, or an observer, may have done it. False
// when nothing was to be done, or could not be.

bool breakWire(HXDocument& document, const HXFinding& finding) {
  auto* wire = as<HXConnection>(finding.subject.get());
  if (!wire || !wire->isHeld()) return false;
  document.breakConnection(*wire);
  return true;
}

bool endPublication(HXDocument&, const HXFinding& finding) {
  auto* published = as<HXSymbolicPort>(finding.place.get());
  const HXNode* node = published ? published->node() : nullptr;
  if (!node || !node->subnodeGroup()) return false;
  const Ref<HXGroup> group = node->subnodeGroup();
  const bool isPublished = group->symbolicInputPortsInForce().contains(published) ||
                           group->symbolicOutputPortsInForce().contains(published);
  group->removeSymbolicPort(*published);
  return isPublished;
}

bool isEmptyGroup(const HXNode& node) {
  if (node.patch() || !node.unknownPatchClass().isNil() || !node.subnodeGroup() ||
      !node.subnodeGroup()->subnodesInForce().empty() || !node.parentGroup()) {
    return false;
  }
  return node.symbolicInputPortsInForce().count() == 0 &&
         node.symbolicOutputPortsInForce().count() == 0;
}

// With the groups around it that are empty without it.
bool removeGroup(HXDocument&, const HXFinding& finding) {
  Ref<HXNode> node(as<HXNode>(finding.place.get()));
  bool isDone = false;
  while (node && isEmptyGroup(*node)) {
    const Ref<HXNode> around(node->enclosingNode());
    node->parentGroup()->removeNode(node.get());
    isDone = true;
    node = around;
  }
  return isDone;
}

bool listView(HXDocument&, const HXFinding& finding) {
  auto* node = as<HXNode>(finding.place.get());
  if (!node || !node->parentGroup()) return false;
  node->parentGroup()->subnodeViewTypeDidChange(*node);
  return true;
}

HXPoint finite(HXPoint point) {
  return {std::isfinite(point.x) ? point.x : 0, std::isfinite(point.y) ? point.y : 0};
}

bool place(HXDocument&, const HXFinding& finding) {
  auto* node = as<HXNode>(finding.place.get());
  if (!node) return false;
  node->setPosition(finite(node->position()));
  if (node->subnodeGroup()) {
    node->subnodeGroup()->setCanvasCenter(finite(node->subnodeGroup()->canvasCenter()));
  }
  return true;
}

bool addImage(HXDocument& document, const HXFinding& finding) {
  const auto* image = as<HXImageParameter>(finding.place.get());
  const Ref<HXImageStoreEntry> entry(image ? image->imageEntry() : nullptr);
  if (!entry || document.imageStore()->imageEntryForKey(entry->key())) return false;
  if (entry->image() && !HXImageStoreEntry::canBeWritten(*entry->image())) return false;
  document.imageStore()->addImageEntry(entry);
  return true;
}

bool removeImage(HXDocument& document, const HXFinding& finding) {
  const auto* entry = as<HXImageStoreEntry>(finding.place.get());
  if (!entry) return false;
  const Ref<HXImageStore> store = document.imageStore();
  const auto count = store->countForKey(entry->key());
  for (auto i = count; i > 0; --i) store->removeImageEntry(entry);
  return count > 0;
}

struct Answer {
  Code code;
  bool (*give)(HXDocument& document, const HXFinding& finding);
};
constexpr Answer kAnswers[] = {
    {Code::wireHalf, breakWire},      {Code::wireNowhere, breakWire},
    {Code::wireUnseen, breakWire},    {Code::publicationNowhere, endPublication},
    {Code::groupEmpty, removeGroup},  {Code::viewUnlisted, listView},
    {Code::positionNoNumber, place},  {Code::imageAbsent, addImage},
    {Code::imageUnused, removeImage},
};

bool answer(HXDocument& document, const HXFinding& finding) {
  for (const Answer& row : kAnswers) {
    if (row.code == finding.code) return row.give(document, finding);
  }
  return false;
}

}  // namespace

std::vector<HXFinding> HXDocumentRepair::repair(HXDocument& document,
                                                const HXCheckOptions& options) {
  HXCheckOptions fixable = options;
  fixable.fixableOnly = true;
  fixable.limit = HXCheckOptions::kAll;
  const Ref<HXDocument> kept(&document);
  const HXHistory::Step step(document, "Repair");
  std::vector<HXFinding> answered;
  for (int round = 0; round < kMaximumRounds; ++round) {
    bool isDone = true;
    for (HXFinding& finding : HXDocumentCheck::check(document, fixable).findings) {
      if (!answer(document, finding)) continue;
      isDone = false;
      answered.push_back(std::move(finding));
    }
    if (isDone) break;
  }
  return answered;
}

}  // namespace tarnkit
