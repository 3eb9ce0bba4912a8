#pragma once

#include <atomic>
#include <cstdint>
#include <variant>

#include "tarnkit/patches/RGBA.h"
#include "tarnkit/platform/objects/Class.h"
#include "tarnkit/platform/objects/Object.h"
#include "tarnkit/platform/objects/PassKey.h"
#include "tarnkit/platform/text/String.h"
#include "tarnkit/platform/text/Symbol.h"

namespace tarnkit {

class HXRBooleanParameter;
class HXRColorParameter;
class HXRImageParameter;
class HXRIndexParameter;
class HXRNode;
class HXRNumberParameter;
class HXRParameter;
class HXRStringParameter;

/// A description as what it is; as the base when it is of no kind. Who treats the kinds differently
/// visits it (`std::visit` with `Overloaded`), which compiles only while every kind is met.
using HXRParameterKind =
    std::variant<const HXRParameter*, const HXRBooleanParameter*, const HXRNumberParameter*,
                 const HXRIndexParameter*, const HXRStringParameter*, const HXRColorParameter*,
                 const HXRImageParameter*>;

template <class Value>
class HXRValueHolder;

/// What a description's editor twin is to it: what holds a value of one of the kinds.
using HXRValueHolderKind =
    std::variant<HXRValueHolder<bool>*, HXRValueHolder<float>*, HXRValueHolder<std::int32_t>*,
                 HXRValueHolder<String>*, HXRValueHolder<RGBA>*, HXRValueHolder<Ref<Object>>*>;

/// The editor's twin of a description. Implemented by the editor parameters; it stands here so that
/// definitions know nothing of the model.
class HXRParameterTwin : public Object {
 public:
  virtual HXRValueHolderKind valueHolder() = 0;
};

/// The class record of a parameter description: with the editor's class for it and the device's.
class HXRParameterClass : public Class {
 public:
  /// `parameterClass` is the name of the editor parameter class; null: none.
  constexpr HXRParameterClass(const char* name, const Class* superclass, const char* parameterClass,
                              const char* processClassName) noexcept
      : Class(name, superclass),
        parameterClassName_(parameterClass),
        processClassName_(processClassName) {}

  /// The editor parameter class to make for it, found by name; null in the base, or while the model
  /// is not registered.
  const Class* parameterClass() const;
  const String& processClassName() const { return processClassName_.string(); }

 private:
  const char* parameterClassName_;
  mutable std::atomic<const Class*> parameterClass_{nullptr};  // looked up once
  Symbol processClassName_;
};

/// A setting of a patch that is not a port, as its definition describes it: name, key within the
/// patch, and (in the kinds) a default and a value.
///
/// Owned by its definition. Once the editor node has made the editor's twin, the value is the
/// twin's; before that, setting the value sets the default. For one thread.
class HXRParameter : public Object {
  TARNKIT_CLASS_OF(HXRParameterClass)
 public:
  HXRParameter(String name, String uniqueKey, bool hidden = false);

  const HXRParameterClass& parameterRecord() const noexcept {
    return static_cast<const HXRParameterClass&>(isa());
  }
  virtual HXRParameterKind kind() const { return this; }
  const Class* parameterClass() const { return parameterRecord().parameterClass(); }
  const String& processClassName() const { return parameterRecord().processClassName(); }

  const String& name() const noexcept { return name_; }
  const String& uniqueKey() const noexcept { return uniqueKey_; }
  /// Whether the editor leaves it out.
  bool hidden() const noexcept { return hidden_; }
  /// The definition; null while none holds the parameter.
  HXRNode* node() const noexcept;
  /// Leaves alone, with one line logged, a parameter that its definition holds.
  void setNode(HXRNode* node);
  void linkNode(HXRNode* node, PassKey<HXRNode>) noexcept;
  /// The editor's twin, or null.
  HXRParameterTwin* parameter() const noexcept { return parameter_.get(); }
  /// Set by the editor's twin, which must hold values of the parameter's kind (otherwise, and for
  /// null, the parameter is left without a twin).
  virtual void setParameter(HXRParameterTwin* parameter);

  /// A fresh description with the same contents and no twin, that belongs to no definition.
  virtual Ref<HXRParameter> copy() const;
  /// What `copy` does.
  HXRParameter(const HXRParameter& other);

 private:
  friend class HXRNodeSnapshot;

  String name_;
  String uniqueKey_;
  WeakRef<HXRNode> node_;
  WeakRef<HXRParameterTwin> parameter_;
  bool hidden_;
};

}  // namespace tarnkit
