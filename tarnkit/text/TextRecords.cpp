#include "tarnkit/text/TextRecords.h"

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXImageStore.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/HXArchivedKeys.h"
#include "tarnkit/patches/PMRPrimitive.h"
#include "tarnkit/platform/images/Image.h"

namespace tarnkit::detail {

namespace {

const Object* object(const TextRecord* record) noexcept { return record; }

template <class Records>
void encodeRecords(Encoder& coder, CodingKind kind, const Records& records, const Symbol& key) {
  coder.encodeCollection(
      kind, records.size(), [&](std::size_t i) -> const Object* { return records[i]; }, key);
}

template <class Records, class Key, class Value>
void encodeKeyed(Encoder& coder, const Records& records, Key keyOf, Value valueOf,
                 const Symbol& key) {
  coder.encodeMap(
      records.size(),
      [&](std::size_t i) {
        return Encoder::MapEntry{keyOf(records[i]), valueOf(records[i])};
      },
      key);
}

void encodeColor(Encoder& coder, const RGBA& color, const archived::ColorKeys& keys) {
  coder.encodeFloat(color.red, keys.red);
  coder.encodeFloat(color.green, keys.green);
  coder.encodeFloat(color.blue, keys.blue);
  coder.encodeFloat(color.alpha, keys.alpha);
}

}  // namespace

ValueRecord::ValueRecord() : TextRecord(PMRPrimitive::kClass) {}

void ValueRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeInt64(kind, archived::primitive::kStorageType);
  switch (kind) {
    case PMRPrimitive::boolean:
      return coder.encodeBool(boolean, archived::primitive::kBooleanValue);
    case PMRPrimitive::index:
      return coder.encodeInt(index, archived::primitive::kIndexValue);
    case PMRPrimitive::number:
    case PMRPrimitive::radians:
    case PMRPrimitive::degrees:
      return coder.encodeFloat(number, archived::primitive::kNumberValue);
    case PMRPrimitive::color:
      return encodeColor(coder, color, archived::primitive::kColorValue);
    case PMRPrimitive::string:
      return coder.encodeString(string, archived::primitive::kStringValue);
    default:
      return;
  }
}

PortRecord::PortRecord(bool published)
    : TextRecord(published ? HXSymbolicPort::kClass : HXPatchPort::kClass),
      isPublished(published) {}

void PortRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeInt(orientation, archived::port::kOrientation);
  coder.encodeInt(relationship, archived::port::kConnectionRelationship);
  coder.encodeConditionalObject(object(symbolicPort), archived::port::kSymbolicPort);
  if (isPublished) {
    coder.encodeConditionalObject(object(inner), archived::symbolicPort::kPort);
    coder.encodeString(name, archived::symbolicPort::kName);
  } else {
    encodeRecords(coder, CodingKind::orderedSet, connections, archived::patchPort::kConnections);
    coder.encodeObject(object(value.get()), archived::patchPort::kStaticValue);
  }
}

ConnectionRecord::ConnectionRecord() : TextRecord(HXConnection::kClass) {}

void ConnectionRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeConditionalObject(object(output), archived::connection::kOutputPort);
  coder.encodeConditionalObject(object(input), archived::connection::kInputPort);
  coder.encodeConditionalObject(object(shownOutput), archived::connection::kDisplayOutputPort);
  coder.encodeConditionalObject(object(shownInput), archived::connection::kDisplayInputPort);
}

PortGroupRecord::PortGroupRecord(bool published)
    : TextRecord(published ? HXSymbolicPortGroup::kClass : HXPatchPortGroup::kClass) {}

void PortGroupRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeString(groupKey, archived::portGroup::kGroupKey);
  coder.encodeConditionalObject(object(node), archived::portGroup::kNode);
  coder.encodeInt(orientation, archived::portGroup::kOrientation);
  coder.encodeBool(collapsedCanvas, archived::portGroup::kCollapsedCanvasGroup);
  coder.encodeBool(collapsedSidebar, archived::portGroup::kCollapsedSidebarGroup);
  coder.encodeBool(hidden, archived::portGroup::kHidden);
}

PortGroupOrderRecord::PortGroupOrderRecord() : TextRecord(HXPortGroupCollection::kClass) {}

void PortGroupOrderRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeConditionalObject(object(node), archived::portGroupCollection::kNode);
  coder.encodeCollection(
      CodingKind::orderedSet, keys.size(),
      [&](std::size_t i) -> const Object* { return keys[i].object().get(); },
      archived::portGroupCollection::kPortGroupKeys);
  coder.encodeInt(orientation, archived::portGroupCollection::kOrientation);
}

ParameterRecord::ParameterRecord(const NodeRecord& ofNode, String ofKey, ParameterValue ofValue)
    : TextRecord(ParameterValue::classOf(ofValue.kind)),
      node(&ofNode),
      key(std::move(ofKey)),
      value(std::move(ofValue)) {}

void ParameterRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeConditionalObject(object(node), archived::parameter::kNode);
  switch (value.kind) {
    case ParameterValue::Kind::boolean:
      return coder.encodeBool(value.boolean, archived::parameter::kBooleanValue);
    case ParameterValue::Kind::number:
      return coder.encodeFloat(value.number, archived::parameter::kNumberValue);
    case ParameterValue::Kind::index:
      return coder.encodeInt(value.index, archived::parameter::kIndexValue);
    case ParameterValue::Kind::string:
      return coder.encodeString(value.string, archived::parameter::kStringValue);
    case ParameterValue::Kind::color:
      return encodeColor(coder, value.color, archived::parameter::kColorValue);
    default:
      return coder.encodeObject(object(image), archived::parameter::kImageEntry);
  }
}

GroupRecord::GroupRecord(bool isOfViews)
    : TextRecord(isOfViews ? HXSubviewGroup::kClass : HXGroup::kClass), ofViews(isOfViews) {}

void GroupRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeConditionalObject(object(node), archived::group::kNode);
  if (coder.codingType() == HXCodingTypeEditorWithKeys) {
    encodeKeyed(
        coder, subnodes, [](const NodeRecord* subnode) -> const String& { return subnode->key; },
        [](const NodeRecord* subnode) -> const Object* { return subnode; },
        archived::group::kSubnodesByUniqueKey);
  } else {
    encodeRecords(coder, CodingKind::list, subnodes, archived::group::kSubnodes);
  }
  coder.encodeFloat(centerX, archived::group::kCanvasCenterX);
  coder.encodeFloat(centerY, archived::group::kCanvasCenterY);
  coder.encodeBool(opaque, archived::group::kOpaque);
  for (const auto side : kBothSides) {
    encodeRecords(coder, CodingKind::orderedSet, published[side],
                  archived::group::kSymbolicPorts[side]);
  }
  if (ofViews)
    encodeRecords(coder, CodingKind::orderedSet, views, archived::subviewGroup::kSubviewNodes);
}

ImageRecord::ImageRecord() : TextRecord(Image::kClass) {}

void ImageRecord::encodeWithCoder(Encoder& coder) const { coder.encodeBytes(png, Image::kPNGKey); }

ImageEntryRecord::ImageEntryRecord() : TextRecord(HXImageStoreEntry::kClass) {}

void ImageEntryRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeObject(object(image), archived::imageStoreEntry::kImage);
  coder.encodeString(key, archived::imageStoreEntry::kKey);
}

ImageStoreRecord::ImageStoreRecord() : TextRecord(HXImageStore::kClass) {}

void ImageStoreRecord::encodeWithCoder(Encoder& coder) const {
  encodeKeyed(
      coder, entries, [](const ImageEntryRecord* entry) -> const String& { return entry->key; },
      [](const ImageEntryRecord* entry) -> const Object* { return entry; },
      archived::imageStore::kImageEntries);
}

void NodeRecord::encodeWithCoder(Encoder& coder) const {
  if (coder.codingType() == HXCodingTypeEditorWithKeys)
    coder.encodeString(key, archived::node::kUniqueKey);
  coder.encodeConditionalObject(object(parentGroup), archived::node::kParentGroup);
  coder.encodeObject(object(group), archived::node::kSubnodeGroup);
  coder.encodeBool(forceAllowsSubnodes, archived::node::kForceAllowsSubnodes);
  coder.encodeString(patchClass, archived::node::kPatchClass);
  coder.encodeString(name, archived::node::kName);
  coder.encodeFloat(x, archived::node::kPositionX);
  coder.encodeFloat(y, archived::node::kPositionY);
  coder.encodeInt(inspectorPanel, archived::node::kInspectorPanel);
  coder.encodeBool(selected, archived::node::kSelected);
  for (const auto side : kBothSides) {
    coder.encodeObject(object(groupOrder[side]), archived::node::kPortGroupCollection[side]);
  }
  for (const auto side : kBothSides) {
    encodeKeyed(
        coder, portGroups[side],
        [](const PortGroupRecord* record) -> const String& { return record->key; },
        [](const PortGroupRecord* record) -> const Object* { return record; },
        archived::node::kPortGroupsByKey[side]);
  }
  const auto keyOfPort = [](const KeyedPort& port) -> const String& { return port.key; };
  const auto recordOfPort = [](const KeyedPort& port) -> const Object* { return port.port; };
  encodeKeyed(coder, ports, keyOfPort, recordOfPort, archived::node::kPortsByUniqueKey);
  encodeRecords(coder, CodingKind::orderedSet, parameters, archived::node::kParameters);
  encodeKeyed(
      coder, parameters,
      [](const ParameterRecord* parameter) -> const String& { return parameter->key; },
      [](const ParameterRecord* parameter) -> const Object* { return parameter; },
      archived::node::kParametersByUniqueKey);
  coder.encodeString(comment, archived::node::kComment);
  if (isReplicator)
    encodeKeyed(coder, arrayOutputs, keyOfPort, recordOfPort,
                archived::replicatorNode::kArrayOutputs);
  if (images) coder.encodeObject(object(images), archived::document::kImageStore);
}

}  // namespace tarnkit::detail
