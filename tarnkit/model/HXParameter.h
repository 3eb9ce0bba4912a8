#pragma once

#include <variant>

#include "tarnkit/model/HXNotifications.h"
#include "tarnkit/patches/HXRParameter.h"
#include "tarnkit/platform/coding/Coder.h"

namespace tarnkit {

class HXBooleanParameter;
class HXColorParameter;
class HXImageParameter;
class HXIndexParameter;
class HXNode;
class HXNumberParameter;
class HXStringParameter;

/// A parameter as what it is. Who treats the kinds differently visits it (`std::visit` with
/// `Overloaded`), which compiles only while every kind is met.
using HXParameterKind = std::variant<HXBooleanParameter*, HXNumberParameter*, HXIndexParameter*,
                                     HXStringParameter*, HXColorParameter*, HXImageParameter*>;
using HXConstParameterKind =
    std::variant<const HXBooleanParameter*, const HXNumberParameter*, const HXIndexParameter*,
                 const HXStringParameter*, const HXColorParameter*, const HXImageParameter*>;

/// Posted by a parameter with "Node" and "Parameter".
inline constinit const Symbol HXParameterValueDidChangeNotification{
    "HXParameterValueDidChangeNotification"};

/// The document's value of one parameter of a node's patch definition: abstract; the kinds add the
/// value.
///
/// Owned by its node, which also attaches the definition's description. Until the user (or an
/// archive) has set the value it follows the description's default. For one thread.
class HXParameter : public HXRParameterTwin {
 public:
  static const Class kClass;

  /// A parameter of the kind for the node. Null, with one line logged, for the abstract class
  /// itself; null for a class that is no parameter kind.
  static Ref<HXParameter> create(const Class& parameterClass, HXNode* node);

  HXParameterKind kind() { return hx_kind(); }
  HXConstParameterKind kind() const;

  HXNode* node() const noexcept { return node_.get(); }
  /// The definition's description; null while the definition has none of the key.
  const Ref<HXRParameter>& patchParameter() const noexcept { return patchParameter_; }
  /// Attaches the description. A value that was never set takes the description's default,
  /// silently; one that was set stays, and a new description is announced as a change.
  virtual void setPatchParameter(Ref<HXRParameter> patchParameter);

  /// From the description; nil and false without one.
  String uniqueKey() const;
  String name() const;
  bool hidden() const;
  /// Whether the value was set by a user or read from an archive.
  bool valueInitialized() const noexcept { return valueInitialized_; }

  /// Announces the change if the node is in a document, and in any case tells the node.
  void valueDidChange();
  /// Around every change of the node's place in the hierarchy. Do nothing here.
  virtual void hierarchyWillChange();
  virtual void hierarchyDidChange();

  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;

 protected:
  HXParameter() noexcept = default;
  virtual HXParameterKind hx_kind() = 0;
  /// Links the descriptions; true when the description is another one than before.
  bool exchangePatchParameter(Ref<HXRParameter> patchParameter);
  void setValueInitialized(bool initialized = true) noexcept { valueInitialized_ = initialized; }
  /// For an undo: announces the value, and leaves the definition alone.
  void announceExchangedValue();

 private:
  friend struct HXParameterFields;
  void announceValue(const Ref<HXNode>& node);

  WeakRef<HXNode> node_;
  Ref<HXRParameter> patchParameter_;
  bool valueInitialized_ = false;
};

}  // namespace tarnkit
