#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/text/String.h"
#include "tarnkit/platform/text/Symbol.h"

namespace tarnkit {
namespace {

constinit const Symbol kFirst{"StringTest.symbol"};
constinit const Symbol kSameText{"StringTest.symbol"};
constinit const Symbol kOther{"StringTest.other"};

TEST(String, NilIsNoText) {
  const String nil;
  const String empty("");
  EXPECT_TRUE(nil.isNil());
  EXPECT_FALSE(empty.isNil());
  EXPECT_FALSE(nil == empty);
  EXPECT_FALSE(nil == "");
  EXPECT_TRUE(nil == String(static_cast<const char*>(nullptr)));
  EXPECT_FALSE(static_cast<bool>(empty));
  EXPECT_LT(nil, empty);
  EXPECT_EQ(nil.hash(), 0U);
  EXPECT_STREQ(nil.characters(), "");
}

TEST(String, EqualityOrderAndIdentityAreThreeThings) {
  const String a("abc");
  const String b(std::string("abc"));
  const String copy = a;
  EXPECT_EQ(a, b);
  EXPECT_EQ(a.hash(), b.hash());
  EXPECT_FALSE(a.isSameObject(b));
  EXPECT_TRUE(a.isSameObject(copy));
  EXPECT_TRUE(String::interned("abc").isSameObject(String::interned(a.view())));
  EXPECT_LT(a, String("abd"));
  EXPECT_LT(String("ab"), a);
  // By code points, where sixteen-bit units would say the opposite.
  EXPECT_LT(String("\xEF\xBF\xBD"), String("\xF0\x9F\x98\x80"));
  EXPECT_NE(String(std::string_view("a\0b", 3)), String(std::string_view("a\0c", 3)));
}

// Hashes of strings show in the hashes of primitives: they may not change between runs or releases.
TEST(String, HashIsTheSameForEver) {
  EXPECT_EQ(String("").hash(), 0x4FD0BFC1U);
  EXPECT_EQ(String("Tarn.valueInput").hash(), 0xC944889BU);
}

TEST(String, IsAnObjectAmongObjects) {
  const String text("text");
  const Object* const object = text.object().get();
  EXPECT_TRUE(String::from(object).isSameObject(text));
  EXPECT_TRUE(object->isEqual(*String("text").object()));
  EXPECT_FALSE(object->isEqual(*Number::withInt(1)));
  EXPECT_TRUE(String::from(Number::withInt(1).get()).isNil());
  EXPECT_TRUE(String::from(nullptr).isNil());
}

TEST(Symbol, SymbolsOfOneTextAreOneNumber) {
  EXPECT_EQ(kFirst.number(), kSameText.number());
  EXPECT_EQ(kFirst, kSameText);
  EXPECT_FALSE(kFirst == kOther);
  EXPECT_LT(kOther.number(), Symbol::count());
  EXPECT_TRUE(Symbol::stringOf(kOther.number()).isSameObject(kOther.string()));
  EXPECT_EQ(kOther.string(), "StringTest.other");
}

TEST(Symbol, FirstUseMayHappenOnSeveralThreads) {
  static constinit const Symbol fresh{"StringTest.fresh"};
  std::vector<std::uint32_t> numbers(8);
  std::vector<std::thread> threads;
  for (auto& number : numbers) threads.emplace_back([&number] { number = fresh.number(); });
  for (auto& thread : threads) thread.join();
  for (const auto number : numbers) EXPECT_EQ(number, fresh.number());
}

}  // namespace
}  // namespace tarnkit
