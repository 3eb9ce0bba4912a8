#include "tarnkit/model/HXSubviewGroup.h"

#include <algorithm>
#include <cassert>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXEntryChange.h"
#include "tarnkit/model/HXFieldChange.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/patches/HXArchivedKeys.h"
#include "tarnkit/platform/collections/MembersOf.h"

namespace tarnkit {

const Class HXSubviewGroup::kClass{"HXSubviewGroup", &HXGroup::kClass,
                                   &HXSubviewGroup::makeForDecoding};

namespace {

namespace key = archived::subviewGroup;

constinit const Symbol kDeviceSubviewNodes{"PMSubviewGroup.subviewNodes"};

}  // namespace

struct HXSubviewGroupFields {
  struct View : detail::TableOf<HXSubviewGroup, OrderedSet> {
    static constexpr const char* kName = "view";
    static OrderedSet& in(HXSubviewGroup& group) { return *group.subviewNodes_; }
    static void addNotices(HXSubviewGroup& group, const Ref<Object>&, const Value*, bool,
                           HXChangeNotices& notices) {
      notices.addValue(group, kName,
                       [kept = Ref<HXSubviewGroup>(&group)] { kept->announceOrder(); });
    }
  };
  struct AllViews : detail::FieldOf<HXSubviewGroup> {
    static constexpr const char* kName = "views";
    static constexpr const char* kTable = View::kName;
    static std::vector<Ref<Object>> get(const HXSubviewGroup& group) {
      return {group.subviewNodes_->begin(), group.subviewNodes_->end()};
    }
    static void set(HXSubviewGroup& group, const std::vector<Ref<Object>>& order) {
      group.subviewNodes_->clear();
      for (const auto& view : order) group.subviewNodes_->add(view);
    }
    static void addNotices(HXSubviewGroup& group, const std::vector<Ref<Object>>&,
                           HXChangeNotices& notices) {
      notices.addValue(group, View::kName,
                       [kept = Ref<HXSubviewGroup>(&group)] { kept->announceOrder(); });
    }
  };
};

HXSubviewGroup::HXSubviewGroup() : subviewNodes_(make<OrderedSet>()) {}

HXSubviewGroup::HXSubviewGroup(Decoding decoding) noexcept
    : HXGroup(decoding), subviewNodes_(make<OrderedSet>()) {}

Ref<Object> HXSubviewGroup::makeForDecoding(const Class&) {
  return make<HXSubviewGroup>(Decoding{});
}

Ref<HXSubviewGroup> HXSubviewGroup::initWithGroup(HXGroup* group) {
  auto copy = make<HXSubviewGroup>();
  copy->takeOver(group);
  if (const auto* other = as<HXSubviewGroup>(group)) {
    copy->storeViews(*other->subviewNodes_);
  } else if (group) {
    for (const auto& entry : group->subnodesInForce()) {
      if (entry.value->shouldBeTreatedAsViewNode()) copy->insertView(*entry.value);
    }
  }
  return copy;
}

const Symbol& HXSubviewGroup::processClassName() const {
  static constinit const Symbol name{"PMSubviewGroup"};
  return name;
}

std::vector<Ref<HXNode>> HXSubviewGroup::subviewNodes() const {
  std::vector<Ref<HXNode>> nodes;
  nodes.reserve(subviewNodes_->count());
  for (auto& node : membersOf<HXNode>(*subviewNodes_)) nodes.emplace_back(&node);
  return nodes;
}

std::int64_t HXSubviewGroup::indexOfSubviewNode(const HXNode* node) const {
  return subviewNodes_->indexOf(node);
}

void HXSubviewGroup::moveSubviewNode(HXNode& node, std::uint64_t toIndex) {
  const auto index = subviewNodes_->indexOf(&node);
  if (index == kNotFoundIndex) return;
  const auto last = std::uint64_t{subviewNodes_->count()} - 1;
  const detail::RecordedOperation operation(*this);
  moveView(node, static_cast<std::uint32_t>(index),
           static_cast<std::uint32_t>(std::min(toIndex, last)));
  announceOrder();
}

void HXSubviewGroup::setSubviewNodes(const std::vector<Ref<HXNode>>& views) {
  const detail::RecordedOperation operation(*this);
  auto wanted = make<OrderedSet>();
  for (const auto& view : views) {
    if (view && subnodeForKey(view->uniqueKey()) == view.get()) wanted->add(view);
  }
  if (wanted->isEqual(*subviewNodes_)) return;
  detail::willSet<HXSubviewGroupFields::AllViews>(*this);
  HXSubviewGroupFields::AllViews::set(*this, {wanted->begin(), wanted->end()});
  announceOrder();
}

void HXSubviewGroup::announceOrder() {
  detail::announce(HXSubviewGroupSubviewOrderDidChangeNotification, *this, *this,
                   {{HXNodeInfo, this}, {HXSubviewNodesInfo, subviewNodes_.get()}});
}

bool HXSubviewGroup::insertView(HXNode& node) {
  assert(subnodeForKey(node.uniqueKey()) == &node);
  if (subviewNodes_->contains(&node)) return false;
  detail::willChangeEntry<HXSubviewGroupFields::View>(*this, &node);
  return subviewNodes_->add(Ref<Object>(&node));
}

bool HXSubviewGroup::removeView(const HXNode& node) {
  if (!subviewNodes_->contains(&node)) return false;
  detail::willChangeEntry<HXSubviewGroupFields::View>(*this, const_cast<HXNode*>(&node));
  return subviewNodes_->remove(&node);
}

void HXSubviewGroup::moveView(HXNode& node, std::uint32_t from, std::uint32_t to) {
  if (auto* const recorder = detail::recorderOf(*this)) {
    recorder->record(std::make_unique<detail::PlaceChange<HXSubviewGroupFields::View>>(
        *this, Ref<Object>(&node)));
  }
  subviewNodes_->move(from, to);
}

bool HXSubviewGroup::hasViewNode() const {
  for (const auto& node : membersOf<HXNode>(*subviewNodes_)) {
    if (subnodeForKey(node.uniqueKey()) == &node && node.shouldBeTreatedAsViewNode()) return true;
  }
  return HXGroup::hasViewNode();
}

void HXSubviewGroup::didAddNode(HXNode& node) {
  if (!node.shouldBeTreatedAsViewNode()) return;
  insertView(node);
  announceOrder();
}

void HXSubviewGroup::forgetNode(HXNode& node) {
  if (removeView(node)) announceOrder();
}

void HXSubviewGroup::viewTypeDidChange(HXNode& node) {
  if (node.shouldBeTreatedAsViewNode()) {
    insertView(node);
    announceOrder();
  } else if (removeView(node)) {
    announceOrder();
  }
}

void HXSubviewGroup::encodeWithCoder(Encoder& coder) const {
  HXGroup::encodeWithCoder(coder);
  if (isEditorCodingType(coder.codingType())) {
    coder.encodeMembers(*subviewNodes_, key::kSubviewNodes);
  } else if (coder.codingType() == HXCodingTypeDevice) {
    coder.encodeMembers(*subviewNodes_, kDeviceSubviewNodes, CodingKind::list);
  }
}

void HXSubviewGroup::initWithCoder(Decoder& coder) {
  HXGroup::initWithCoder(coder);
  coder.decodeEach<HXNode>(key::kSubviewNodes,
                           [&](const Ref<HXNode>& node) { subviewNodes_->add(node); });
}

void HXSubviewGroup::awakeAfterDecoding(Decoder& coder) {
  HXGroup::awakeAfterDecoding(coder);
  auto views = make<OrderedSet>();
  for (auto& node : membersOf<HXNode>(*subviewNodes_)) {
    // One that is none of the subnodes is no view here either.
    if (subnodeForKey(node.uniqueKey()) == &node) views->add(Ref<Object>(&node));
  }
  subviewNodes_ = views;
}

void HXSubviewGroup::abandonDecoding() {
  HXGroup::abandonDecoding();
  subviewNodes_->clear();
}

}  // namespace tarnkit
