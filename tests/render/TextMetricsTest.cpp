#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>

#include "tarnkit/render/Markup.h"
#include "tarnkit/render/TextMetrics.h"

namespace tarnkit::detail {

namespace {

constexpr Font kFont{10, false};

TEST(TextMetrics, WhatFitsIsKeptWholeAndTheRestIsCutBetweenCharactersThatPeopleSee) {
  const std::string family = "👩‍👩‍👧‍👦";
  const std::string accented = "e\u0301";  // one letter of two code points
  const std::string pile = "a" + [] {
    std::string marks;
    for (int i = 0; i < 5000; ++i) marks += "\u0301";
    return marks;
  }();
  struct Case {
    std::string text;
    double room;
    std::string kept;
    bool shortened;
  };
  const Case cases[] = {
      {"", 5, "", false},
      {"Clamp", 60, "Clamp", false},
      {"Clamp and more", 40, "Clam", true},
      {"word word word", 45, "word", true},  // no blank before the ellipsis
      {accented + accented + accented + "xxxxxxxxxxxx", 29, accented + accented, true},
      {family + family + family, 75, family, true},
      {"画像の切り替え", 40, "画像", true},
      {pile, 100, "", true},
      {"x", 1, "", true},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.text.substr(0, 40));
    const FittedText fitted = fitText(each.text, kFont, each.room);
    EXPECT_EQ(fitted.kept, each.kept);
    EXPECT_EQ(fitted.shortened, each.shortened);
    EXPECT_LE(fitted.width, std::max(each.room, 10.5));
    const std::string shown = std::string(fitted.kept) + (fitted.shortened ? "…" : "");
    EXPECT_NEAR(fitted.width, textWidth(shown, kFont), 4);
  }
}

TEST(TextMetrics, WidthsAreThoseOfTheFont) {
  struct Case {
    const char* text;
    double regular;
    double bold;
  };
  // The ends of the tabled scripts; marks take no width, other scripts the widest of theirs.
  const Case cases[] = {{" ", 32, 35},        {"~", 84, 84},       {"\u017F", 36, 44},
                        {"\u0370", 66, 70},   {"\u045F", 66, 70},  {"\u05D0", 67, 73},
                        {"\u0180", 145, 145}, {"e\u0301", 62, 68}, {"\u753B", 105, 105},
                        {"…", 105, 105}};
  for (const auto& [text, regular, bold] : cases) {
    EXPECT_DOUBLE_EQ(textWidth(text, {100, false}), regular) << text;
    EXPECT_DOUBLE_EQ(textWidth(text, {100, true}), bold) << text;
  }
}

TEST(TextMetrics, DirectionIsThatOfTheFirstLetterThatHasOne) {
  EXPECT_TRUE(isRightToLeft("مفتاح"));
  EXPECT_TRUE(isRightToLeft("12 (שלום) abc"));
  EXPECT_FALSE(isRightToLeft("abc שלום"));
  EXPECT_FALSE(isRightToLeft("画像"));
  EXPECT_FALSE(isRightToLeft("12 …"));
}

TEST(Markup, WhateverATextHoldsGivesXML) {
  std::string xml;
  appendEscaped(xml, std::string_view("a<b>&\"\n\x01\xff\xed\xa0\x80\xef\xbf\xbe é", 18));
  EXPECT_EQ(xml, "a&lt;b&gt;&amp;&quot; ������ é");
  std::string id;
  appendIdPart(id, "node_1");
  appendIdPart(id, "/a-b é");
  appendIdPart(id, "azAZ09.`{@[/:");
  EXPECT_EQ(id, "node_1-2fa-2db-20-c3-a9azAZ09.-60-7b-40-5b-2f-3a");
}

TEST(Markup, NumbersAreShortAndNeverHuge) {
  const std::pair<double, const char*> cases[] = {
      {0, "0"},
      {-0.001, "0"},
      {1.5, "1.5"},
      {-3.14159, "-3.14"},
      {100, "100"},
      {0.05, "0.05"},
      {std::numeric_limits<double>::quiet_NaN(), "0"},
      {1e300, "10000000"},
      {-std::numeric_limits<double>::infinity(), "-10000000"}};
  for (const auto& [number, text] : cases) {
    std::string out;
    appendNumber(out, number);
    EXPECT_EQ(out, text);
  }
}

}  // namespace

}  // namespace tarnkit::detail
