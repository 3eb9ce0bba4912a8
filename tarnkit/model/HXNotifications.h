#pragma once

#include "tarnkit/platform/system/NotificationCenter.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

/// The user-info keys of the model's notifications. Every notification carries the document's key
/// under "DocumentKey"; the class that posts one says what else it carries.
inline constinit const Symbol HXDocumentKeyInfo{"DocumentKey"};
inline constinit const Symbol HXNodeInfo{"Node"};
inline constinit const Symbol HXPortInfo{"Port"};
inline constinit const Symbol HXPortGroupInfo{"PortGroup"};
inline constinit const Symbol HXParameterInfo{"Parameter"};
inline constinit const Symbol HXConnectionInfo{"Connection"};
inline constinit const Symbol HXGroupInfo{"Group"};
inline constinit const Symbol HXGraphInfo{"Graph"};
inline constinit const Symbol HXNameInfo{"Name"};
inline constinit const Symbol HXStaticValueInfo{"StaticValue"};
inline constinit const Symbol HXEffectiveValueInfo{"EffectiveValue"};
inline constinit const Symbol HXCollapsedInfo{"Collapsed"};
inline constinit const Symbol HXHiddenInfo{"Hidden"};
inline constinit const Symbol HXOldGroupInfo{"OldGroup"};
inline constinit const Symbol HXNewGroupInfo{"NewGroup"};
inline constinit const Symbol HXImageEntryInfo{"ImageEntry"};
inline constinit const Symbol HXImageEntryKeyInfo{"ImageEntryKey"};
inline constinit const Symbol HXSubviewNodesInfo{"SubviewNodes"};

namespace detail {

/// The one place through which the model announces: posts with `object` when somebody observes the
/// name and `source` (a node, port, group, …) is in a document. Nothing is built, and the document
/// is not even looked for, when nobody observes. `makeInfo` receives the document key.
template <class Source, class MakeInfo>
void announce(const Symbol& name, Object& object, const Source& source, MakeInfo makeInfo) {
  auto& center = NotificationCenter::defaultCenter();
  if (!center.observes(name)) return;
  const String documentKey = source.documentKey();
  if (documentKey.isNil()) return;
  const UserInfo info = makeInfo(Ref<Object>(documentKey.object()));
  center.post(name, object, info);
}

}  // namespace detail

}  // namespace tarnkit
