#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tarnkit/math/MXDecimal.h"
#include "tarnkit/platform/numbers/Decimal.h"
#include "tarnkit/platform/numbers/PowersOfTen.h"

namespace tarnkit {
namespace {

Decimal read(const std::string& text) {
  const auto value = Decimal::fromText(text);
  EXPECT_TRUE(value) << text;
  return value.value_or(Decimal::notANumber());
}

std::string computed(const std::string& operation, const Decimal& a, const std::string& argument) {
  const Decimal b = read(argument);
  const auto places = static_cast<int>(b.int64Value());
  if (operation == "add") return (a + b).text();
  if (operation == "subtract") return (a - b).text();
  if (operation == "multiply") return (a * b).text();
  if (operation == "divide") return (a / b).text();
  if (operation == "sqrt") return a.squareRoot().text();
  if (operation == "compare") return std::to_string(Decimal::compare(a, b));
  if (operation == "read") return a.text();
  if (operation == "down") return a.rounded(places, DecimalRounding::down).text();
  return a.rounded(places, DecimalRounding::halfToEven).text();
}

TEST(DecimalTest, AgreesWithAnotherDecimalArithmetic) {
  std::ifstream file(TARNKIT_SOURCE_DIR "/tests/math/data/decimal_values.tsv");
  ASSERT_TRUE(file);
  std::size_t count = 0;
  for (std::string line; std::getline(file, line); ++count) {
    std::istringstream fields(line);
    std::vector<std::string> parts;
    for (std::string part; std::getline(fields, part, '\t');) parts.push_back(part);
    ASSERT_EQ(parts.size(), 4U) << line;
    const Decimal first = read(parts[1]);
    if (parts[0] == "double") {
      const double wanted = std::strtod(parts[3].c_str(), nullptr);
      EXPECT_EQ(first.doubleValue(), wanted) << line;
    } else {
      EXPECT_EQ(computed(parts[0], first, parts[2]), parts[3]) << line;
    }
    EXPECT_EQ(read(first.text()), first) << line;
  }
  EXPECT_GT(count, 500U);
}

// A long product is cut by an estimate, which may not decide where the rest is next to a half: it
// must be what the whole product gives when it is divided exactly.
TEST(DecimalTest, ProductsAreTheExactOnesRounded) {
  using detail::UInt128;
  const UInt128 power = detail::powerOfTen(37);
  std::mt19937_64 random(11);
  const auto any = [&](int most) {
    const UInt128 bits = detail::joinWords(random(), random());
    return (bits >> random() % static_cast<unsigned>(most)) % (power * 10);
  };
  for (int i = 0; i < 300000; ++i) {
    UInt128 a = any(128);
    UInt128 b = any(20);
    if (i % 4 == 1) b = power * 5;  // every other one is a half
    if (i % 4 == 2) b = power * 10 - 1 - random() % 3, a = power * 5 + random() % 100 - 50;
    if (i % 4 == 3) b = power * 10 - random() % 1000, a = power * 10 - 1 - random() % 1000;
    const bool negative = random() % 2 == 0;
    const int exponent = static_cast<int>(random() % 300) - 180;
    const auto half = exponent / 2;
    const Decimal product = Decimal::rounding(negative, {0, a}, half) *
                            Decimal::rounding(false, {0, b}, exponent - half);
    const Decimal exact = Decimal::rounding(negative, detail::multiplyWide(a, b), exponent);
    ASSERT_EQ(product.text(), exact.text()) << i;
    ASSERT_EQ(product.exponent(), exact.exponent()) << i;
  }
}

TEST(DecimalTest, EndsOfTheRange) {
  const Decimal greatest = read("99999999999999999999999999999999999999e127");
  const Decimal least = read("1e-128");
  struct Case {
    Decimal value;
    const char* text;
  };
  const std::string zeros(126, '0');
  const Case cases[] = {
      {greatest + greatest, "NaN"},
      {greatest * Decimal::of(-2), "NaN"},
      {read("5e164") + read("5e164"), "NaN"},
      {read("1e100") * read("1e65"), "NaN"},
      {least / Decimal::of(2), "0"},
      {least / Decimal::of(-3), "0"},
      {Decimal::of(1) / Decimal(), "NaN"},
      {Decimal() / Decimal(), "NaN"},
      {Decimal::of(-1).squareRoot(), "NaN"},
      {Decimal::notANumber() + Decimal::of(1), "NaN"},
      {Decimal::notANumber() * Decimal(), "NaN"},
      {Decimal::of(3) - Decimal::of(3), "0"},
      {Decimal::of(-1) * Decimal(), "0"},
      {Decimal::of(0).negated(), "0"},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(each.value.text(), each.text);
    EXPECT_FALSE(each.value.isZero() && each.value.isNegative());
  }
  EXPECT_EQ(greatest + least, greatest);
  EXPECT_EQ(least * read("0.51"), least);
  EXPECT_EQ((read("1e100") * read("1e64")).text(), "1" + std::string(164, '0'));
  EXPECT_EQ(greatest.text().size(), Decimal::kMaximumTextLength - 1);
  EXPECT_EQ(least.text(), "0." + zeros + "01");
}

TEST(DecimalTest, TextsThatAreNoNumbers) {
  for (const char* text : {"", "-", ".", "-.", "e5", "1e", "1e+", "1.2.3", "0x1", " 1", "1 ", "nan",
                           "inf", "1e5.0", "--1", "12345678a", "\xD9\xA1"}) {
    EXPECT_FALSE(Decimal::fromText(text)) << text;
  }
  EXPECT_TRUE(read("NaN").isNaN());
  EXPECT_EQ(read(".5"), read("5e-1"));
  EXPECT_EQ(read("5.").text(), "5");
  EXPECT_EQ(read("-0.000"), Decimal());
  EXPECT_EQ(read("0e999999999999999999999"), Decimal());
  EXPECT_TRUE(read("1e999999999999999999999").isNaN());
  EXPECT_TRUE(read("1e-99999999999999999999").isZero());
  EXPECT_EQ(read("0." + std::string(200, '0') + "1e201"), Decimal::of(1));
  std::string padded(200, '0');
  padded.append("1").append(150, '0').append("e-150");
  EXPECT_EQ(read(padded), Decimal::of(1));
}

TEST(DecimalTest, DoublesAndIntegers) {
  EXPECT_EQ(Decimal::fromDouble(0.1).text(), "0.1");
  EXPECT_EQ(Decimal::fromDouble(-1152921504606846976.0).text(), "-1152921504606846976");
  EXPECT_EQ(Decimal::fromDouble(1e22).text(), "1" + std::string(22, '0'));
  EXPECT_TRUE(Decimal::fromDouble(1e300).isNaN());
  EXPECT_TRUE(Decimal::fromDouble(std::numeric_limits<double>::infinity()).isNaN());
  EXPECT_TRUE(Decimal::fromDouble(1e-300).isZero());
  EXPECT_TRUE(std::isnan(Decimal::notANumber().doubleValue()));
  using Limits = std::numeric_limits<std::int64_t>;
  EXPECT_EQ(Decimal::of(Limits::min()).int64Value(), Limits::min());
  EXPECT_EQ(read("9223372036854775807.9").int64Value(), Limits::max());
  EXPECT_EQ(read("9223372036854775808").int64Value(), Limits::max());
  EXPECT_EQ(read("-1e100").int64Value(), Limits::min());
  EXPECT_EQ(read("-2.9").int64Value(), -2);
  EXPECT_EQ(read("18446744073709551615").uint64Value(), ~std::uint64_t{0});
  EXPECT_EQ(read("99999999999999999999").uint64Value(), ~std::uint64_t{0});
  EXPECT_EQ(read("12345e-2").uint64Value(), 123U);
  EXPECT_EQ(Decimal::notANumber().int64Value(), 0);
}

TEST(DecimalTest, OrderOfDecimals) {
  const Decimal ascending[] = {Decimal::notANumber(),
                               read("-1e127"),
                               read("-2"),
                               read("-1.5"),
                               read("-1e-128"),
                               Decimal(),
                               read("1e-128"),
                               read("0.9"),
                               read("1.0"),
                               read("1e127"),
                               read("99999999999999999999999999999999999999e127")};
  for (const Decimal& a : ascending) {
    for (const Decimal& b : ascending) {
      EXPECT_EQ(Decimal::compare(a, b), (&a > &b) - (&a < &b)) << a.text() << " " << b.text();
    }
  }
  EXPECT_EQ(read("1"), read("1.000"));
}

TEST(DecimalTest, WholeNumbersRemaindersAndShifts) {
  struct Case {
    const char* a;
    const char* b;
    const char* rest;
  };
  const Case cases[] = {{"7", "3", "1"},    {"-7", "3", "2"},     {"7", "-3", "-2"},
                        {"-7", "-3", "-1"}, {"5.5", "0.25", "0"}, {"1e100", "7", "4"},
                        {"3", "0", "NaN"},  {"NaN", "1", "NaN"}};
  for (const Case& each : cases) {
    EXPECT_EQ(MXDecimalMod(read(each.a), read(each.b)).text(), each.rest) << each.a;
  }
  EXPECT_EQ(MXDecimalMod(read("1e-100"), Decimal::of(7)), read("1e-100"));
  EXPECT_TRUE(read("1e127").isInteger());
  EXPECT_TRUE(read("5.0").isInteger());
  EXPECT_FALSE(read("5.5").isInteger());
  EXPECT_FALSE(Decimal::notANumber().isInteger());
  EXPECT_EQ(MXDecimalLeftShift(Decimal::of(1), Decimal::of(100)).text(),
            "1267650600228229401496703205376");
  EXPECT_EQ(MXDecimalRightShift(read("1267650600228229401496703205377"), Decimal::of(99)).text(),
            "2");
  EXPECT_EQ(MXDecimalRightShift(Decimal::of(-7), Decimal::of(1)).text(), "-4");
  EXPECT_EQ(MXDecimalRightShift(Decimal::of(-7), Decimal::of(5000)).text(), "-1");
  EXPECT_EQ(MXDecimalRightShift(read("1e-5"), Decimal::of(1)).text(), "0");
  // Quotients of more bits than a word, cut and not rounded.
  const Case shifts[] = {
      {"1361129467683753853853498429727072845800", "129", "1"},
      {"-1361129467683753853853498429727072845800", "129", "-2"},
      {"2568048114007504292524252443e34", "78", "84969584480414994029212581051318088040"},
      {"-13e80", "144", "-58294016115912390150427150664860511062"},
      {"1e60", "60", "867361737988403547205962240695953369140625"},
      {"1e127", "576", "0"},
      {"-1e127", "576", "-1"},
  };
  for (const Case& each : shifts) {
    EXPECT_EQ(MXDecimalRightShift(read(each.a), read(each.b)), read(each.rest)) << each.a;
  }
}

TEST(DecimalTest, ExactResultsAndIdentities) {
  // A sum of 39 digits, cut in the middle of two: the even one.
  EXPECT_EQ(MXDecimalAdd(read("99999999999999999999999999999999999999"), Decimal::of(26)).text(),
            "100000000000000000000000000000000000020");
  const Decimal pi = MXDecimalPi();
  EXPECT_EQ(MXDecimalSqrt(Decimal::of(4)).text(), "2");
  EXPECT_EQ(MXDecimalPower(Decimal::of(9), read("0.5")).text(), "3");
  EXPECT_EQ(MXDecimalPower(Decimal::of(-2), Decimal::of(-3)).text(), "-0.125");
  EXPECT_EQ(MXDecimalPower(Decimal(), Decimal()).text(), "1");
  EXPECT_EQ(MXDecimalPower(read("-8"), read("0.5")).text(), "NaN");
  EXPECT_EQ(MXDecimalPower(Decimal(), Decimal::of(-1)).text(), "NaN");
  EXPECT_EQ(MXDecimalPower(read("1e127"), read("1e127")).text(), "NaN");
  EXPECT_EQ(MXDecimalPower(read("1e127"), read("-1e127")).text(), "0");
  EXPECT_EQ(MXDecimalNthRoot(Decimal::of(27), Decimal::of(3)).text(), "3");
  EXPECT_EQ(MXDecimalLog10(read("1e-128")).text(), "-128");
  EXPECT_EQ(MXDecimalLog2(Decimal::of(1024)).text(), "10");
  EXPECT_EQ(MXDecimalFactorial(Decimal::of(30)).text(), "265252859812191058636308480000000");
  EXPECT_EQ(MXDecimalFactorial(Decimal::of(-1)).text(), "NaN");
  EXPECT_EQ(MXDecimalFactorial(read("1e127")).text(), "NaN");
  EXPECT_EQ(MXDecimalAcos(Decimal::of(1)).text(), "0");
  EXPECT_EQ(MXDecimalAcot(Decimal::of(1)), MXDecimalPi_4());
  EXPECT_EQ(MXDecimalAcsc(Decimal::of(-1)), MXDecimalPi_2().negated());
  EXPECT_EQ(MXDecimalAsec(Decimal::of(-1)), pi);
  EXPECT_EQ(MXDecimalMod2Pi(Decimal::of(3) * pi / Decimal::of(2)), MXDecimalPi_2().negated());
  EXPECT_EQ(MXDecimalExp(read("1e127")).text(), "NaN");
  EXPECT_EQ(MXDecimalExp(read("-1e127")).text(), "0");
  EXPECT_TRUE(MXDecimalIsProbablyEqual(Decimal(), read("1e-65")));
  EXPECT_FALSE(MXDecimalIsProbablyEqual(Decimal(), read("1e-63")));
  for (const Decimal& outside :
       {MXDecimalLn(Decimal()), MXDecimalAsin(read("1.1")), MXDecimalAcosh(read("0.9")),
        MXDecimalAtanh(Decimal::of(1)), MXDecimalCsc(Decimal()), MXDecimalCoth(Decimal()),
        MXDecimalAsec(read("0.5")), MXDecimalAcsch(Decimal()), MXDecimalAcoth(Decimal::of(1)),
        MXDecimalSin(MXDecimalNAN())}) {
    EXPECT_TRUE(outside.isNaN());
  }
}

}  // namespace
}  // namespace tarnkit
