#pragma once

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "tarnkit/platform/objects/Class.h"
#include "tarnkit/platform/objects/Ref.h"

namespace tarnkit {

class Decoder;
class Encoder;
class String;

/// How an object stands in an archive.
enum class CodingKind : std::uint8_t { object, string, number, data, list, set, orderedSet, map };

/// The root class: an intrusive reference count with weak references, a class, and the operations
/// that every object answers.
///
/// Objects are made by `make<T>()` (never on the stack, never as members) and owned through `Ref`.
/// Counting is plain while the process has one thread and atomic after that; nothing else is
/// locked. However long a chain of owners is, dropping its head takes it down without deep
/// recursion.
class Object {
 public:
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  static const Class kClass;
  /// The exact class of the object.
  virtual const Class& isa() const noexcept = 0;
  bool isKindOf(const Class& other) const noexcept { return isa().isKindOf(other); }
  bool isMemberOf(const Class& other) const noexcept { return &isa() == &other; }

  /// Equality; identity unless a class says otherwise.
  virtual bool isEqual(const Object& other) const { return this == &other; }
  /// Equal objects have equal hashes.
  virtual std::uint64_t hash() const;
  /// A text for logs: class name and address unless a class says otherwise.
  virtual String description() const;

  /// How archivers write the object; `object` unless it is one of the platform's values.
  virtual CodingKind codingKind() const noexcept { return CodingKind::object; }
  /// Writes the object's keys. A class that cannot be archived throws (std::logic_error).
  virtual void encodeWithCoder(Encoder& coder) const;
  /// Reads the object's keys. Runs once, on an object just made by its class's factory, before the
  /// objects that it refers to have read theirs: what is decoded here may be stored, not asked.
  virtual void initWithCoder(Decoder& coder);
  /// Lets go of every object that it owns: called on each object of an archive that turned out to
  /// be unreadable, so that objects that own each other in a circle leave no leak.
  virtual void abandonDecoding();
  /// Runs once after `initWithCoder` of this object and of everything that it was the first to
  /// refer to: the place for steps that ask the decoded objects.
  virtual void awakeAfterDecoding(Decoder& coder);

  /// Whether more than one handle owns the object; for copy-on-write.
  bool isShared() const noexcept { return countsOf(this).strong > 1; }

  /// How many objects are alive in the process; for leak checks in tests.
  static std::int64_t liveObjectCount() noexcept;

  static void* operator new(std::size_t size) { return allocate(size, 0); }
  static void operator delete(void* object) noexcept { deallocate(object); }

 protected:
  Object() noexcept = default;
  virtual ~Object();

  /// Memory for an object of `size` bytes followed by `extra` bytes of its own.
  static void* allocate(std::size_t size, std::size_t extra);
  static void deallocate(void* object) noexcept;

 private:
  friend void detail::retainObject(const Object*) noexcept;
  friend void detail::releaseObject(const Object*) noexcept;
  friend void detail::retainWeakly(const Object*) noexcept;
  friend void detail::releaseWeakly(const Object*) noexcept;
  friend bool detail::isAlive(const Object*) noexcept;
  friend bool detail::retainIfAlive(const Object*) noexcept;

