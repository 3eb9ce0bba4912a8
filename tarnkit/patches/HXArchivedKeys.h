#pragma once

#include "tarnkit/patches/BySide.h"
#include "tarnkit/platform/text/Symbol.h"

/// The keys of the editor's archives, class by class. The classes write and read themselves under
/// them, and the text form stands in for the classes. Documents carry these names: none changes.
namespace tarnkit::archived {

struct ColorKeys {
  Symbol red, green, blue, alpha;
};

namespace node {
inline constinit const Symbol kUniqueKey{"HXNode.uniqueKey"};
inline constinit const Symbol kParentGroup{"HXNode.parentGroup"};
inline constinit const Symbol kSubnodeGroup{"HXNode.subnodeGroup"};
inline constinit const Symbol kForceAllowsSubnodes{"HXNode.forceAllowsSubnodes"};
inline constinit const Symbol kPatchClass{"HXNode.patchClass"};
inline constinit const Symbol kName{"HXNode.name"};
inline constinit const Symbol kPositionX{"HXNode.position.x"};
inline constinit const Symbol kPositionY{"HXNode.position.y"};
inline constinit const Symbol kInspectorPanel{"HXNode.inspectorPanel"};
inline constinit const Symbol kSelected{"HXNode.selected"};
inline constinit const Symbol kComment{"HXNode.comment"};
inline constinit const BySide<Symbol> kPortGroupCollection{
    {Symbol{"HXNode.inputPortGroupCollection"}, Symbol{"HXNode.outputPortGroupCollection"}}};
inline constinit const BySide<Symbol> kPortGroupsByKey{
    {Symbol{"HXNode.inputPortGroupsByKey"}, Symbol{"HXNode.outputPortGroupsByKey"}}};
inline constinit const Symbol kPortsByUniqueKey{"HXNode.portsByUniqueKey"};
inline constinit const Symbol kParameters{"HXNode.parameters"};
inline constinit const Symbol kParametersByUniqueKey{"HXNode.parametersByUniqueKey"};
}  // namespace node

namespace group {
inline constinit const Symbol kNode{"HXGroup.node"};
inline constinit const Symbol kSubnodes{"HXGroup.subnodes"};
inline constinit const Symbol kSubnodesByUniqueKey{"HXGroup.subnodesByUniqueKey"};
inline constinit const Symbol kCanvasCenterX{"HXGroup.canvasCenter.x"};
inline constinit const Symbol kCanvasCenterY{"HXGroup.canvasCenter.y"};
inline constinit const Symbol kOpaque{"HXGroup.opaque"};
inline constinit const BySide<Symbol> kSymbolicPorts{
    {Symbol{"HXGroup.symbolicInputPorts"}, Symbol{"HXGroup.symbolicOutputPorts"}}};
}  // namespace group

namespace connection {
inline constinit const Symbol kOutputPort{"HXConnection.outputPort"};
inline constinit const Symbol kInputPort{"HXConnection.inputPort"};
inline constinit const Symbol kDisplayOutputPort{"HXConnection.displayOutputPort"};
inline constinit const Symbol kDisplayInputPort{"HXConnection.displayInputPort"};
}  // namespace connection

namespace portGroup {
inline constinit const Symbol kGroupKey{"HXPortGroup.groupKey"};
inline constinit const Symbol kNode{"HXPortGroup.node"};
inline constinit const Symbol kOrientation{"HXPortGroup.orientation"};
inline constinit const Symbol kCollapsedCanvasGroup{"HXPortGroup.collapsedCanvasGroup"};
inline constinit const Symbol kCollapsedSidebarGroup{"HXPortGroup.collapsedSidebarGroup"};
inline constinit const Symbol kHidden{"HXPortGroup.hidden"};
}  // namespace portGroup

namespace subviewGroup {
inline constinit const Symbol kSubviewNodes{"HXSubviewGroup.subviewNodes"};
}  // namespace subviewGroup

namespace portGroupCollection {
inline constinit const Symbol kNode{"HXPortGroupCollection.node"};
inline constinit const Symbol kPortGroupKeys{"HXPortGroupCollection.portGroupKeys"};
inline constinit const Symbol kOrientation{"HXPortGroupCollection.orientation"};
}  // namespace portGroupCollection

namespace imageStoreEntry {
inline constinit const Symbol kImage{"HXImageStoreEntry.image"};
inline constinit const Symbol kKey{"HXImageStoreEntry.key"};
}  // namespace imageStoreEntry

namespace parameter {
inline constinit const Symbol kNode{"HXParameter.node"};
inline constinit const Symbol kIndexValue{"HXIndexParameter.value"};
inline constinit const Symbol kNumberValue{"HXNumberParameter.value"};
inline constinit const Symbol kBooleanValue{"HXBooleanParameter.value"};
inline constinit const Symbol kStringValue{"HXStringParameter.value"};
inline constinit const Symbol kImageEntry{"HXImageParameter.imageEntry"};
inline constinit const ColorKeys kColorValue{
    Symbol{"HXColorParameter.redValue"}, Symbol{"HXColorParameter.greenValue"},
    Symbol{"HXColorParameter.blueValue"}, Symbol{"HXColorParameter.alphaValue"}};
}  // namespace parameter

namespace patchPort {
inline constinit const Symbol kConnections{"HXPatchPort.connections"};
inline constinit const Symbol kStaticValue{"HXPatchPort.staticValue"};
}  // namespace patchPort

namespace port {
inline constinit const Symbol kOrientation{"HXPort.orientation"};
inline constinit const Symbol kConnectionRelationship{"HXPort.connectionRelationship"};
inline constinit const Symbol kSymbolicPort{"HXPort.symbolicPort"};
}  // namespace port

namespace symbolicPort {
inline constinit const Symbol kPort{"HXSymbolicPort.port"};
inline constinit const Symbol kName{"HXSymbolicPort.name"};
}  // namespace symbolicPort

namespace replicatorNode {
inline constinit const Symbol kArrayOutputs{"HXReplicatorNode.resolvedPortToArrayOutputPortKey"};
}  // namespace replicatorNode

namespace imageStore {
inline constinit const Symbol kImageEntries{"HXImageStore.imageEntries"};
}  // namespace imageStore

namespace document {
inline constinit const Symbol kImageStore{"HXDocument.imageStore"};
}  // namespace document

namespace primitive {
inline constinit const Symbol kStorageType{"PMRPrimitive.storageType"};
inline constinit const Symbol kBooleanValue{"PMRPrimitive.booleanValue"};
inline constinit const Symbol kIndexValue{"PMRPrimitive.indexValue"};
inline constinit const Symbol kNumberValue{"PMRPrimitive.numberValue"};
inline constinit const ColorKeys kColorValue{
    Symbol{"PMRPrimitive.colorValue.red"}, Symbol{"PMRPrimitive.colorValue.green"},
    Symbol{"PMRPrimitive.colorValue.blue"}, Symbol{"PMRPrimitive.colorValue.alpha"}};
inline constinit const Symbol kStringValue{"PMRPrimitive.stringValue"};
}  // namespace primitive

}  // namespace tarnkit::archived
