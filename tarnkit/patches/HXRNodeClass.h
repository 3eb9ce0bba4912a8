#pragma once

#include <atomic>

#include "tarnkit/patches/RGBA.h"
#include "tarnkit/platform/collections/OrderedSet.h"
#include "tarnkit/platform/objects/Class.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

class HXRNode;
class PatchDeclaration;

/// The class record of a patch definition: the class-level descriptors, readable with no instance,
/// and the declaration of its ports and parameters.
///
/// A definition class is its record, not necessarily a C++ class of its own: most differ in their
/// declaration only and share the C++ class of their base. What a record leaves out it inherits
/// from its base's record. The first instance (or the first question for the layout) runs the
/// declaration once; every later instance shares the outcome. Records live for ever. For one
/// thread.
class HXRNodeClass : public Class {
 public:
  enum class Flag : unsigned char { inherited, no, yes };
  struct Descriptors {
    /// Null: inherited; the root's is the class's own name.
    const char* defaultName = nullptr;
    /// Null: inherited; the root's is nil (listed in no category).
    const char* libraryCategory = nullptr;
    /// Null: the class's own name with ".html".
    const char* libraryDescription = nullptr;
    const char* processClassName = nullptr;
    const char* patchViewClassName = nullptr;
    const RGBA* defaultColor = nullptr;
    Flag hiddenInLibrary = Flag::inherited;
    Flag secretInLibrary = Flag::inherited;
    Flag allowsSubnodes = Flag::inherited;
    /// Null: inherited; otherwise a null-terminated list.
    const char* const* hiddenPortGroupKeys = nullptr;
    /// Null: "HXNode". Not inherited.
    const char* nodeClassName = nullptr;
  };
  /// Declares what the class adds to its base's ports and parameters; null: nothing.
  using Declare = void (*)(PatchDeclaration& patch);

  /// The C++ class of a record's definitions: `constructPatch` makes it. Empty: the base's.
  struct Construct {
    Ref<HXRNode> (*make)(const HXRNodeClass& patchClass);
    /// Whether the definition is an object of the C++ class or of one derived from it.
    bool (*fits)(const HXRNode* definition);
  };

  /// `name` is never null, and `base` leads up to `HXRNode::kClass`. Without `construct` the
  /// definitions are objects of the base's C++ class; `constructPatch<T>` makes them objects of
  /// `T`.
  constexpr HXRNodeClass(const char* name, const HXRNodeClass* base, const Descriptors& descriptors,
                         Declare declare = nullptr, Construct construct = {}) noexcept
      : Class(name, base, &makeInstance),
        base_(base),
        descriptors_(descriptors),
        declare_(declare),
        construct_(construct) {}

  /// Null for the root definition class.
  const HXRNodeClass* base() const noexcept { return base_; }

  /// The name under which the library lists the patch, and the name of a fresh node.
  const String& defaultName() const { return resolved().defaultName; }
  /// Nil: in no category.
  const String& libraryCategory() const { return resolved().libraryCategory; }
  /// The file name of the help page.
  const String& libraryDescription() const { return resolved().libraryDescription; }
  /// The device-side class that runs the patch.
  const String& processClassName() const { return resolved().processClassName; }
  /// The editor's view class for the patch.
  const String& patchViewClassName() const { return resolved().patchViewClassName; }
  RGBA defaultColor() const { return resolved().defaultColor; }
  /// Kept out of the library's list; documents that hold it still load.
  bool hiddenInLibrary() const { return resolved().hiddenInLibrary; }
  bool secretInLibrary() const { return resolved().secretInLibrary; }
  /// Whether a node of the patch holds a group of child nodes.
  bool allowsSubnodes() const { return resolved().allowsSubnodes; }
  /// The keys of the port groups whose ports the editor hides by default (strings).
  const OrderedSet& hiddenPortGroupKeys() const { return *resolved().hiddenPortGroupKeys; }

  /// A new definition of the class. The first one of a class whose record is wrong (it derives from
  /// no definition, its declaration leaves out a name or a key or gives a key twice, or its C++
  /// class is not the one that its declaration or its base's asks for) throws std::logic_error, as
  /// does the next operation.
  Ref<HXRNode> makeDefinition() const;
  /// The definition whose layout and parameters every instance starts from.
  const HXRNode& prototype() const;

  /// The name of the editor node class that goes with the patch: the container patches have their
  /// own, every other, a class derived from theirs included, has "HXNode".
  String nodeClassName() const;
  /// A document that holds one node of this patch: to show or send a patch by itself. The document
  /// is made by the model, through the builder that it installed (see `setDocumentGraphBuilder`).
  Ref<Object> documentGraph() const;
  using DocumentGraphBuilder = Ref<Object> (*)(const HXRNodeClass& patchClass);
  static void setDocumentGraphBuilder(DocumentGraphBuilder builder);

 private:
  friend class HXRNode;
  struct Resolved {
    String defaultName;
    String libraryCategory;
    String libraryDescription;
    String processClassName;
    String patchViewClassName;
    RGBA defaultColor;
    bool hiddenInLibrary = false;
    bool secretInLibrary = false;
    bool allowsSubnodes = false;
    Ref<OrderedSet> hiddenPortGroupKeys;
    Ref<HXRNode> owner;  // of the prototype
    std::atomic<HXRNode*> prototype{nullptr};
  };
  /// The record of the root definition class, which leaves nothing out.
  constexpr HXRNodeClass(const char* name, const Class* superclass, const Descriptors& descriptors,
                         Construct construct) noexcept
      : Class(name, superclass, &makeInstance), descriptors_(descriptors), construct_(construct) {}
  static Ref<Object> makeInstance(const Class& record);
  Ref<HXRNode> constructInstance() const;
  [[noreturn]] void fail(const char* why) const;
  void declareInto(PatchDeclaration& patch) const;
  const Resolved& resolved() const {
    const auto* made = resolved_.load(std::memory_order_acquire);
    return made ? *made : resolve();
  }
  const Resolved& resolve() const;

  const HXRNodeClass* base_ = nullptr;
  Descriptors descriptors_;
  Declare declare_ = nullptr;
  Construct construct_;
  mutable std::atomic<Resolved*> resolved_{nullptr};  // made once, never destroyed
};

}  // namespace tarnkit