  /// Stands in memory right before the object, so that it outlives the destructor.
  struct Counts {
    std::uint32_t strong;
    std::uint32_t weak;  // in steps of kWeakStep; all owners together count as one
  };
  static constexpr std::uint32_t kWeakStep = 2;
  static constexpr std::uint32_t kInPage = 1;  // in `weak`: where the memory came from
  /// Also of an object that is gone and only held weakly, hence no member of it.
  static Counts& countsOf(const Object* object) noexcept {
    return *(reinterpret_cast<Counts*>(const_cast<Object*>(object)) - 1);
  }
  void lastOwnerLeft() const noexcept;
  static void destroy(const Object* object) noexcept;
};

/// Makes an object; the only way to make one.
template <class T, class... Args>
Ref<T> make(Args&&... args) {
  static_assert(alignof(T) <= alignof(std::uint64_t));
  T* const object = new T(std::forward<Args>(args)...);
  assert(static_cast<const void*>(static_cast<const Object*>(object)) == object);
  return Ref<T>::adopt(object);
}

/// `object` as a `T`, or null when it is null or no kind of `T`.
template <class T>
T* as(Object* object) noexcept {
  return object && object->isKindOf(T::kClass) ? static_cast<T*>(object) : nullptr;
}
template <class T>
const T* as(const Object* object) noexcept {
  return object && object->isKindOf(T::kClass) ? static_cast<const T*>(object) : nullptr;
}
template <class T, class U>
Ref<T> as(const Ref<U>& object) noexcept {
  return Ref<T>(as<T>(static_cast<Object*>(object.get())));
}

namespace detail {
/// Whether the process is sure to have one thread. Where nobody tells, it never is.
inline bool hasOneThread() noexcept {
#if __has_include(<sys/single_threaded.h>)
  return __libc_single_threaded;
#else
  return false;
#endif
}

inline void retainObject(const Object* object) noexcept {
  auto& strong = Object::countsOf(object).strong;
  if (hasOneThread()) {
    ++strong;
  } else {
    __atomic_fetch_add(&strong, 1U, __ATOMIC_RELAXED);
  }
}
inline void releaseObject(const Object* object) noexcept {
  auto& strong = Object::countsOf(object).strong;
  const auto left = hasOneThread() ? --strong : __atomic_sub_fetch(&strong, 1U, __ATOMIC_ACQ_REL);
  if (left == 0) object->lastOwnerLeft();
}
inline void retainWeakly(const Object* object) noexcept {
  auto& weak = Object::countsOf(object).weak;
  if (hasOneThread()) {
    weak += Object::kWeakStep;
  } else {
    __atomic_fetch_add(&weak, Object::kWeakStep, __ATOMIC_RELAXED);
  }
}
inline void releaseWeakly(const Object* object) noexcept {
  auto& weak = Object::countsOf(object).weak;
  const auto left = hasOneThread() ? weak -= Object::kWeakStep
                                   : __atomic_sub_fetch(&weak, Object::kWeakStep, __ATOMIC_ACQ_REL);
  if (left < Object::kWeakStep) Object::deallocate(const_cast<Object*>(object));
}
inline bool isAlive(const Object* object) noexcept {
  return __atomic_load_n(&Object::countsOf(object).strong, __ATOMIC_RELAXED) != 0;
}
inline bool retainIfAlive(const Object* object) noexcept {
  auto& strong = Object::countsOf(object).strong;
  if (hasOneThread()) {
    if (strong == 0) return false;
    ++strong;
    return true;
  }
  auto seen = __atomic_load_n(&strong, __ATOMIC_RELAXED);
  while (seen != 0) {
    if (__atomic_compare_exchange_n(&strong, &seen, seen + 1, true, __ATOMIC_ACQ_REL,
                                    __ATOMIC_RELAXED)) {
      return true;
    }
  }
  return false;
}
/// The factory of a class whose decoding starts from its default constructor.
template <class T>
Ref<Object> makeByDefault(const Class&) {
  return make<T>();
}
}  // namespace detail

}  // namespace tarnkit

/// Declares the class record of an object class and its `isa`, the record being of the given type
/// (`Class`, or a kind of it with class-level descriptors). The record itself is defined in the
/// class's source: `const Class T::kClass{"T", &Base::kClass, &detail::makeByDefault<T>};`.
#define TARNKIT_CLASS_OF(RecordType) \
 public:                             \
  static const RecordType kClass;    \
  const ::tarnkit::Class& isa() const noexcept override { return kClass; }
#define TARNKIT_CLASS TARNKIT_CLASS_OF(::tarnkit::Class)
