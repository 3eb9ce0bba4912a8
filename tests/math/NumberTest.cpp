#include <cmath>
#include <limits>

#include "tarnkit/math/MXNumber.h"
#include "tarnkit/math/MathText.h"
#include "tests/math/MathTesting.h"

namespace tarnkit::testing {
namespace {

std::string zeros(int count) { return std::string(static_cast<std::size_t>(count), '0'); }

// One rounding, half to even, at the 38th digit, whatever stands before the digits.
TEST(MathNumber, TakesTheDigitsOfATextAsADecimal) {
  const struct {
    const char* text;
    std::string digits;
    std::string decimal;
  } cases[] = {
      {"007.250", "7.25", "7.25"},
      {"-2500e-3", "-2.5", "-2.5"},
      {"1e20", "1" + zeros(20), "1" + zeros(20)},
      {"0.12345678901234567890123456789012345678500", "0.12345678901234567890123456789012345678",
       "0.12345678901234567890123456789012345678"},
      {"12345678901234567890123456789012345679500000e-6", "12345678901234567890123456789012345680",
       "12345678901234567890123456789012345680"},
      {"1e-128", "0." + zeros(127) + "1", "0." + zeros(127) + "1"},
      // Digits behind the last place of a decimal stay with the number, and are rounded when it is
      // computed with.
      {"-2.50e-128", "-0." + zeros(127) + "25", "-0." + zeros(127) + "2"},
      {"1.234567890123456789012345678901234567849e-127",
       "0." + zeros(126) + "12345678901234567890123456789012345678", "0." + zeros(126) + "12"},
      {"9.99999999999999999999999999999999999999e-129", "0." + zeros(127) + "1",
       "0." + zeros(127) + "1"},
      {"9999e161", "9999" + zeros(161), "9999" + zeros(161)},
  };
  for (const auto& each : cases) {
    const auto number = MXNumber::fromText(each.text);
    EXPECT_TRUE(number.isDecimal());
    EXPECT_EQ(number.text(), each.digits) << each.text;
    EXPECT_EQ(number.decimal().text(), each.decimal) << each.text;
    EXPECT_EQ(number.doubleValue(), std::stod(each.text)) << each.text;
    EXPECT_EQ(MXNumber(number.decimal()).text(), each.decimal) << each.text;
  }
  for (const char* text : {"0", "-0.00", "0e999", "9.9e-129", "1e165", "1e999", "4e-320"}) {
    EXPECT_FALSE(MXNumber::fromText(text).isDecimal()) << text;
  }
}

TEST(MathNumber, KeepsTheDigitsOfWholeNumbersThatNoDoubleHolds) {
  constexpr std::int64_t kTwoTo53 = std::int64_t{1} << 53;
  EXPECT_FALSE(MXNumber::fromNumber(*Number::withInt64(kTwoTo53)).isDecimal());
  EXPECT_FALSE(MXNumber::fromNumber(*Number::withInt64(-kTwoTo53)).isDecimal());
  EXPECT_EQ(MXNumber::fromNumber(*Number::withInt64(kTwoTo53 + 1)).text(), "9007199254740993");
  EXPECT_EQ(MXNumber::fromNumber(*Number::withInt64(-kTwoTo53 - 1)).text(), "-9007199254740993");
}

TEST(MathText, SeesEveryByteThatIsNotPlain) {
  for (std::size_t size = 1; size <= 20; ++size) {
    std::string text(size, '~');
    EXPECT_TRUE(detail::isPlainText(text)) << size;
    for (char& c : text) {
      for (const char bad : {'\0', '\x80', '\xFF'}) {
        c = bad;
        EXPECT_FALSE(detail::isPlainText(text)) << size << " " << &c - text.data();
      }
      c = '~';
    }
  }
}

// All digits of a text count for its double, those too that no decimal holds.
TEST(MathNumber, KeepsTheDoubleOfItsText) {
  const char* const text = "1.00000000000000011102230246251565404236316680908203125";
  const auto number = MXNumber::fromText(text);
  EXPECT_EQ(number.doubleValue(), 1);
  EXPECT_EQ(number.decimal().doubleValue(), 1 + std::numeric_limits<double>::epsilon());
  EXPECT_EQ(MXNumber(number.decimal()).doubleValue(), number.decimal().doubleValue());
}

TEST(MathNumber, ComparesByDigitsWhereBothHaveThem) {
  const auto number = [](const char* text) { return MXNumber::fromText(text); };
  EXPECT_EQ(number("2"), number("2.000"));
  EXPECT_EQ(number("0.1"), MXNumber(0.1));
  EXPECT_EQ(number("9007199254740993"), MXNumber(9007199254740992.0));
  EXPECT_FALSE(number("9007199254740993") == number("9007199254740992"));
  EXPECT_FALSE(number("1.5e-128") == number("1.50000000000000000000001e-128"));
  EXPECT_FALSE(MXNumber(1) == MXNumber(2));
  EXPECT_EQ(number("-0"), number("0"));
  EXPECT_EQ(number("-0").hash(), number("0").hash());
  const MXNumber nan(std::nan(""));
  EXPECT_EQ(nan, MXNumber(Decimal::notANumber()));
  EXPECT_FALSE(nan == MXNumber(0));
  EXPECT_FALSE(MXNumber(0) == nan);
  EXPECT_EQ(number("1e3").hash(), MXNumber(1000).hash());
  EXPECT_EQ(MXNumber(Decimal::of(1, 3)).hash(), MXNumber(1000).hash());
}

TEST(MathNumber, NumbersOfTreesKeepWhatTheyAre) {
  for (const char* text : {"1.50e-128", "0.12345678901234567890123456789012345678", "1e20", "3"}) {
    const auto number = MXNumber::fromText(text);
    const auto expression = MXExpression::numberExpressionWithNumber(number);
    const auto sum = MXExpression::functionExpressionWithFunction(
        String("add"), {expression, MXExpression::numberExpressionWithNumber(-2.5)}, nullptr);
    EXPECT_EQ(expression->description(), number.description());
    EXPECT_EQ(sum->copy()->arguments()[0]->number(), number);
    EXPECT_EQ(sum->description().toStdString(), "add(" + number.text() + ",-2.5)");
  }
}

}  // namespace
}  // namespace tarnkit::testing
