#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

namespace tarnkit {

class Object;

namespace detail {
void retainObject(const Object* object) noexcept;
void releaseObject(const Object* object) noexcept;
void retainWeakly(const Object* object) noexcept;
void releaseWeakly(const Object* object) noexcept;
/// Whether an owner is left; `object` must be held weakly.
bool isAlive(const Object* object) noexcept;
/// Becomes an owner unless the object is gone.
bool retainIfAlive(const Object* object) noexcept;

/// The object as a `T`, which may be incomplete here: every class has `Object` as its first base,
/// at the object's own address (`make` checks it).
template <class T>
T* downcast(const Object* object) noexcept {
  return reinterpret_cast<T*>(const_cast<Object*>(object));
}
}  // namespace detail

/// The owning handle of an object of the library; null by default.
///
/// Copying shares the object, the last handle destroys it. A handle may be made from `this` inside
/// a constructor. `T` may be incomplete wherever a `Ref<T>` is only stored, copied or destroyed.
/// Several threads may own one object; one handle belongs to one thread at a time.
template <class T>
class Ref {
 public:
  Ref() noexcept = default;
  Ref(std::nullptr_t) noexcept {}
  /// Shares `object`, which may be null.
  Ref(T* object) noexcept : object_(object) {
    if (object_) detail::retainObject(object_);
  }
  Ref(const Ref& other) noexcept : object_(other.object_) {
    if (object_) detail::retainObject(object_);
  }
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  template <class U>
  requires(!std::is_same_v<U, T> && std::is_convertible_v<U*, T*>) Ref(const Ref<U>& other)
  noexcept : Ref(static_cast<T*>(other.get())) {}
  template <class U>
  requires(!std::is_same_v<U, T> && std::is_convertible_v<U*, T*>) Ref(Ref<U>&& other)
  noexcept : object_(static_cast<T*>(other.leak())) {}
  ~Ref() {
    if (object_) detail::releaseObject(object_);
  }
  Ref& operator=(const Ref& other) noexcept {
    Ref(other).swap(*this);
    return *this;
  }
  Ref& operator=(Ref&& other) noexcept {
    Ref(std::move(other)).swap(*this);
    return *this;
  }

  /// Takes over the ownership that the caller holds (a freshly made object).
  static Ref adopt(T* object) noexcept {
    Ref ref;
    ref.object_ = object;
    return ref;
  }
  /// Hands the ownership to the caller and becomes null.
  T* leak() noexcept { return detail::downcast<T>(std::exchange(object_, nullptr)); }

  T* get() const noexcept { return detail::downcast<T>(object_); }
  T* operator->() const noexcept { return get(); }
  T& operator*() const noexcept { return *get(); }
  explicit operator bool() const noexcept { return object_ != nullptr; }
  void swap(Ref& other) noexcept { std::swap(object_, other.object_); }

  friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.object_ == b.object_; }
  friend bool operator==(const Ref& a, std::nullptr_t) noexcept { return a.object_ == nullptr; }
  friend bool operator==(const Ref& a, const T* b) noexcept { return a.get() == b; }

 private:
  const Object* object_ = nullptr;
};

/// A back reference: reads null once its object is gone, and never keeps it alive.
///
/// Costs one word; the memory (not the life) of the object stays until the last weak reference lets
/// go, so an address is never taken for another object's. May be made from `this` in a constructor.
template <class T>
class WeakRef {
 public:
  WeakRef() noexcept = default;
  WeakRef(std::nullptr_t) noexcept {}
  WeakRef(T* object) noexcept : object_(object) {
    if (object_) detail::retainWeakly(object_);
  }
  WeakRef(const Ref<T>& object) noexcept : WeakRef(object.get()) {}
  WeakRef(const WeakRef& other) noexcept : object_(other.object_) {
    if (object_) detail::retainWeakly(object_);
  }
  WeakRef(WeakRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ~WeakRef() {
    if (object_) detail::releaseWeakly(object_);
  }
  WeakRef& operator=(const WeakRef& other) noexcept {
    WeakRef(other).swap(*this);
    return *this;
  }
  WeakRef& operator=(WeakRef&& other) noexcept {
    WeakRef(std::move(other)).swap(*this);
    return *this;
  }

  /// The object, or null when it was never set or is gone. Valid while somebody owns the object.
  T* get() const noexcept {
    return object_ && detail::isAlive(object_) ? detail::downcast<T>(object_) : nullptr;
  }
  /// An owning handle, or null when the object is gone.
  Ref<T> lock() const noexcept {
    if (!object_ || !detail::retainIfAlive(object_)) return nullptr;
    return Ref<T>::adopt(detail::downcast<T>(object_));
  }
  /// Whether it refers to an object, which may be gone.
  bool wasSet() const noexcept { return object_ != nullptr; }
  /// Whether it was set and its object has gone since.
  bool hasExpired() const noexcept { return object_ && !detail::isAlive(object_); }
  T* operator->() const noexcept { return get(); }
  explicit operator bool() const noexcept { return get() != nullptr; }
  void swap(WeakRef& other) noexcept { std::swap(object_, other.object_); }

 private:
  const Object* object_ = nullptr;
};

}  // namespace tarnkit

template <class T>
struct std::hash<tarnkit::Ref<T>> {
  std::size_t operator()(const tarnkit::Ref<T>& ref) const noexcept {
    return std::hash<const void*>()(ref.get());
  }
};
