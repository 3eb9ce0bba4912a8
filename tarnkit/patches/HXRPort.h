#pragma once

#include <cstdint>

#include "tarnkit/patches/HXRPortClass.h"
#include "tarnkit/patches/Orientation.h"
#include "tarnkit/platform/objects/Object.h"
#include "tarnkit/platform/objects/PassKey.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

class HXRNode;
class HXRPortLayout;

/// The description of one port of a patch definition: its name, its key within the patch (under
/// which the device addresses it), its orientation and how many connections it takes.
///
/// Owned by its definition's port layout. A definition that differs in nothing from the others of
/// its class shares its descriptions with them (see `HXRPortLayout`); a shared description has no
/// node and cannot be changed. For one thread.
class HXRPort : public Object {
  TARNKIT_CLASS_OF(HXRPortClass)
 public:
  /// A port is never made without a name and a key.
  HXRPort(String name, String uniqueKey, std::int32_t orientation,
          std::int32_t connectionRelationship);

  const HXRPortClass& portClass() const noexcept { return static_cast<const HXRPortClass&>(isa()); }
  /// Class-level: the device-side class of the port.
  const String& processClassName() const { return portClass().processClassName(); }
  RGBA defaultColor() const noexcept { return portClass().defaultColor(); }

  const String& uniqueKey() const noexcept { return uniqueKey_; }
  const String& name() const noexcept { return name_; }
  /// Unless the name is the same, stores it and tells the editor node of the definition, which
  /// announces it. Throws std::logic_error for a shared description.
  void setName(String name);
  /// Tells the editor node of the definition that the port has another name.
  void announceName();
  std::int32_t orientation() const noexcept { return orientation_; }
  std::int32_t connectionRelationship() const noexcept { return connectionRelationship_; }

  /// The definition that holds the port; null while none does, and for a shared description.
  HXRNode* node() const noexcept;
  /// The key of the group that holds the port; nil while none does.
  const String& portGroupKey() const noexcept { return portGroupKey_; }
  /// The definition whose layout has entered the port in that group; null and nil: none has.
  void link(HXRNode* node, String portGroupKey, PassKey<HXRPortLayout>) noexcept;
  /// Whether several definitions share the description.
  bool isShared() const noexcept { return shared_; }
  /// Freezes the description: it forgets its node, and from now on changing it throws.
  void share() noexcept;

  /// Whether this port takes a connection with the other. Asked of the input side: typed outputs
  /// answer no even where their inputs answer yes.
  virtual bool canConnectToPort(const HXRPort* other) const;

  /// A fresh description with the same contents, that belongs to no definition.
  virtual Ref<HXRPort> copy() const;
  /// What `copy` does.
  HXRPort(const HXRPort& other);

 protected:
  /// Throws std::logic_error when the description is shared.
  void requireOwn() const;

 private:
  friend class HXRNodeSnapshot;

  String uniqueKey_;
  WeakRef<HXRNode> node_;
  String name_;
  String portGroupKey_;
  std::int32_t orientation_;
  std::int32_t connectionRelationship_;
  bool shared_ = false;
};

}  // namespace tarnkit
