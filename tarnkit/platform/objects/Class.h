#pragma once

#include <string_view>

#include "tarnkit/platform/objects/Ref.h"

namespace tarnkit {

class String;

/// The one static record of a class: its name, its superclass and, for classes that can be made by
/// name, a factory.
///
/// A record is identified by its address, so "exactly this class" is one pointer comparison.
/// Records are constant-initialised and live for ever; they can be read from any thread. Classes
/// that an archive, a definition or a plug-in may name are entered into the `ClassRegistry`,
/// explicitly.
class Class {
 public:
  /// Makes an object of the record's class in the state in which a decoder expects it (nothing
  /// drawn, nothing shared), or in its plain initial state where the class has only one.
  using Factory = Ref<Object> (*)(const Class& record);

  /// `name` must outlive the record (a string literal). `factory` may be null: the class is then
  /// abstract and cannot be made by name.
  constexpr Class(const char* name, const Class* superclass, Factory factory = nullptr) noexcept
      : name_(name), superclass_(superclass), factory_(factory) {}
  Class(const Class&) = delete;
  Class& operator=(const Class&) = delete;

  /// The class's name as archives and descriptions write it; empty for a record made without one.
  std::string_view name() const noexcept { return name_ ? name_ : std::string_view(); }
  /// The name as a shared string; the same object on every call.
  String nameString() const;
  /// Null for the root class.
  const Class* superclass() const noexcept { return superclass_; }
  bool canBeMade() const noexcept { return factory_ != nullptr; }
  /// A new object of the class, or null when the class is abstract.
  Ref<Object> make() const;

  /// Whether this is `other` or a subclass of it. Costs a walk up the superclasses.
  bool isKindOf(const Class& other) const noexcept {
    for (const Class* c = this; c != nullptr; c = c->superclass_) {
      if (c == &other) return true;
    }
    return false;
  }

  bool operator==(const Class& other) const noexcept { return this == &other; }

 private:
  const char* name_;
  const Class* superclass_;
  Factory factory_;
};

/// Classes by name: the explicit list of what may be made from a name found in an archive or given
/// by a caller.
///
/// Filled once by each room's registration function and by plug-ins; look-ups afterwards may run on
/// several threads as long as nobody registers. A look-up costs one hash.
class ClassRegistry {
 public:
  /// Enters a class; entering it again changes nothing. False, and one line logged, for a class
  /// without a name and for one whose name is taken: whoever holds a name keeps it.
  static bool add(const Class& record);
  /// Keeps a name that archives write, though no record stands behind it, from being given to a
  /// class. `name` must outlive the process's registrations (a string literal).
  static void reserve(std::string_view name);
  /// Whether a class of that name was entered or the name is reserved.
  static bool isTaken(std::string_view name);
  /// Null when no class of that name was entered (or `name` is empty).
  static const Class* classNamed(std::string_view name);
};

}  // namespace tarnkit
