#pragma once

#include <concepts>
#include <span>
#include <vector>

#include "tarnkit/patches/HXRBuiltState.h"
#include "tarnkit/patches/HXRNodeClass.h"
#include "tarnkit/patches/HXRNodeOwner.h"
#include "tarnkit/patches/HXRParameter.h"
#include "tarnkit/patches/HXRPortLayout.h"
#include "tarnkit/platform/collections/RefRun.h"
#include "tarnkit/platform/objects/FunctionRef.h"
#include "tarnkit/platform/objects/PassKey.h"

namespace tarnkit {

/// The group that receives ports added without a group.
inline constexpr const char* HXRDefaultPortGroupKey = "__Default";

/// A patch definition: describes one kind of patch by its ports, port groups and parameters. It
/// computes nothing.
///
/// An editor node owns exactly one as its `patch` and follows it: every change of ports, parameters
/// or names made here is told to the node at once. While an instance differs in nothing from its
/// class's prototype it shares the class's port layout; `portLayout` reads whichever is in force
/// and costs nothing, while every operation that hands out a port or group of this very definition
/// makes the definition's own copy first. Made by `HXRNodeClass::makeDefinition`. For one thread.
class HXRNode : public Object {
 public:
  static const HXRNodeClass kClass;
  const Class& isa() const noexcept override { return *class_; }
  const HXRNodeClass& patchClass() const noexcept { return *class_; }

  /// The layout in force, shared or own; for reading, by who changes nothing meanwhile.
  const HXRPortLayout& portLayout() const noexcept { return *layout_; }

  /// This definition's own port of the key, or null.
  HXRPort* portForKey(const String& uniqueKey);
  /// This definition's own ports as they are now, unique key to port, in the order of addition.
  OrderedMap<Ref<HXRPort>> ports();
  HXRPortGroupCollection& inputPortGroupCollection() {
    return portGroupCollection(HXOrientationInput);
  }
  HXRPortGroupCollection& outputPortGroupCollection() {
    return portGroupCollection(HXOrientationOutput);
  }
  /// Of a side.
  HXRPortGroupCollection& portGroupCollection(std::int32_t orientation);
  HXRPortGroup* hx_inputPortGroupForKey(const String& groupKey);
  HXRPortGroup* hx_outputPortGroupForKey(const String& groupKey);

  /// Puts the port into the group of that key on its side (nil: the default group) and tells the
  /// editor node. A port of the same key is replaced. A port that is neither input nor output is
  /// ignored; one without a key, or of a shared layout, is refused with one line logged.
  void addPort(HXRPort& port, const String& portGroup = {});
  /// Takes the port out, and its group when that is empty then, and tells the editor node. Nothing
  /// happens for a port of another definition.
  void removePort(HXRPort& port);

  /// The parameters as they are now, in the order added.
  std::vector<Ref<HXRParameter>> parameters() const {
    const auto run = parameters_.span();
    return {run.begin(), run.end()};
  }
  /// The same, for reading by who changes nothing meanwhile.
  std::span<const Ref<HXRParameter>> parametersInForce() const noexcept {
    return parameters_.span();
  }
  /// The parameter last added under the key, or null.
  HXRParameter* parameterForKey(const String& uniqueKey) const;
  /// Appends the parameter and tells the editor node. One without a key is refused with one line
  /// logged.
  void addParameter(HXRParameter& parameter);
  /// Takes the parameter out and tells the editor node; one that is not held is ignored.
  void removeParameter(HXRParameter& parameter);
  /// Called when the value of one of the parameters has changed. The base does nothing; definitions
  /// whose ports follow a parameter rebuild them here.
  virtual void parameterValueDidChange(HXRParameter& parameter);

  /// The editor node that owns the definition, or null.
  HXRNodeOwner* node() const noexcept { return node_.get(); }
  /// Leaves alone, with one line logged, a definition that its node holds.
  void setNode(HXRNodeOwner* node);
  void linkNode(HXRNodeOwner* node, PassKey<HXRNodeOwner>) noexcept { node_ = node; }
  /// Whether the class comes from a plug-in; set by whoever makes the definition for a document.
  bool external() const noexcept { return external_; }
  void setExternal(bool external) noexcept { external_ = external; }
  /// Whether the class belongs neither to the application's main bundle nor to this library's.
  static bool hx_isExternalClass(const Class& patchClass);

 protected:
  /// Starts with the layout and the parameters of the class's prototype; inside the making of the
  /// prototype, with none.
  explicit HXRNode(const HXRNodeClass& patchClass);

  /// The class's prototype, from which a constructor takes over what the prototype has built; null
  /// inside the making of the prototype itself.
  const HXRNode* prototype() const noexcept;

  /// The layout, made this definition's own.
  HXRPortLayout& ownLayout();

  /// Runs the steps that bring ports and parameters in line with a parameter, between telling the
  /// editor node of the beginning and of the end. The definition lives until the steps are done,
  /// whatever an observer of one of them does.
  void rebuild(FunctionRef<void()> steps);

  /// What the definition remembers of having built its ports and parameters (`builtStateOf`), so
  /// that an undo brings it back with them. A class that remembers something in members of its own
  /// says so here; null, the answer of the base, means that there is nothing.
  virtual std::unique_ptr<HXRBuiltState> builtState() const;

 private:
  friend class HXRPort;
  /// Tells the owner; to be held until the change is complete.
  Ref<Object> willChange();

  friend class HXRNodeClass;
  friend class HXRNodeSnapshot;
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);

  const HXRNodeClass* class_;
  Ref<HXRPortLayout> layout_;
  WeakRef<HXRNodeOwner> node_;
  [[no_unique_address]] detail::RefRun<HXRParameter> parameters_;
  bool external_ = false;
  bool rebuilding_ = false;
};

/// For the record of a class whose definitions are objects of `T`, which derives from the C++ class
/// of the record's base and is made from the record: `explicit T(const HXRNodeClass& patchClass)`.
template <std::derived_from<HXRNode> T>
inline constexpr HXRNodeClass::Construct constructPatch{
    [](const HXRNodeClass& patchClass) -> Ref<HXRNode> { return make<T>(patchClass); },
    [](const HXRNode* definition) { return dynamic_cast<const T*>(definition) != nullptr; }};

}  // namespace tarnkit
