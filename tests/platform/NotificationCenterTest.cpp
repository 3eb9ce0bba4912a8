#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/objects/Null.h"
#include "tarnkit/platform/system/NotificationCenter.h"

namespace tarnkit {
namespace {

constinit const Symbol kRenamed{"Renamed"};
constinit const Symbol kMoved{"Moved"};
constinit const Symbol kKey{"Key"};
constinit const Symbol kOtherKey{"OtherKey"};

class NotificationCenterTest : public testing::Test {
 protected:
  /// An observer that writes its mark into the trace.
  NotificationCenter::Observer mark(const char* text) {
    return [this, text](const Notification&) { trace += text; };
  }

  NotificationCenter center;
  Ref<Object> object = Number::withInt(1);
  Ref<Object> other = Number::withInt(2);
  std::string trace;
};

TEST_F(NotificationCenterTest, ReachesMatchingObserversInOrderOfRegistration) {
  center.addObserver(&kRenamed, other.get(), mark("a"));
  center.addObserver(nullptr, nullptr, mark("b"));
  center.addObserver(&kRenamed, object.get(), mark("c"));
  center.addObserver(nullptr, object.get(), mark("d"));
  center.addObserver(kRenamed, mark("e"));
  center.addObserver(&kMoved, object.get(), mark("f"));
  center.addObserver(&kRenamed, object.get(), mark("g"));
  center.post(kRenamed, *object, {});
  EXPECT_EQ(trace, "bcdeg");
  trace.clear();
  center.post(kMoved, *other, {});
  EXPECT_EQ(trace, "b");
}

TEST_F(NotificationCenterTest, ObserversComeAndGoDuringDelivery) {
  NotificationCenter::Token first = 0;
  NotificationCenter::Token last = 0;
  first = center.addObserver(kRenamed, mark("1"));
  NotificationCenter::Token second = 0;
  const std::string captured = "2";
  second = center.addObserver(kRenamed, [&, captured](const Notification&) {
    center.removeObserver(first);
    center.removeObserver(second);
    center.removeObserver(last);
    center.addObserver(kRenamed, mark("5"));
    trace += captured;  // still there, although this observer has just been removed
  });
  center.addObserver(kRenamed, mark("3"));
  last = center.addObserver(kRenamed, mark("4"));
  center.post(kRenamed, *object, {});
  EXPECT_EQ(trace, "123");
  trace.clear();
  center.removeObserver(second);
  center.post(kRenamed, *object, {});
  EXPECT_EQ(trace, "35");
}

TEST_F(NotificationCenterTest, DeliveriesNest) {
  center.addObserver(kRenamed, [this](const Notification& notification) {
    trace += "(";
    center.post(kMoved, notification.object, {});
    trace += ")";
  });
  center.addObserver(kMoved, mark("m"));
  center.addObserver(kRenamed, mark("r"));
  center.post(kRenamed, *object, {});
  EXPECT_EQ(trace, "(m)r");
}

TEST_F(NotificationCenterTest, AnObjectThatIsGoneIsNeverTakenForAnother) {
  const auto token = center.addObserver(&kRenamed, object.get(), mark("x"));
  const WeakRef<Object> weak(object);
  object = nullptr;
  EXPECT_EQ(weak.get(), nullptr);
  for (int i = 0; i < 100; ++i) center.post(kRenamed, *Number::withInt(i), {});
  EXPECT_EQ(trace, "");
  center.removeObserver(token);
  EXPECT_FALSE(center.observes(kRenamed));
}

TEST_F(NotificationCenterTest, KeepsThePostingObjectAliveWhileDelivering) {
  center.addObserver(kRenamed, [this](const Notification&) { object = nullptr; });
  center.addObserver(kRenamed, [this](const Notification& notification) {
    trace += as<Number>(&notification.object)->stringValue().view();
  });
  center.post(kRenamed, *object, {});
  EXPECT_EQ(trace, "1");
}

TEST_F(NotificationCenterTest, BuildsTheUserInfoOnlyForObservers) {
  int built = 0;
  const auto post = [&] {
    center.postLazily(kRenamed, *object, [&] {
      ++built;
      return UserInfo{{kKey, other}};
    });
  };
  const auto elsewhere = center.addObserver(kMoved, mark(""));
  post();
  EXPECT_EQ(built, 0);
  const auto everywhere = center.addObserver(nullptr, other.get(), mark("never"));
  post();
  EXPECT_EQ(built, 1);
  center.removeObserver(everywhere);
  center.removeObserver(everywhere);
  post();
  EXPECT_EQ(built, 1);
  center.removeObserver(elsewhere);
  EXPECT_FALSE(center.observes(kMoved));
  EXPECT_EQ(trace, "");
}

TEST_F(NotificationCenterTest, UserInfoKeepsOrderAndTurnsNilIntoTheNullObject) {
  const UserInfo info{{kOtherKey, other}, {kKey, nullptr}};
  ASSERT_EQ(info.size(), 2U);
  EXPECT_EQ(*info.begin()->key, kOtherKey);
  EXPECT_EQ(info[kKey], Null::null().get());
  EXPECT_EQ(info[kOtherKey], other.get());
  EXPECT_FALSE(info.contains(kMoved));
  const UserInfo::Item item{kKey, nullptr};
  EXPECT_THROW((UserInfo{item, item, item, item, item, item, item, item, item}), std::logic_error);
}

}  // namespace
TEST_F(NotificationCenterTest, AnObservationEndsWithItsScope) {
  {
    const NotificationCenter::Observation first(center, &kRenamed, nullptr, mark("1"));
    const NotificationCenter::Observation second(center, &kRenamed, object.get(), mark("2"));
    center.post(kRenamed, *object, {});
  }
  EXPECT_FALSE(center.observes(kRenamed));
  center.post(kRenamed, *object, {});
  EXPECT_EQ(trace, "12");
  const NotificationCenter::Observation elsewhere(kMoved, mark(""));
  EXPECT_TRUE(NotificationCenter::defaultCenter().observes(kMoved));
}

}  // namespace tarnkit
