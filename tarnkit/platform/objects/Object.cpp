#include "tarnkit/platform/objects/Object.h"

#include <fmt/format.h>

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tarnkit/platform/objects/BlockPool.h"
#include "tarnkit/platform/system/Log.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

const Class Object::kClass{"NSObject", nullptr};

namespace {

std::int64_t liveObjects = 0;

void countLiveObjects(std::int64_t change) noexcept {
  if (detail::hasOneThread()) {
    liveObjects += change;
  } else {
    __atomic_fetch_add(&liveObjects, change, __ATOMIC_RELAXED);
  }
}

// Owners nested deeper than this are taken down from a list instead of by recursion.
constexpr int kMaximumDestructionDepth = 32;

struct Destruction {
  int depth = 0;
  std::vector<const Object*> postponed;
};
thread_local Destruction destruction;

struct RegisteredClasses {
  std::unordered_map<std::string_view, const Class*> byName;  // null: reserved
  std::size_t longestName = 0;
};

RegisteredClasses& registeredClasses() {
  static RegisteredClasses classes;
  return classes;
}

}  // namespace

Object::~Object() = default;

void* Object::allocate(std::size_t size, std::size_t extra) {
  const auto whole = sizeof(Counts) + size + extra;
  auto* counts = ::new (BlockPool::allocate(whole))
      Counts{1, kWeakStep | (BlockPool::usesPage(whole) ? kInPage : 0U)};
  countLiveObjects(1);
  return counts + 1;
}

void Object::deallocate(void* object) noexcept {
  auto* counts = static_cast<Counts*>(object) - 1;
  if (counts->strong == 0) {
    assert(counts->weak < kWeakStep);
    if (counts->weak & kInPage) {
      BlockPool::releaseFromPage(counts);
    } else {
      std::free(counts);
    }
    return;
  }
  // The constructor has thrown. Weak references that it handed out still need the counts; when
  // there are none, this comes back here at once.
  counts->strong = 0;
  countLiveObjects(-1);
  detail::releaseWeakly(static_cast<Object*>(object));
}

void Object::destroy(const Object* object) noexcept {
  assert(!detail::isAlive(object));
  const_cast<Object*>(object)->~Object();
  countLiveObjects(-1);
  detail::releaseWeakly(object);
}

void Object::lastOwnerLeft() const noexcept {
  if (destruction.depth >= kMaximumDestructionDepth) {
    destruction.postponed.push_back(this);
    return;
  }
  ++destruction.depth;
  destroy(this);
  if (destruction.depth == 1) {
    while (!destruction.postponed.empty()) {
      const Object* next = destruction.postponed.back();
      destruction.postponed.pop_back();
      destroy(next);
    }
    destruction.postponed.shrink_to_fit();
  }
  --destruction.depth;
}

std::int64_t Object::liveObjectCount() noexcept {
  return __atomic_load_n(&liveObjects, __ATOMIC_RELAXED);
}

std::uint64_t Object::hash() const { return reinterpret_cast<std::uintptr_t>(this) >> 4; }

String Object::description() const {
  return String(fmt::format("<{}: {}>", isa().name(), static_cast<const void*>(this)));
}

void Object::encodeWithCoder(Encoder&) const {
  throw std::logic_error(fmt::format("{} cannot be archived", isa().name()));
}

void Object::initWithCoder(Decoder&) {}

void Object::awakeAfterDecoding(Decoder&) {}

void Object::abandonDecoding() {}

String Class::nameString() const { return String::interned(name()); }

Ref<Object> Class::make() const { return factory_ ? factory_(*this) : nullptr; }

bool ClassRegistry::add(const Class& record) {
  const std::string_view name = record.name();
  if (name.empty()) {
    Log::warning("ClassRegistry", "A class without a name is not entered");
    return false;
  }
  auto& classes = registeredClasses();
  const auto [entry, isNew] = classes.byName.try_emplace(name, &record);
  if (isNew) classes.longestName = std::max(classes.longestName, name.size());
  if (entry->second == &record) return true;
  Log::warning("ClassRegistry", fmt::format("The name \"{}\" is taken by another class", name));
  return false;
}

void ClassRegistry::reserve(std::string_view name) {
  registeredClasses().byName.try_emplace(name, nullptr);
}

bool ClassRegistry::isTaken(std::string_view name) {
  return registeredClasses().byName.contains(name);
}

// Many objects of a file may refer to one long text as the name of their class.
const Class* ClassRegistry::classNamed(std::string_view name) {
  const auto& classes = registeredClasses();
  if (name.size() > classes.longestName) return nullptr;
  const auto found = classes.byName.find(name);
  return found == classes.byName.end() ? nullptr : found->second;
}

}  // namespace tarnkit
