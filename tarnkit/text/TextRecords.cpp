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
#include "tarnkit/patches/PMRPrimitive.h"
#include "tarnkit/platform/images/Image.h"

namespace tarnkit::detail {

namespace {

namespace key {
// The keys of the editor's archives, class by class.
constinit const Symbol kStorageType{"PMRPrimitive.storageType"};
constinit const Symbol kBooleanValue{"PMRPrimitive.booleanValue"};
constinit const Symbol kIndexValue{"PMRPrimitive.indexValue"};
constinit const Symbol kNumberValue{"PMRPrimitive.numberValue"};
constinit const Symbol kColorValue[] = {
    Symbol{"PMRPrimitive.colorValue.red"}, Symbol{"PMRPrimitive.colorValue.green"},
    Symbol{"PMRPrimitive.colorValue.blue"}, Symbol{"PMRPrimitive.colorValue.alpha"}};
constinit const Symbol kStringValue{"PMRPrimitive.stringValue"};

constinit const Symbol kPortOrientation{"HXPort.orientation"};
constinit const Symbol kPortRelationship{"HXPort.connectionRelationship"};
constinit const Symbol kPortSymbolicPort{"HXPort.symbolicPort"};
constinit const Symbol kPortConnections{"HXPatchPort.connections"};
constinit const Symbol kPortStaticValue{"HXPatchPort.staticValue"};
constinit const Symbol kPublishedPort{"HXSymbolicPort.port"};
constinit const Symbol kPublishedName{"HXSymbolicPort.name"};

constinit const Symbol kOutputPort{"HXConnection.outputPort"};
constinit const Symbol kInputPort{"HXConnection.inputPort"};
constinit const Symbol kDisplayOutputPort{"HXConnection.displayOutputPort"};
constinit const Symbol kDisplayInputPort{"HXConnection.displayInputPort"};

constinit const Symbol kGroupKey{"HXPortGroup.groupKey"};
constinit const Symbol kGroupNode{"HXPortGroup.node"};
constinit const Symbol kGroupOrientation{"HXPortGroup.orientation"};
constinit const Symbol kCollapsedCanvasGroup{"HXPortGroup.collapsedCanvasGroup"};
constinit const Symbol kCollapsedSidebarGroup{"HXPortGroup.collapsedSidebarGroup"};
constinit const Symbol kHidden{"HXPortGroup.hidden"};

constinit const Symbol kCollectionNode{"HXPortGroupCollection.node"};
constinit const Symbol kCollectionKeys{"HXPortGroupCollection.portGroupKeys"};
constinit const Symbol kCollectionOrientation{"HXPortGroupCollection.orientation"};

constinit const Symbol kParameterNode{"HXParameter.node"};
constinit const Symbol kIndexParameter{"HXIndexParameter.value"};
constinit const Symbol kNumberParameter{"HXNumberParameter.value"};
constinit const Symbol kBooleanParameter{"HXBooleanParameter.value"};
constinit const Symbol kStringParameter{"HXStringParameter.value"};
constinit const Symbol kImageParameter{"HXImageParameter.imageEntry"};
constinit const Symbol kColorParameter[] = {
    Symbol{"HXColorParameter.redValue"}, Symbol{"HXColorParameter.greenValue"},
    Symbol{"HXColorParameter.blueValue"}, Symbol{"HXColorParameter.alphaValue"}};

constinit const Symbol kSubnodeGroupNode{"HXGroup.node"};
constinit const Symbol kSubnodes{"HXGroup.subnodes"};
constinit const Symbol kSubnodesByUniqueKey{"HXGroup.subnodesByUniqueKey"};
constinit const Symbol kCanvasCenterX{"HXGroup.canvasCenter.x"};
constinit const Symbol kCanvasCenterY{"HXGroup.canvasCenter.y"};
constinit const Symbol kOpaque{"HXGroup.opaque"};
constinit const BySide<Symbol> kSymbolicPorts{
    {Symbol{"HXGroup.symbolicInputPorts"}, Symbol{"HXGroup.symbolicOutputPorts"}}};
constinit const Symbol kSubviewNodes{"HXSubviewGroup.subviewNodes"};

constinit const Symbol kImagePNG{"NSImage.png"};
constinit const Symbol kEntryImage{"HXImageStoreEntry.image"};
constinit const Symbol kEntryKey{"HXImageStoreEntry.key"};
constinit const Symbol kImageEntries{"HXImageStore.imageEntries"};

constinit const Symbol kUniqueKey{"HXNode.uniqueKey"};
constinit const Symbol kParentGroup{"HXNode.parentGroup"};
constinit const Symbol kSubnodeGroup{"HXNode.subnodeGroup"};
constinit const Symbol kForceAllowsSubnodes{"HXNode.forceAllowsSubnodes"};
constinit const Symbol kPatchClass{"HXNode.patchClass"};
constinit const Symbol kName{"HXNode.name"};
constinit const Symbol kComment{"HXNode.comment"};
constinit const Symbol kPositionX{"HXNode.position.x"};
constinit const Symbol kPositionY{"HXNode.position.y"};
constinit const Symbol kInspectorPanel{"HXNode.inspectorPanel"};
constinit const Symbol kSelected{"HXNode.selected"};
constinit const BySide<Symbol> kPortGroupCollection{
    {Symbol{"HXNode.inputPortGroupCollection"}, Symbol{"HXNode.outputPortGroupCollection"}}};
constinit const BySide<Symbol> kPortGroupsByKey{
    {Symbol{"HXNode.inputPortGroupsByKey"}, Symbol{"HXNode.outputPortGroupsByKey"}}};
constinit const Symbol kPortsByUniqueKey{"HXNode.portsByUniqueKey"};
constinit const Symbol kParameters{"HXNode.parameters"};
constinit const Symbol kParametersByUniqueKey{"HXNode.parametersByUniqueKey"};
constinit const Symbol kArrayOutputs{"HXReplicatorNode.resolvedPortToArrayOutputPortKey"};
constinit const Symbol kImageStore{"HXDocument.imageStore"};
}  // namespace key

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

void encodeColor(Encoder& coder, const RGBA& color, const Symbol (&keys)[4]) {
  coder.encodeFloat(color.red, keys[0]);
  coder.encodeFloat(color.green, keys[1]);
  coder.encodeFloat(color.blue, keys[2]);
  coder.encodeFloat(color.alpha, keys[3]);
}

}  // namespace

ValueRecord::ValueRecord() : TextRecord(PMRPrimitive::kClass) {}

void ValueRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeInt64(kind, key::kStorageType);
  switch (kind) {
    case PMRPrimitive::boolean:
      return coder.encodeBool(boolean, key::kBooleanValue);
    case PMRPrimitive::index:
      return coder.encodeInt(index, key::kIndexValue);
    case PMRPrimitive::number:
    case PMRPrimitive::radians:
    case PMRPrimitive::degrees:
      return coder.encodeFloat(number, key::kNumberValue);
    case PMRPrimitive::color:
      return encodeColor(coder, color, key::kColorValue);
    case PMRPrimitive::string:
      return coder.encodeString(string, key::kStringValue);
    default:
      return;
  }
}

