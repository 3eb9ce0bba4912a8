#include "tarnkit/platform/text/String.h"

#include <cstring>
#include <limits>
#include <mutex>
#include <new>
#include <stdexcept>
#include <unordered_map>

namespace tarnkit {

const Class StringObject::kClass{"NSString", &Object::kClass};

StringObject::StringObject(std::string_view utf8) noexcept
    : length_(static_cast<std::uint32_t>(utf8.size())) {
  auto* target = reinterpret_cast<char*>(this + 1);
  if (!utf8.empty()) std::memcpy(target, utf8.data(), utf8.size());
  target[utf8.size()] = '\0';
}

Ref<StringObject> StringObject::make(std::string_view utf8) {
  if (utf8.size() > std::numeric_limits<std::uint32_t>::max() / 2) {
    throw std::length_error("a string of more than two gigabytes");
  }
  return Ref<StringObject>::adopt(new (utf8.size() + 1) StringObject(utf8));
}

bool StringObject::isEqual(const Object& other) const {
  const auto* string = as<StringObject>(&other);
  return string && string->view() == view();
}

// FNV-1a, folded to 32 bits: the value shows in primitives' hashes, so it must not vary by run.
std::uint64_t StringObject::hash() const {
  auto cached = __atomic_load_n(&hash_, __ATOMIC_RELAXED);
  if (cached == 0) {
    std::uint64_t value = 14695981039346656037ULL;
    for (const char c : view()) {
      value = (value ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
    }
    cached = static_cast<std::uint32_t>(value ^ (value >> 32));
    if (cached == 0) cached = 1;
    __atomic_store_n(&hash_, cached, __ATOMIC_RELAXED);
  }
  return cached;
}

String StringObject::description() const {
  return String(Ref<StringObject>(const_cast<StringObject*>(this)));
}

String String::interned(std::string_view utf8) {
  static std::mutex mutex;
  static std::unordered_map<std::string_view, String> strings;
  const std::lock_guard lock(mutex);
  const auto found = strings.find(utf8);
  if (found != strings.end()) return found->second;
  String string(utf8);
  strings.emplace(string.view(), string);
  return string;
}

String String::from(const Object* object) {
  return String(Ref<StringObject>(as<StringObject>(const_cast<Object*>(object))));
}

}  // namespace tarnkit
