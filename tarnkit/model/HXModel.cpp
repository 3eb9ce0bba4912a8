#include "tarnkit/model/HXModel.h"

#include "tarnkit/model/HXDecodedLosses.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXLoopNode.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/model/HXRemoteGroupNode.h"
#include "tarnkit/model/HXRemoteGroupProcessorNode.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"

namespace tarnkit {

namespace {

Ref<Object> makeDocumentGraph(const HXRNodeClass& patchClass) {
  const auto node = HXNode::makeForPatch(patchClass);
  if (!node) return nullptr;
  auto document = make<HXDocument>();
  document->subnodeGroup()->addNode(*node);
  return document;
}

/// By what names the device knows the classes of this room.
constexpr std::string_view kDeviceNames[] = {
    "PMNode",
    "PMLoopNode",
    "PMRemoteGroupNode",
    "PMRemoteGroupProcessorNode",
    "PMReplicatorNode",
    "PMGraph",
    "PMGroup",
    "PMSubviewGroup",
    "PMPort",
    "PMConnection",
    "PMParameter",
    "PMIndexParameter",
    "PMNumberParameter",
    "PMBooleanParameter",
    "PMStringParameter",
    "PMColorParameter",
    "PMImageParameter",
    "PMImageStoreEntry",
};

bool registerOnce() {
  registerPatchClasses();
  for (const Class* record : {&HXNode::kClass,
                              &HXLoopNode::kClass,
                              &HXRemoteGroupNode::kClass,
                              &HXRemoteGroupProcessorNode::kClass,
                              &HXReplicatorNode::kClass,
                              &HXDocument::kClass,
                              &HXGroup::kClass,
                              &HXSubviewGroup::kClass,
                              &HXPort::kClass,
                              &HXPatchPort::kClass,
                              &HXSymbolicPort::kClass,
                              &HXPortGroup::kClass,
                              &HXPatchPortGroup::kClass,
                              &HXSymbolicPortGroup::kClass,
                              &HXPortGroupCollection::kClass,
                              &HXConnection::kClass,
                              &HXParameter::kClass,
                              &HXIndexParameter::kClass,
                              &HXNumberParameter::kClass,
                              &HXBooleanParameter::kClass,
                              &HXStringParameter::kClass,
                              &HXColorParameter::kClass,
                              &HXImageParameter::kClass,
                              &HXImageStore::kClass,
                              &HXImageStoreEntry::kClass,
                              &Image::kClass}) {
    ClassRegistry::add(*record);
  }
  for (const auto name : kDeviceNames) ClassRegistry::reserve(name);
  HXRNodeClass::setDocumentGraphBuilder(&makeDocumentGraph);
  return true;
}

}  // namespace

void registerModelClasses() { [[maybe_unused]] static const bool done = registerOnce(); }

Result<Ref<Object>> unarchivedModelObject(ByteSpan bytes, std::int32_t codingType) {
  registerModelClasses();
  detail::DecodedLosses losses;
  auto root = StandardKeyedUnarchiver::unarchive(bytes, codingType);
  if (root) losses.tell();
  return root;
}

}  // namespace tarnkit
