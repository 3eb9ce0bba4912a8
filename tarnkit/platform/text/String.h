#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "tarnkit/platform/objects/Object.h"

namespace tarnkit {

/// The shared, immutable characters behind a `String`: UTF-8, NUL-terminated, with a cached hash.
/// As an object it stands in collections, user-info maps and archives.
class StringObject final : public Object {
  TARNKIT_CLASS
 public:
  static Ref<StringObject> make(std::string_view utf8);

  std::string_view view() const noexcept { return {characters(), length_}; }
  const char* characters() const noexcept { return reinterpret_cast<const char*>(this + 1); }

  bool isEqual(const Object& other) const override;
  std::uint64_t hash() const override;
  String description() const override;
  CodingKind codingKind() const noexcept override { return CodingKind::string; }

 private:
  explicit StringObject(std::string_view utf8) noexcept;
  static void* operator new(std::size_t size, std::size_t characters) {
    return allocate(size, characters);
  }
  static void operator delete(void* object) noexcept { deallocate(object); }
  static void operator delete(void* object, std::size_t) noexcept { deallocate(object); }

  std::uint32_t length_;
  mutable std::uint32_t hash_ = 0;  // 0: not computed yet
};

/// A text: immutable, shared by copying, and nullable; nil is not "".
///
/// The bytes are UTF-8 (what comes from outside is checked where it comes in). Copying costs a
/// count; comparing costs a pointer comparison for shared strings, else their bytes. Names and keys
/// of the catalogue are interned, so every node shares them. Safe to share between threads.
class String {
 public:
  /// Nil.
  String() noexcept = default;
  String(std::nullptr_t) noexcept {}
  /// A copy of the bytes; of a null `const char*`, nil.
  String(const char* utf8) : String(utf8 ? String(std::string_view(utf8)) : String()) {}
  explicit String(std::string_view utf8) : object_(StringObject::make(utf8)) {}
  explicit String(const std::string& utf8) : String(std::string_view(utf8)) {}
  explicit String(Ref<StringObject> object) noexcept : object_(std::move(object)) {}

  /// The process's one string of these characters; it lives as long as the process. For names and
  /// keys that are known when the program is written, not for input.
  static String interned(std::string_view utf8);

  bool isNil() const noexcept { return !object_; }
  /// Neither nil nor "".
  explicit operator bool() const noexcept { return object_ && !object_->view().empty(); }
  /// The characters; of nil, none.
  std::string_view view() const noexcept { return object_ ? object_->view() : std::string_view(); }
  operator std::string_view() const noexcept { return view(); }
  std::string toStdString() const { return std::string(view()); }
  /// NUL-terminated; "" for nil.
  const char* characters() const noexcept { return object_ ? object_->characters() : ""; }
  std::size_t size() const noexcept { return view().size(); }

  /// Whether both are the same string object (or both nil), not merely equal.
  bool isSameObject(const String& other) const noexcept { return object_ == other.object_; }
  /// Depends on the characters only, and is the same in every run; 0 for nil.
  std::uint64_t hash() const { return object_ ? object_->hash() : 0; }

  const Ref<StringObject>& object() const noexcept { return object_; }
  /// The string that `object` is; nil when it is null or not a string.
  static String from(const Object* object);

  /// Nil equals nil only.
  friend bool operator==(const String& a, const String& b) noexcept {
    if (a.object_ == b.object_) return true;
    return a.object_ && b.object_ && a.object_->view() == b.object_->view();
  }
  friend bool operator==(const String& a, std::string_view b) noexcept {
    return a.object_ && a.object_->view() == b;
  }
  friend bool operator==(const String& a, const char* b) noexcept {
    return a == std::string_view(b);
  }
  /// By bytes, which is the order of the code points; nil comes before every text.
  friend std::strong_ordering operator<=>(const String& a, const String& b) noexcept {
    if (a.isNil() || b.isNil()) return !a.isNil() <=> !b.isNil();
    return a.view().compare(b.view()) <=> 0;
  }

 private:
  Ref<StringObject> object_;
};

}  // namespace tarnkit

template <>
struct std::hash<tarnkit::String> {
  std::size_t operator()(const tarnkit::String& string) const { return string.hash(); }
};
