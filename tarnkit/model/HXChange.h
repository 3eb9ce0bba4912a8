#pragma once

#include <cstddef>

#include "tarnkit/platform/objects/BlockPool.h"
#include "tarnkit/platform/objects/Object.h"

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
  virtual Subject subject() const noexcept { return {}; }
  /// Whether it sets one value that a user sets again and again, as by dragging or typing.
  virtual bool isSimple() const noexcept { return false; }
  /// Whether the value is how the editor looks at the document, and not what the document says.
  virtual bool isViewState() const noexcept { return false; }

  /// The table (of which owner) in which an entry comes or goes, or which is exchanged as a whole;
  /// null for another change.
  virtual Subject table() const noexcept { return {}; }
  /// Whether a later change, of an entry of the same table and the next one of that table, has
  /// taken this one back.
  virtual bool isUndoneBy(const HXChange&) const { return false; }

  /// The node that comes to a group, or leaves one; null for another change.
  virtual HXNode* subnode() const noexcept { return nullptr; }

  /// What holding the change costs, roughly, without the objects that the document has as well.
  virtual std::size_t byteCount() const noexcept = 0;

 protected:
  HXChange() noexcept = default;
};

}  // namespace tarnkit
