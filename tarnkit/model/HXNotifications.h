#pragma once

#include <initializer_list>
#include <vector>

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

/// One value that goes with a notification; null is the null object.
struct InfoItem {
  const Symbol& key;
  Object* value;
};

/// The one place through which the model announces: posts with `object`, the document's key and the
/// items when somebody observes the name and `source` (a node, port, group, …) is in a document.
/// Nothing is built, and the document is not even looked for, when nobody observes.
template <class Source>
void announce(const Symbol& name, Object& object, const Source& source,
              std::initializer_list<InfoItem> items) {
  auto& center = NotificationCenter::defaultCenter();
  if (!center.observes(name)) return;
  const String documentKey = source.documentKey();
  if (documentKey.isNil()) return;
  UserInfo info{{HXDocumentKeyInfo, Ref<Object>(documentKey.object())}};
  for (const InfoItem& item : items) info.add(item.key, Ref<Object>(item.value));
  center.post(name, object, info);
}

/// Announces, on behalf of a node, what came to it or went from it.
template <class Node>
void announceOfNode(const Symbol& name, Node& node, const Symbol& infoKey, Object& object) {
  announce(name, node, node, {{HXNodeInfo, &node}, {infoKey, &object}});
}

/// Announces what went, then what came: of the latter only what an observer has not let go again
/// meanwhile.
template <class Node, class T, class IsHeld>
void announceChanges(Node& node, const Symbol& removal, const std::vector<Ref<T>>& gone,
                     const Symbol& addition, const std::vector<Ref<T>>& added,
                     const Symbol& infoKey, IsHeld isHeld) {
  const auto& center = NotificationCenter::defaultCenter();
  if (center.observes(removal)) {
    for (const auto& object : gone) announceOfNode(removal, node, infoKey, *object);
  }
  if (!center.observes(addition)) return;
  for (const auto& object : added) {
    if (isHeld(*object)) announceOfNode(addition, node, infoKey, *object);
  }
}

}  // namespace detail

}  // namespace tarnkit
