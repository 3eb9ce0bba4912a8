#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tarnkit/platform/objects/Object.h"
#include "tarnkit/platform/system/Log.h"
#include "tarnkit/platform/text/String.h"
#include "tests/ProcessorTime.h"

namespace tarnkit {
namespace {

class Link : public Object {
  TARNKIT_CLASS
 public:
  Link() : self_(this) { const Ref<Link> handleMadeWhileConstructing(this); }
  ~Link() override {
    if (ownerWasReadable) *ownerWasReadable = static_cast<bool>(owner);
  }
  Link* self() const { return self_.get(); }

  std::vector<Ref<Link>> owned;
  WeakRef<Link> owner;
  bool* ownerWasReadable = nullptr;

 private:
  WeakRef<Link> self_;
};
const Class Link::kClass{"Link", &Object::kClass, &detail::makeByDefault<Link>};

class SpecialLink final : public Link {
  TARNKIT_CLASS
};
const Class SpecialLink::kClass{"SpecialLink", &Link::kClass};

class Failing final : public Object {
  TARNKIT_CLASS
 public:
  explicit Failing(std::vector<WeakRef<Failing>>& seen) {
    seen.push_back(this);
    throw std::runtime_error("constructor");
  }
};
const Class Failing::kClass{"Failing", &Object::kClass};

TEST(Object, HandlesMadeInTheConstructorAreOrdinaryOnes) {
  const auto before = Object::liveObjectCount();
  auto link = make<Link>();
  EXPECT_EQ(link->self(), link.get());
  EXPECT_FALSE(link->isShared());
  const WeakRef<Link> weak(link);
  const Ref<Link> second = weak.lock();
  EXPECT_TRUE(link->isShared());
  link = nullptr;
  EXPECT_EQ(weak.get(), second.get());
  EXPECT_EQ(Object::liveObjectCount(), before + 1);
}

TEST(Object, WeakReferencesReadNullFromTheDestructorOn) {
  auto owner = make<Link>();
  auto child = make<Link>();
  bool readable = true;
  child->owner = owner.get();
  child->ownerWasReadable = &readable;
  const WeakRef<Link> weak(owner);
  owner->owned.push_back(std::move(child));
  owner = nullptr;
  EXPECT_FALSE(readable);
  EXPECT_EQ(weak.get(), nullptr);
  EXPECT_EQ(weak.lock(), nullptr);
  EXPECT_TRUE(weak.hasExpired());
  EXPECT_FALSE(WeakRef<Link>().hasExpired());
}

TEST(Object, AddressOfAnObjectHeldWeaklyIsNotGivenToAnother) {
  auto first = make<Link>();
  const Link* const address = first.get();
  const WeakRef<Link> weak(first);
  first = nullptr;
  std::vector<Ref<Link>> others;
  for (int i = 0; i < 1000; ++i) {
    others.push_back(make<Link>());
    ASSERT_NE(others.back().get(), address);
  }
  EXPECT_EQ(weak.get(), nullptr);
}

TEST(Object, ThrowingConstructorLeavesNothingAlive) {
  const auto before = Object::liveObjectCount();
  std::vector<WeakRef<Failing>> seen;
  EXPECT_THROW(make<Failing>(seen), std::runtime_error);
  EXPECT_TRUE(seen.at(0).hasExpired());
  EXPECT_EQ(Object::liveObjectCount(), before);
}

TEST(Object, DeepStructuresAreTakenDownWithoutDeepRecursion) {
  const auto before = Object::liveObjectCount();
  auto head = make<Link>();
  Link* last = head.get();
  for (int depth = 0; depth < 1000000; ++depth) {
    auto next = make<Link>();
    next->owner = last;
    Link* const inner = next.get();
    last->owned.push_back(std::move(next));
    if (depth % 3 == 0) last->owned.push_back(make<Link>());
    last = inner;
  }
  head = nullptr;
  EXPECT_EQ(Object::liveObjectCount(), before);
}

TEST(Object, OwnersOnSeveralThreadsCountTogether) {
  const auto before = Object::liveObjectCount();
  {
    const auto shared = make<Link>();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&shared] {
        for (int i = 0; i < 20000; ++i) {
          const Ref<Link> copy = shared;
          const WeakRef<Link> weak(copy);
          const Ref<Link> own = weak.lock();
          const auto fresh = make<Link>();
        }
      });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_FALSE(shared->isShared());
  }
  EXPECT_EQ(Object::liveObjectCount(), before);
}

