#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tarnkit/foundation/MD5.h"
#include "tarnkit/foundation/MapAdditions.h"
#include "tarnkit/foundation/StringTrimming.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/text/CharacterSet.h"

namespace tarnkit {
namespace {

TEST(MD5, GivesThePublishedDigests) {
  const std::string million(1000000, 'a');
  EXPECT_EQ(md5StringRepresentation({}), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(md5StringRepresentation(bytesOf("abc")), "900150983cd24fb0d6963f7d28e17f72");
  EXPECT_EQ(md5StringRepresentation(bytesOf(million)), "7707d6ae4e027c70eea2a935c2296f21");
}

TEST(StringTrimming, TakesOneEndAtATime) {
  struct Case {
    const char* text;
    CharacterSet set;
    const char* withoutLeading;
    const char* withoutTrailing;
  };
  const auto& space = CharacterSet::whitespaceAndNewline();
  const auto& digits = CharacterSet::decimalDigit();
  const Case cases[] = {
      {" \t\r\n a b \n ", space, "a b \n ", " \t\r\n a b"},
      {"\xC2\xA0\xE3\x80\x80x\xE2\x80\xA8", space, "x\xE2\x80\xA8", "\xC2\xA0\xE3\x80\x80x"},
      {" \n ", space, "", ""},
      {"", space, "", ""},
      {"12\xD9\xA3x4\xF0\x9D\x9F\x97", digits, "x4\xF0\x9D\x9F\x97", "12\xD9\xA3x"},
      {"-5.0-", digits.inverted(), "5.0-", "-5.0"},
      {"\xF0\x9F\x98\x80\xC3\xA4z\xC3\xA4",
       CharacterSet::charactersInString("\xC3\xA4\xF0\x9F\x98\x80"), "z\xC3\xA4",
       "\xF0\x9F\x98\x80\xC3\xA4z"},
      // Bytes that are no text are characters of their own and stay.
      {"\x80 \xE2\x80", space, "\x80 \xE2\x80", "\x80 \xE2\x80"},
  };
  for (const Case& c : cases) {
    const String text(c.text);
    EXPECT_EQ(stringByTrimmingLeadingCharactersInSet(text, c.set), c.withoutLeading);
    EXPECT_EQ(stringByTrimmingTrailingCharactersInSet(text, c.set), c.withoutTrailing);
  }
  EXPECT_TRUE(stringByTrimmingLeadingCharactersInSet(nullptr, space).isNil());
  const String clean("clean");
  EXPECT_TRUE(stringByTrimmingTrailingCharactersInSet(clean, space).isSameObject(clean));
}

TEST(MapAdditions, ValuesComeInTheOrderOfTheirKeys) {
  const OrderedMap<int> map{{"node_2", 2}, {"node_10", 10}, {"b", 4}, {"B", 3}, {"", 0}};
  EXPECT_EQ(allValuesSortedByKey(map), (std::vector<int>{0, 3, 4, 10, 2}));
  EXPECT_TRUE(allValuesSortedByKey(OrderedMap<int>()).empty());
}

TEST(MapAdditions, ReversingKeepsOrderAndTheLastOfTwo) {
  const auto a = Number::withInt(1);
  const auto b = Number::withInt(1);
  const auto c = Number::withInt(1);
  IdentityMap<Number, String> map;
  map.set(c, "x");
  map.set(a, "y");
  map.set(b, "x");
  const auto reversed = reverseDictionary(map);
  ASSERT_EQ(reversed.size(), 2U);
  EXPECT_EQ(reversed.begin()->key, "x");
  EXPECT_EQ(reversed.get("x"), b);
  EXPECT_EQ(reversed.get("y"), a);

  const OrderedMap<Ref<Number>> keys{{"p", a}, {"q", b}, {"r", a}};
  const auto back = reverseMapTable(keys);
  ASSERT_EQ(back.size(), 2U);
  EXPECT_EQ(back.begin()->key, a);
  EXPECT_EQ(back.get(a.get()), "r");
  EXPECT_EQ(back.get(b.get()), "q");
}

}  // namespace
}  // namespace tarnkit
