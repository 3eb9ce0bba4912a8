#include "tarnkit/model/HXPortGroupCollection.h"

#include <cassert>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXFieldChange.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/patches/HXArchivedKeys.h"

namespace tarnkit {

const Class HXPortGroupCollection::kClass{"HXPortGroupCollection", &Object::kClass,
                                          &detail::makeByDefault<HXPortGroupCollection>};

namespace {

namespace key = archived::portGroupCollection;

const Ref<OrderedSet>& noKeys() {
  static const Ref<OrderedSet> none = make<OrderedSet>();
  return none;
}

}  // namespace

struct HXPortGroupCollectionFields {
  struct Keys : detail::FieldOf<HXPortGroupCollection> {
    static constexpr const char* kName = "portGroupKeys";
    static Ref<const OrderedSet> get(const HXPortGroupCollection& collection) {
      return collection.portGroupKeys_;
    }
    static void set(HXPortGroupCollection& collection, Ref<const OrderedSet> keys) {
      collection.portGroupKeys_ = std::move(keys);
    }
  };
  struct FollowsNode : detail::FieldOf<HXPortGroupCollection> {
    static constexpr const char* kName = "followsNode";
    static bool get(const HXPortGroupCollection& collection) { return collection.followsNode_; }
    static void set(HXPortGroupCollection& collection, bool follows) {
      collection.followsNode_ = follows;
    }
  };
};

HXPortGroupCollection::HXPortGroupCollection(HXNode* node, std::int32_t orientation)
    : node_(node), portGroupKeys_(noKeys()), orientation_(orientation) {}

void HXPortGroupCollection::followNode(const Ref<const OrderedSet>& keys) {
  update(keys);
  storeFollowsNode(true);
}

void HXPortGroupCollection::updateWithPortGroupKeys(const Ref<OrderedSet>& keys) {
  const detail::RecordedOperation operation(*this);
  storeFollowsNode(false);
  update(keys ? make<OrderedSet>(*keys) : make<OrderedSet>());
}

void HXPortGroupCollection::update(const Ref<const OrderedSet>& keys) {
  if (portGroupKeys_ == keys) return;
  if (portGroupKeys_->isEmpty()) return storeKeys(keys);
  auto updated = make<OrderedSet>();
  for (const auto& key : *portGroupKeys_) {
    if (keys->contains(key.get())) updated->add(key);
  }
  for (const auto& key : *keys) updated->add(key);
  storeKeys(updated->isEqual(*keys) ? keys : Ref<const OrderedSet>(updated));
  assert(portGroupKeys_->count() == keys->count());
}

void HXPortGroupCollection::storeKeys(Ref<const OrderedSet> keys) {
  detail::willSet<HXPortGroupCollectionFields::Keys>(*this);
  portGroupKeys_ = std::move(keys);
}

void HXPortGroupCollection::storeFollowsNode(bool follows) {
  if (follows == followsNode_) return;
  detail::willSet<HXPortGroupCollectionFields::FollowsNode>(*this);
  followsNode_ = follows;
}

void HXPortGroupCollection::encodeWithCoder(Encoder& coder) const {
  if (!isEditorCodingType(coder.codingType())) return;
  coder.encodeConditionalObject(node_, key::kNode);
  coder.encodeMembers(*portGroupKeys_, key::kPortGroupKeys);
  coder.encodeInt(orientation_, key::kOrientation);
}

void HXPortGroupCollection::initWithCoder(Decoder& coder) {
  node_ = coder.decode<HXNode>(key::kNode);
  orientation_ = coder.decodeInt(key::kOrientation);
  auto keys = make<OrderedSet>();
  coder.decodeEach<StringObject>(key::kPortGroupKeys,
                                 [&](const Ref<StringObject>& key) { keys->add(key); });
  portGroupKeys_ = keys;
}

}  // namespace tarnkit