TEST(Class, TellsExactClassKindAndFactory) {
  const Ref<Link> special = make<SpecialLink>();
  EXPECT_TRUE(special->isMemberOf(SpecialLink::kClass));
  EXPECT_FALSE(special->isMemberOf(Link::kClass));
  EXPECT_TRUE(special->isKindOf(Link::kClass));
  EXPECT_EQ(as<SpecialLink>(special), special);
  EXPECT_EQ(as<SpecialLink>(make<Link>()), nullptr);
  EXPECT_EQ(as<Link>(static_cast<Object*>(nullptr)), nullptr);
  EXPECT_EQ(SpecialLink::kClass.make(), nullptr);
  EXPECT_TRUE(Link::kClass.make()->isMemberOf(Link::kClass));
  EXPECT_TRUE(Link::kClass.nameString().isSameObject(Link::kClass.nameString()));
  EXPECT_EQ(special->description().view().substr(0, 14), "<SpecialLink: ");
}

TEST(ClassRegistry, WhoeverHoldsANameKeepsIt) {
  static const Class replacement{"Link", &Object::kClass};
  static const Class nameless{nullptr, &Object::kClass};
  static const Class late{"A reserved name", &Object::kClass};
  std::vector<std::string> log;
  const auto before = Log::setSink([&](std::string_view line) { log.emplace_back(line); });
  EXPECT_TRUE(ClassRegistry::add(Link::kClass));
  EXPECT_TRUE(ClassRegistry::add(Link::kClass));
  ClassRegistry::reserve(late.name());
  ClassRegistry::reserve("Link");
  EXPECT_TRUE(log.empty());
  EXPECT_FALSE(ClassRegistry::add(replacement));
  EXPECT_FALSE(ClassRegistry::add(late));
  EXPECT_FALSE(ClassRegistry::add(nameless));
  Log::setSink(before);
  EXPECT_EQ(log,
            (std::vector<std::string>{
                "WARNING: [ClassRegistry] The name \"Link\" is taken by another class",
                "WARNING: [ClassRegistry] The name \"A reserved name\" is taken by another class",
                "WARNING: [ClassRegistry] A class without a name is not entered"}));
  EXPECT_EQ(ClassRegistry::classNamed("Link"), &Link::kClass);
  EXPECT_EQ(ClassRegistry::classNamed("link"), nullptr);
  EXPECT_EQ(ClassRegistry::classNamed(late.name()), nullptr);
  EXPECT_EQ(ClassRegistry::classNamed(""), nullptr);
  EXPECT_TRUE(ClassRegistry::isTaken("Link"));
  EXPECT_TRUE(ClassRegistry::isTaken(late.name()));
  EXPECT_FALSE(ClassRegistry::isTaken("link"));
}

// Hashed at every look-up, the text would take seconds.
TEST(ClassRegistry, ALongTextThatManyObjectsNameAsTheirClassCostsNothing) {
  const std::string text(std::size_t{1} << 20, 'x');
  const auto start = test::ProcessorTime::now();
  for (int i = 0; i < 50000; ++i) ASSERT_EQ(ClassRegistry::classNamed(text), nullptr);
  EXPECT_LT(test::ProcessorTime::now() - start, std::chrono::seconds(1));
}

}  // namespace
}  // namespace tarnkit
