#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tarnkit/platform/collections/Array.h"
#include "tarnkit/platform/collections/Dictionary.h"
#include "tarnkit/platform/collections/IdentityMap.h"
#include "tarnkit/platform/collections/OrderedMap.h"
#include "tarnkit/platform/collections/OrderedSet.h"
#include "tarnkit/platform/collections/RefRun.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/system/Log.h"
#include "tests/ProcessorTime.h"

namespace tarnkit {
namespace {

String keyOf(std::uint32_t number) { return String("node_" + std::to_string(number)); }

/// What the map must look like: entries in the order of insertion.
class Model {
 public:
  using Entries = std::vector<std::pair<String, int>>;
  void set(const String& key, int value) {
    const auto at = find(key);
    if (at == entries_.end()) {
      entries_.emplace_back(key, value);
    } else {
      at->second = value;
    }
  }
  int take(const String& key) {
    const auto at = find(key);
    if (at == entries_.end()) return 0;
    const int value = at->second;
    entries_.erase(at);
    return value;
  }
  int get(const String& key) {
    const auto at = find(key);
    return at == entries_.end() ? 0 : at->second;
  }
  Entries& entries() { return entries_; }

 private:
  Entries::iterator find(const String& key) {
    return std::find_if(entries_.begin(), entries_.end(),
                        [&](const auto& entry) { return entry.first == key; });
  }
  Entries entries_;
};

template <class Map>
void expectSame(const Map& map, const Model::Entries& expected) {
  ASSERT_EQ(map.size(), expected.size());
  auto at = expected.begin();
  for (const auto& entry : map) {
    ASSERT_EQ(entry.key, at->first);
    ASSERT_EQ(entry.value, at->second);
    ++at;
  }
  ASSERT_EQ(at, expected.end());
}

// Three ways of removing: anywhere, the oldest first, the newest first.
class OrderedMapAgainstModel : public testing::TestWithParam<int> {};

TEST_P(OrderedMapAgainstModel, BehavesLikeAListOfEntries) {
  std::mt19937 source(static_cast<std::uint32_t>(GetParam()));
  const auto random = [&] { return static_cast<std::uint32_t>(source()); };
  OrderedMap<int> map;
  Model model;
  std::uint32_t next = 0;
  for (int round = 0; round < 40; ++round) {
    const auto operations = random() % 200;
    const std::uint32_t additions = random() % 100;  // some rounds grow, some shrink
    for (std::uint32_t i = 0; i < operations; ++i) {
      const auto key = keyOf(random() % 300);
      const int value = static_cast<int>(++next);
      if (random() % 100 < additions) {
        map.set(key, value);
        model.set(key, value);
      } else if (GetParam() == 0 || model.entries().empty()) {
        ASSERT_EQ(map.take(key), model.take(key));
      } else {
        const auto& entry = GetParam() == 1 ? model.entries().front() : model.entries().back();
        const String victim = entry.first;
        ASSERT_EQ(map.take(victim), model.take(victim));
      }
      ASSERT_EQ(map.get(key), model.get(key));
    }
    ASSERT_NO_FATAL_FAILURE(expectSame(map, model.entries()));
    if (round % 7 == 0) {
      const OrderedMap<int> copy = map;
      ASSERT_NO_FATAL_FAILURE(expectSame(copy, model.entries()));
      map.reserve(map.size() + 50);
    }
    if (round % 11 == 10) {
      OrderedMap<int> moved = std::move(map);
      map = std::move(moved);
    }
  }
  map.clear();
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(map.begin(), map.end());
}
INSTANTIATE_TEST_SUITE_P(Removing, OrderedMapAgainstModel, testing::Values(0, 1, 2));

TEST(OrderedMap, NilAndAbsentKeysReadAsNothing) {
  OrderedMap<int> map;
  EXPECT_EQ(map.find(String()), nullptr);
  EXPECT_EQ(map.take("absent"), 0);
  for (std::uint32_t i = 0; i < 20; ++i) {
    map.set(keyOf(i), 1);
    ASSERT_FALSE(map.contains(String()));
    ASSERT_FALSE(map.contains("absent"));
  }
}

TEST(OrderedMap, AQueueOfManyEntriesDoesNotSlowDown) {
  constexpr std::uint32_t kCount = 400000;
  OrderedMap<int> map;
  const auto start = test::ProcessorTime::now();
  for (std::uint32_t i = 0; i < kCount; ++i) map.set(keyOf(i), 1);
  for (std::uint32_t i = 0; i < kCount; ++i) {
    const String oldest = map.begin()->key;
    ASSERT_EQ(oldest, keyOf(i));
    map.take(oldest);
  }
  // Walking over the gaps at every step would take minutes.
  EXPECT_LT(test::ProcessorTime::now() - start, std::chrono::seconds(15));
}

// From some tens of thousands of entries on, what finds them is laid out in another way.
TEST(OrderedMap, FindsEveryEntryWhileItGrowsAndShrinks) {
  constexpr std::uint32_t kMany = 50000;
  OrderedMap<std::uint32_t> map;
  for (std::uint32_t i = 0; i < kMany; ++i) {
    map.set(keyOf(i), i);
    if (i % 1000 != 0 && i % 32768 > 1) continue;
    for (std::uint32_t known = 0; known <= i; known += 97) {
      ASSERT_NE(map.find(keyOf(known)), nullptr) << known << " of " << i;
      ASSERT_EQ(*map.find(keyOf(known)), known);
    }
    ASSERT_FALSE(map.contains(keyOf(i + 1)));
  }
  for (std::uint32_t i = 0; i < kMany; ++i) {
    if (i % 10 == 3) continue;
    ASSERT_EQ(map.take(keyOf(i)), i);
  }
  ASSERT_EQ(map.size(), kMany / 10);
  for (std::uint32_t i = 0; i < kMany; ++i) ASSERT_EQ(map.contains(keyOf(i)), i % 10 == 3) << i;
}

TEST(RefRun, HoldsWhatAListHolds) {
  std::mt19937 random(5);
  detail::RefRun<StringObject> run;
  std::vector<Ref<StringObject>> list;
  for (int step = 0; step < 5000; ++step) {
    // Mostly none or one, now and then many.
    if (random() % 100 < (step / 500 % 2 == 0 ? 45U : 60U)) {
      list.push_back(StringObject::make(std::to_string(step)));
      run.append(list.back());
    } else if (!list.empty()) {
      const auto at = random() % list.size();
      list.erase(list.begin() + static_cast<std::ptrdiff_t>(at));
      run.remove(at);
    } else {
      run.clear();
    }
    ASSERT_TRUE(std::equal(list.begin(), list.end(), run.span().begin(), run.span().end()));
    ASSERT_TRUE(list.empty() || list.back()->isShared()) << "the run owns what it holds";
  }
  const Ref<StringObject> last = StringObject::make("last");
  run.append(last);
  run.clear();
  EXPECT_FALSE(last->isShared());
}

TEST(OrderedSet, KeepsOrderThroughAddingRemovingAndMoving) {
  std::mt19937 random(5);
  const auto set = make<OrderedSet>();
  std::vector<std::int32_t> model;
  for (int i = 0; i < 4000; ++i) {
    const auto value = static_cast<std::int32_t>(random() % 120);
    const auto number = Number::withInt(value);
    const auto at = std::find(model.begin(), model.end(), value);
    const bool present = at != model.end();
    ASSERT_EQ(set->indexOf(number.get()), present ? at - model.begin() : kNotFoundIndex);
    switch (random() % 4) {
      case 0:
      case 1:
        ASSERT_EQ(set->add(number), !present);
        if (!present) model.push_back(value);
        break;
      case 2:
        ASSERT_EQ(set->remove(number.get()), present);
        if (present) model.erase(at);
        break;
      default:
        if (model.empty()) break;
        const auto from = random() % model.size();
        const auto to = random() % model.size();
        set->move(static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(to));
        const auto moved = model[from];
        model.erase(model.begin() + static_cast<std::ptrdiff_t>(from));
        model.insert(model.begin() + static_cast<std::ptrdiff_t>(to), moved);
    }
    ASSERT_EQ(set->count(), model.size());
  }
  std::vector<std::int32_t> members;
  for (const auto& member : *set) members.push_back(as<Number>(member.get())->intValue());
  EXPECT_EQ(members, model);
}

TEST(OrderedSet, MembershipIsByEqualityAndNullIsNoMember) {
  const auto set = make<OrderedSet>();
  EXPECT_TRUE(set->add(Ref<Object>(String("a").object())));
  EXPECT_FALSE(set->add(Ref<Object>(String("a").object())));
  EXPECT_FALSE(set->add(nullptr));
  EXPECT_FALSE(set->contains(nullptr));
  EXPECT_FALSE(set->remove(nullptr));
  const auto copy = make<OrderedSet>(*set);
  EXPECT_TRUE(set->isEqual(*copy));
  copy->add(Ref<Object>(String("b").object()));
  EXPECT_FALSE(set->isEqual(*copy));
  EXPECT_EQ(set->count(), 1U);
}

TEST(IdentityMap, TellsEqualObjectsApartAndKeepsThemAlive) {
  IdentityMap<Object, String> map;
  auto one = Number::withInt(1);
  const auto alsoOne = Number::withInt(1);
  const WeakRef<Number> weak(one);
  map.set(one, "first");
  map.set(alsoOne, "second");
  map.set(one, "third");
  one = nullptr;
  ASSERT_NE(weak.get(), nullptr);
  EXPECT_EQ(map.size(), 2U);
  EXPECT_EQ(map.begin()->value, "third");
  EXPECT_EQ(map.take(weak.get()), "third");
  EXPECT_EQ(weak.get(), nullptr);
  EXPECT_EQ(map.get(alsoOne.get()), "second");
  EXPECT_FALSE(map.contains(nullptr));
  EXPECT_FALSE(map.set(nullptr, "none"));
  EXPECT_EQ(map.size(), 1U);
  EXPECT_EQ(map.take(alsoOne.get()), "second");
  EXPECT_TRUE(map.begin() == map.end());
}

// What has no key is not kept, and so not counted: later removals find every entry in its place.
TEST(OrderedCollections, RefuseWhatIsNothingOrHasNoKey) {
  OrderedMap<int> map;
  EXPECT_FALSE(map.set(String(), 1));
  EXPECT_TRUE(map.empty());
  EXPECT_TRUE(map.set("a", 2));
  EXPECT_FALSE(map.set(String(), 3));
  EXPECT_EQ(map.size(), 1U);
  EXPECT_EQ(map.take("a"), 2);
  EXPECT_TRUE(map.empty());
  EXPECT_TRUE(map.begin() == map.end());

  std::vector<std::string> log;
  const auto sink = Log::setSink([&](std::string_view line) { log.emplace_back(line); });
  const auto dictionary = make<Dictionary>();
  dictionary->setObject(make<Array>(), String());
  dictionary->setObject(nullptr, "a");
  Log::setSink(sink);
  EXPECT_EQ(dictionary->count(), 0U);
  EXPECT_EQ(log, (std::vector<std::string>{
                     "WARNING: [NSDictionary] Refusing an object under a key that is nil",
                     "WARNING: [NSDictionary] Refusing an object that is nil"}));
  const Ref<Object> one = Number::withInt(1);
  const auto array = make<Array>(std::vector<Ref<Object>>{nullptr, one, nullptr});
  array->add(nullptr);
  EXPECT_EQ(array->count(), 1U);
  const auto set = make<Set>(std::vector<Ref<Object>>{nullptr, one});
  set->add(nullptr);
  EXPECT_EQ(set->count(), 1U);
}

TEST(Log, AWarningIsOneLineWithoutControlCharacters) {
  std::vector<std::string> lines;
  const auto sink = Log::setSink([&](std::string_view line) { lines.emplace_back(line); });
  Log::warning("Thing", "a\nb\x1B[31m \xC2\x9B é\x7F\u202E\xFF");
  Log::setSink(sink);
  EXPECT_EQ(lines, std::vector<std::string>{"WARNING: [Thing] a b [31m   é  \xFF"});
}

// What was taken is put back in the opposite order, as an undo does, among additions and takings
// that are undone themselves.
TEST(OrderedCollections, PutBackWhatWasTaken) {
  struct Step {
    bool taken;
    String key;
    int value;
    OrderedMap<int>::Place place;
  };
  for (std::uint32_t seed = 0; seed < 200; ++seed) {
    std::mt19937 source(seed);
    const auto random = [&](std::uint32_t below) {
      return static_cast<std::uint32_t>(source()) % below;
    };
    OrderedMap<int> map;
    Model model;
    std::uint32_t next = 0;
    const std::uint32_t initial = random(seed % 2 == 0 ? 12 : 400);
    for (; next < initial; ++next) {
      map.set(keyOf(next), static_cast<int>(next));
      model.set(keyOf(next), static_cast<int>(next));
    }
    const std::uint32_t way = random(4);
    for (int round = 0; round < 6; ++round) {
      const auto before = model.entries();
      std::vector<Step> steps;
      for (auto operations = random(300); operations > 0; --operations) {
        if (random(3) == 0 || map.empty()) {
          steps.push_back({false, keyOf(next), 1, {}});
          map.set(keyOf(next), 1);
          model.set(keyOf(next++), 1);
          continue;
        }
        const auto size = map.size();
        const auto at = way == 0 ? 0 : way == 1 ? size - 1 : way == 2 ? random(size) : size / 2;
        const String key = model.entries()[at].first;
        const auto place = map.place(key);
        steps.push_back({true, key, map.take(key), place});
        model.take(key);
      }
      expectSame(map, model.entries());
      const auto keep = random(2) == 0 ? 0 : steps.size() / 2;
      while (steps.size() > keep) {
        const Step step = steps.back();
        steps.pop_back();
        if (step.taken) {
          ASSERT_TRUE(map.insert(step.key, step.value, step.place));
          EXPECT_FALSE(map.insert(step.key, 7, step.place));
        } else {
          ASSERT_EQ(map.take(step.key), 1);
        }
        ASSERT_TRUE(step.taken == map.contains(step.key));
      }
      if (keep == 0) {
        model.entries() = before;
        expectSame(map, before);
      } else {
        model.entries().clear();
        for (const auto& entry : map) model.entries().emplace_back(entry.key, entry.value);
      }
      for (const auto& [key, value] : model.entries()) ASSERT_EQ(map.get(key), value);
    }
  }
}

TEST(OrderedCollections, PuttingBackCostsWhatTakingCost) {
  constexpr std::uint32_t kCount = 200'000;
  for (const auto order : {0, 1, 2}) {
    OrderedMap<int> map;
    std::vector<String> keys;
    for (std::uint32_t i = 0; i < kCount; ++i) keys.push_back(keyOf(i));
    for (const auto& key : keys) map.set(key, 0);
    if (order == 1) std::reverse(keys.begin(), keys.end());
    if (order == 2) std::shuffle(keys.begin(), keys.end(), std::mt19937(1));
    const auto begin = test::ProcessorTime::now();
    std::vector<OrderedMap<int>::Place> places;
    for (const auto& key : keys) {
      places.push_back(map.place(key));
      map.take(key);
    }
    const auto middle = test::ProcessorTime::now();
    for (auto at = keys.size(); at-- > 0;) map.insert(keys[at], 0, places[at]);
    const auto end = test::ProcessorTime::now();
    std::uint32_t number = 0;
    for (const auto& entry : map) ASSERT_EQ(entry.key, keyOf(number++));
    // A table that moved its entries for each that is put back would take thousands of times as
    // long.
    EXPECT_LT((end - middle).count(), 60 * (middle - begin).count()) << order;
  }
}

}  // namespace
}  // namespace tarnkit
