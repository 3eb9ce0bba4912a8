#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <locale>
#include <random>
#include <string>

#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/numbers/NumberText.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// A process whose locale writes numbers unlike the library: "1.234,5".
class ForeignLocale {
 public:
  ForeignLocale() : before_(std::locale::global(std::locale(std::locale(), new Punctuation))) {
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "ru_RU.UTF-8"}) {
      if (std::setlocale(LC_NUMERIC, name)) break;
    }
  }
  ~ForeignLocale() {
    std::locale::global(before_);
    std::setlocale(LC_ALL, "C");
  }

 private:
  struct Punctuation final : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  std::locale before_;
};

TEST(Number, ReadsAsEveryKind) {
  struct Case {
    Ref<Number> number;
    bool asBool;
    std::int32_t asInt;
    std::int64_t asInt64;
    double asDouble;
    const char* text;
  };
  constexpr auto kMaximum = std::numeric_limits<std::int32_t>::max();
  constexpr auto kMaximum64 = std::numeric_limits<std::int64_t>::max();
  const Case cases[] = {
      {Number::withBool(true), true, 1, 1, 1, "1"},
      {Number::withInt(-7), true, -7, -7, -7, "-7"},
      {Number::withInt64(kMaximum64), true, -1, kMaximum64, 0x1p63, "9223372036854775807"},
      {Number::withFloat(0.1F), true, 0, 0, 0.1F, "0.1"},
      {Number::withDouble(-2.75), true, -2, -2, -2.75, "-2.75"},
      {Number::withDouble(1e300), true, kMaximum, kMaximum64, 1e300, "1e+300"},
      {Number::withFloat(-kInfinity), true, -kMaximum - 1, -kMaximum64 - 1, -kInfinity, "-inf"},
      {Number::withDouble(0), false, 0, 0, 0, "0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(c.number->boolValue(), c.asBool);
    EXPECT_EQ(c.number->intValue(), c.asInt);
    EXPECT_EQ(c.number->int64Value(), c.asInt64);
    EXPECT_EQ(c.number->doubleValue(), c.asDouble);
    EXPECT_EQ(c.number->stringValue(), c.text);
  }
  EXPECT_EQ(Number::withFloat(NAN)->int64Value(), 0);
}

TEST(Number, EqualValuesOfDifferentKindsAreEqualAndHashAlike) {
  const auto one = Number::withInt(1);
  for (const auto& other : {Number::withBool(true), Number::withInt64(1), Number::withFloat(1),
                            Number::withDouble(1)}) {
    EXPECT_TRUE(one->isEqual(*other));
    EXPECT_EQ(one->hash(), other->hash());
    EXPECT_NE(one->kind(), other->kind());
  }
  EXPECT_TRUE(Number::withFloat(-0.0F)->isEqual(*Number::withInt(0)));
  EXPECT_EQ(Number::withFloat(-0.0F)->hash(), Number::withInt(0)->hash());
  EXPECT_FALSE(Number::withFloat(0.1F)->isEqual(*Number::withDouble(0.1)));
  EXPECT_FALSE(Number::withDouble(NAN)->isEqual(*Number::withDouble(NAN)));
  EXPECT_FALSE(one->isEqual(*String("1").object()));
}

TEST(NumberText, ShortestTextIsLaidOutAsPercentG) {
  struct Case {
    float value;
    const char* text;
  };
  const Case cases[] = {
      {0, "0"},
      {-0.0F, "-0"},
      {0.1F, "0.1"},
      {300, "300"},
      {123456, "123456"},
      {1e6F, "1e+06"},
      {1234567, "1234567"},
      {16777216, "16777216"},
      {1e20F, "1e+20"},
      {0.0001F, "0.0001"},
      {0.00001F, "1e-05"},
      {3.1415927F, "3.1415927"},
      {NAN, "nan"},
      {1.4012985e-45F, "1e-45"},
      {kInfinity, "inf"},
      {-kInfinity, "-inf"},
  };
  for (const Case& c : cases) EXPECT_EQ(shortestText(c.value), c.text);
  EXPECT_EQ(shortestText(0.1), "0.1");
  EXPECT_EQ(shortestText(0.1 + 0.2), "0.30000000000000004");
}

TEST(NumberText, TextAgreesWithTheCLibraryAndReadsBack) {
  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    if (!std::isfinite(value)) continue;
    const std::string text = shortestText(value);
    ASSERT_EQ(std::strtof(text.c_str(), nullptr), value) << text;
    ASSERT_EQ(readFloat(text), value) << text;
    char expected[64];
    std::snprintf(expected, sizeof expected, "%g", static_cast<double>(value));
    ASSERT_EQ(percentG(static_cast<double>(value)), expected);
  }
}

TEST(NumberText, DoesNotDependOnTheLocale) {
  const ForeignLocale locale;
  EXPECT_EQ(shortestText(1234.5F), "1234.5");
  EXPECT_EQ(shortestText(1234567.25), "1234567.25");
  EXPECT_EQ(percentG(1234.5), "1234.5");
  EXPECT_EQ(readFloat("1234.5"), 1234.5F);
  EXPECT_EQ(readFloat("1,5"), 1.0F);
  EXPECT_EQ(Number::withInt(1234567)->stringValue(), "1234567");
  EXPECT_EQ(Number::withDouble(0.5)->description(), "0.5");
}

TEST(NumberText, ReadsTheLeadingFloat) {
  struct Case {
    std::string text;
    float value;
  };
  const std::string zeros(400, '0');
  const Case cases[] = {
      {"", 0},
      {"12", 12},
      {"\n\t +1.5e2x", 150},
      {"-.5", -0.5F},
      {"1.e1", 10},
      {"1e", 1},
      {"1e+", 1},
      {".", 0},
      {"-", 0},
      {"+-1", 0},
      {"inf", 0},
      {"nan", 0},
      {"0x10", 0},
      {"\xC2\xA0"
       "1",
       0},
      {"1e99", kInfinity},
      {"-1e99999", -kInfinity},
      {"1e-99", 0},
      {"0e99999", 0},
      {"1e-99999", 0},
      {"1" + zeros, kInfinity},
      {"1" + zeros + "e-50", kInfinity},
      {"0." + zeros + "1e50", 0},
      {"0." + zeros + "1", 0},
      {"0." + zeros + "1e401", 1},
  };
  for (const Case& c : cases) EXPECT_EQ(readFloat(c.text), c.value) << c.text;
  EXPECT_TRUE(std::signbit(readFloat("-1e-99999")));
}

TEST(NumberText, ReadsTheLeadingInteger) {
  struct Case {
    const char* text;
    std::int32_t value;
  };
  const Case cases[] = {
      {"", 0},
      {" \t\n42abc", 42},
      {"-17.9", -17},
      {"+5", 5},
      {"--5", 0},
      {"abc", 0},
      {"2147483647", 2147483647},
      {"2147483648", 2147483647},
      {"99999999999999999999999", 2147483647},
      {"-2147483648", -2147483647 - 1},
      {"-99999999999999999999999", -2147483647 - 1},
  };
  for (const Case& c : cases) EXPECT_EQ(readInt32(c.text), c.value) << c.text;
}

TEST(NumberText, ReadsTheLeadingBoolean) {
  for (const char* yes : {"YES", "y", "true", "T", "1", "9x", " -7", "\t+01", "0y", "-t"}) {
    EXPECT_TRUE(readBool(yes)) << yes;
  }
  for (const char* no : {"", "NO", "0", "000", "-", "false", "x1", "- 1", "on"}) {
    EXPECT_FALSE(readBool(no)) << no;
  }
}

}  // namespace
}  // namespace tarnkit