PortRecord::PortRecord(bool published)
    : TextRecord(published ? HXSymbolicPort::kClass : HXPatchPort::kClass),
      isPublished(published) {}

void PortRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeInt(orientation, key::kPortOrientation);
  coder.encodeInt(relationship, key::kPortRelationship);
  coder.encodeConditionalObject(object(symbolicPort), key::kPortSymbolicPort);
  if (isPublished) {
    coder.encodeConditionalObject(object(inner), key::kPublishedPort);
    coder.encodeString(name, key::kPublishedName);
  } else {
    encodeRecords(coder, CodingKind::orderedSet, connections, key::kPortConnections);
    coder.encodeObject(object(value.get()), key::kPortStaticValue);
  }
}

ConnectionRecord::ConnectionRecord() : TextRecord(HXConnection::kClass) {}

void ConnectionRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeConditionalObject(object(output), key::kOutputPort);
  coder.encodeConditionalObject(object(input), key::kInputPort);
  coder.encodeConditionalObject(object(shownOutput), key::kDisplayOutputPort);
  coder.encodeConditionalObject(object(shownInput), key::kDisplayInputPort);
}

PortGroupRecord::PortGroupRecord(bool published)
    : TextRecord(published ? HXSymbolicPortGroup::kClass : HXPatchPortGroup::kClass) {}

void PortGroupRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeString(groupKey, key::kGroupKey);
  coder.encodeConditionalObject(object(node), key::kGroupNode);
  coder.encodeInt(orientation, key::kGroupOrientation);
  coder.encodeBool(collapsedCanvas, key::kCollapsedCanvasGroup);
  coder.encodeBool(collapsedSidebar, key::kCollapsedSidebarGroup);
  coder.encodeBool(hidden, key::kHidden);
}

PortGroupOrderRecord::PortGroupOrderRecord() : TextRecord(HXPortGroupCollection::kClass) {}

void PortGroupOrderRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeConditionalObject(object(node), key::kCollectionNode);
  coder.encodeCollection(
      CodingKind::orderedSet, keys.size(),
      [&](std::size_t i) -> const Object* { return keys[i].object().get(); }, key::kCollectionKeys);
  coder.encodeInt(orientation, key::kCollectionOrientation);
}

ParameterRecord::ParameterRecord(const NodeRecord& ofNode, String ofKey, ParameterValue ofValue)
    : TextRecord(ParameterValue::classOf(ofValue.kind)),
      node(&ofNode),
      key(std::move(ofKey)),
      value(std::move(ofValue)) {}

void ParameterRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeConditionalObject(object(node), key::kParameterNode);
  switch (value.kind) {
    case ParameterValue::Kind::boolean:
      return coder.encodeBool(value.boolean, key::kBooleanParameter);
    case ParameterValue::Kind::number:
      return coder.encodeFloat(value.number, key::kNumberParameter);
    case ParameterValue::Kind::index:
      return coder.encodeInt(value.index, key::kIndexParameter);
    case ParameterValue::Kind::string:
      return coder.encodeString(value.string, key::kStringParameter);
    case ParameterValue::Kind::color:
      return encodeColor(coder, value.color, key::kColorParameter);
    default:
      return coder.encodeObject(object(image), key::kImageParameter);
  }
}

GroupRecord::GroupRecord(bool isOfViews)
    : TextRecord(isOfViews ? HXSubviewGroup::kClass : HXGroup::kClass), ofViews(isOfViews) {}

void GroupRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeConditionalObject(object(node), key::kSubnodeGroupNode);
  if (coder.codingType() == HXCodingTypeEditorWithKeys) {
    encodeKeyed(
        coder, subnodes, [](const NodeRecord* subnode) -> const String& { return subnode->key; },
        [](const NodeRecord* subnode) -> const Object* { return subnode; },
        key::kSubnodesByUniqueKey);
  } else {
    encodeRecords(coder, CodingKind::list, subnodes, key::kSubnodes);
  }
  coder.encodeFloat(centerX, key::kCanvasCenterX);
  coder.encodeFloat(centerY, key::kCanvasCenterY);
  coder.encodeBool(opaque, key::kOpaque);
  for (const auto side : kBothSides) {
    encodeRecords(coder, CodingKind::orderedSet, published[side], key::kSymbolicPorts[side]);
  }
  if (ofViews) encodeRecords(coder, CodingKind::orderedSet, views, key::kSubviewNodes);
}

ImageRecord::ImageRecord() : TextRecord(Image::kClass) {}

void ImageRecord::encodeWithCoder(Encoder& coder) const { coder.encodeBytes(png, key::kImagePNG); }

ImageEntryRecord::ImageEntryRecord() : TextRecord(HXImageStoreEntry::kClass) {}

void ImageEntryRecord::encodeWithCoder(Encoder& coder) const {
  coder.encodeObject(object(image), key::kEntryImage);
  coder.encodeString(key, key::kEntryKey);
}

ImageStoreRecord::ImageStoreRecord() : TextRecord(HXImageStore::kClass) {}

void ImageStoreRecord::encodeWithCoder(Encoder& coder) const {
  encodeKeyed(
      coder, entries, [](const ImageEntryRecord* entry) -> const String& { return entry->key; },
      [](const ImageEntryRecord* entry) -> const Object* { return entry; }, key::kImageEntries);
}

void NodeRecord::encodeWithCoder(Encoder& coder) const {
  if (coder.codingType() == HXCodingTypeEditorWithKeys) coder.encodeString(key, key::kUniqueKey);
  coder.encodeConditionalObject(object(parentGroup), key::kParentGroup);
  coder.encodeObject(object(group), key::kSubnodeGroup);
  coder.encodeBool(forceAllowsSubnodes, key::kForceAllowsSubnodes);
  coder.encodeString(patchClass, key::kPatchClass);
  coder.encodeString(name, key::kName);
  coder.encodeFloat(x, key::kPositionX);
  coder.encodeFloat(y, key::kPositionY);
  coder.encodeInt(inspectorPanel, key::kInspectorPanel);
  coder.encodeBool(selected, key::kSelected);
  for (const auto side : kBothSides) {
    coder.encodeObject(object(groupOrder[side]), key::kPortGroupCollection[side]);
  }
  for (const auto side : kBothSides) {
    encodeKeyed(
        coder, portGroups[side],
        [](const PortGroupRecord* record) -> const String& { return record->key; },
        [](const PortGroupRecord* record) -> const Object* { return record; },
        key::kPortGroupsByKey[side]);
  }
  const auto keyOfPort = [](const KeyedPort& port) -> const String& { return port.key; };
  const auto recordOfPort = [](const KeyedPort& port) -> const Object* { return port.port; };
  encodeKeyed(coder, ports, keyOfPort, recordOfPort, key::kPortsByUniqueKey);
  encodeRecords(coder, CodingKind::orderedSet, parameters, key::kParameters);
  encodeKeyed(
      coder, parameters,
      [](const ParameterRecord* parameter) -> const String& { return parameter->key; },
      [](const ParameterRecord* parameter) -> const Object* { return parameter; },
      key::kParametersByUniqueKey);
  coder.encodeString(comment, key::kComment);
  if (isReplicator) encodeKeyed(coder, arrayOutputs, keyOfPort, recordOfPort, key::kArrayOutputs);
  if (images) coder.encodeObject(object(images), key::kImageStore);
}

}  // namespace tarnkit::detail
