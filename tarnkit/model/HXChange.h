#pragma once

#include <cstddef>

#include "tarnkit/platform/objects/BlockPool.h"
#include "tarnkit/platform/objects/Object.h"
#include "tarnkit/platform/objects/Ref.h"

namespace tarnkit {

class HXChangeNotices;
class HXNode;

/// One change of one thing in a document: it holds what is not in force, and puts it in the place
/// of what is. Handed to the document's recorder right before the change happens, when it holds
/// what was there before.
///
/// Changes of a document are exchanged in the order opposite to that in which they happened, and
/// again in that order: then each finds everything as it left it. A change owns the objects that it
/// concerns, so that those which have left the document stay what they are. For one thread.
class HXChange {
 public:
  virtual ~HXChange() = default;
  HXChange(const HXChange&) = delete;
  HXChange& operator=(const HXChange&) = delete;
  // There are many, and all are small.
  static void* operator new(std::size_t size) { return BlockPool::allocate(size); }
  static void operator delete(void* change, std::size_t size) noexcept {
    BlockPool::release(change, size);
  }

  /// Puts what is held in force and holds what was. Announces nothing. Costs what the change did.
  virtual void exchange() = 0;
  /// Adds what there is to be told of the exchange that was made last.
  virtual void addNotices(HXChangeNotices& notices) const = 0;

  /// Whether exchanging would change nothing.
  virtual bool isNeutral() const { return false; }

  /// What a change that sets one value sets: of later ones of the same subject, within one step,
  /// only the first has to be held.
  struct Subject {
    const Object* object = nullptr;  // null for a change that is no such thing
    const char* property = nullptr;  // one address for each property
    friend bool operator==(const Subject&, const Subject&) = default;
  };
  Subject subject() const noexcept { return subjectOf(kind_.property); }
  /// Whether it sets one value that a user sets again and again, as by dragging or typing.
  bool isSimple() const noexcept { return kind_.isSimple; }
  /// Whether the value is how the editor looks at the document, and not what the document says.
  bool isViewState() const noexcept { return kind_.isViewState; }

  /// The table (of which owner) in which an entry comes or goes, or which is exchanged as a whole;
  /// null for another change.
  Subject table() const noexcept { return subjectOf(kind_.table); }
  /// Whether it is of an entry that came, so that nothing has to be held.
  virtual bool isOfNewEntry() const noexcept { return false; }
  /// Whether a later change, of an entry of the same table and the next one of that table, has
  /// taken this one back.
  virtual bool isUndoneBy(const HXChange&) const { return false; }

  /// Whether a node comes to a group, or leaves one.
  bool movesSubnodes() const noexcept { return kind_.movesSubnodes; }
  /// The node that exchanging brings to a group; null when it takes one out, and for another
  /// change.
  HXNode* comingSubnode() const noexcept { return kind_.movesSubnodes ? heldSubnode() : nullptr; }

  /// What holding the change costs, roughly, without the objects that the document has as well.
  virtual std::size_t byteCount() const noexcept = 0;

 protected:
  /// What all changes of one property or table have in common.
  struct Kind {
    const char* property = nullptr;  // null for a change of something else than one value
    const char* table = nullptr;     // null for a change outside of a table
    bool isSimple = false;
    bool isViewState = false;
    bool movesSubnodes = false;
  };
  /// `kind` lives as long as the program.
  HXChange(const Kind& kind, Object& owner) noexcept : owner_(&owner), kind_(kind) {}
  /// Whose property or table it is.
  Object& owner() const noexcept { return *owner_; }

  /// Of a kind that moves subnodes.
  virtual HXNode* heldSubnode() const noexcept { return nullptr; }

 private:
  friend class HXChangeList;
  Subject subjectOf(const char* property) const noexcept {
    return property ? Subject{owner_.get(), property} : Subject{};
  }

  Ref<Object> owner_;
  const Kind& kind_;
  HXChange* previous_ = nullptr;
  HXChange* next_ = nullptr;
};

}  // namespace tarnkit
