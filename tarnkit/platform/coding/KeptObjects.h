#pragma once

#include <cstddef>

#include "tarnkit/platform/objects/Object.h"
#include "tarnkit/platform/propertylist/SegmentedBuffer.h"

namespace tarnkit::detail {

/// The objects that an archiver has met, by number: it owns them, so that none of them goes, and
/// its address to another one, before the archive is done. A run that may be as long as a file.
class KeptObjects {
 public:
  KeptObjects() noexcept = default;
  KeptObjects(const KeptObjects&) = delete;
  KeptObjects& operator=(const KeptObjects&) = delete;
  ~KeptObjects() { clear(); }

  /// Null where there is none.
  const Object* operator[](std::size_t number) const noexcept { return objects_[number]; }
  void append(Ref<const Object> object) {
    objects_.append(object.get());
    object.leak();
  }
  /// Gives the memory back.
  void clear() noexcept {
    for (std::size_t i = 0; i < objects_.size(); ++i) {
      const auto last = Ref<const Object>::adopt(objects_[i]);
    }
    objects_.clear();
  }

 private:
  SegmentedBuffer<const Object*> objects_;
};

}  // namespace tarnkit::detail
