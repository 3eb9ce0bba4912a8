#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tarnkit/math/MXDecimal.h"
#include "tarnkit/math/MXPrecisionFunctionEvaluator.h"
#include "tarnkit/platform/numbers/PowersOfTen.h"

namespace tarnkit {
namespace {

using detail::UInt256;

/// A reference value: digits × 10^exponent, of any exponent.
struct Reference {
  bool isNaN = false;
  bool negative = false;
  std::string digits;  // no leading zeros; empty for 0
  int exponent = 0;

  explicit Reference(std::string text) : isNaN(text == "NaN") {
    if (isNaN) return;
    negative = text.front() == '-';
    if (negative) text.erase(0, 1);
    const auto e = text.find('e');
    if (e != text.npos) exponent = std::stoi(text.substr(e + 1));
    text.resize(std::min(e, text.size()));
    const auto point = text.find('.');
    if (point != text.npos) {
      exponent -= static_cast<int>(text.size() - point - 1);
      text.erase(point, 1);
    }
    digits = text.substr(std::min(text.find_first_not_of('0'), text.size()));
  }
  int magnitude() const { return exponent + static_cast<int>(digits.size()) - 1; }
};

/// Units of 10^-20 of the last digit.
constexpr int kFine = 20;

UInt256 integerOf(const std::string& digits, int power) {
  std::string text = digits;
  if (power >= 0) {
    text.append(static_cast<std::size_t>(power), '0');
  } else {
    const auto cut = static_cast<std::size_t>(-power);
    text = cut >= text.size() ? "" : text.substr(0, text.size() - cut);
  }
  UInt256 value;
  for (const char c : text) {
    value = (value << 3) + (value << 1) + UInt256{0, static_cast<unsigned>(c - '0')};
  }
  return value;
}

std::string digitsOf(const Decimal& value) {
  std::string digits;
  for (auto left = value.mantissa(); left != 0; left /= 10) {
    digits.insert(digits.begin(), static_cast<char>('0' + static_cast<int>(left % 10)));
  }
  return digits;
}

constexpr double kWrong = 1e9;

/// How far the result is off, in units of the last of 38 digits, or of 10^-128 where that is more.
double errorOf(const Decimal& result, const Reference& reference) {
  constexpr int kGreatestMagnitude = Decimal::kMaximumExponent + Decimal::kDigits - 1;
  if (reference.isNaN || reference.magnitude() > kGreatestMagnitude) {
    return result.isNaN() ? 0 : kWrong;
  }
  if (result.isNaN()) return kWrong;
  const int unit = reference.digits.empty() ? Decimal::kMinimumExponent
                                            : std::max(reference.magnitude() - Decimal::kDigits + 1,
                                                       Decimal::kMinimumExponent);
  if (!result.isZero() && !reference.digits.empty() &&
      (result.isNegative() != reference.negative || result.magnitude() > unit + Decimal::kDigits)) {
    return kWrong;
  }
  const UInt256 wanted = integerOf(reference.digits, reference.exponent - unit + kFine);
  const UInt256 got = integerOf(digitsOf(result), result.exponent() - unit + kFine);
  const UInt256 distance = got < wanted ? wanted - got : got - wanted;
  if (distance.high != 0) return kWrong;
  return static_cast<double>(distance.low) / 1e20;
}

struct Worst {
  double error = 0;
  std::size_t count = 0;
  std::string line;
};

TEST(PrecisionTest, FunctionsAgainstReferenceValues) {
  // Larger sets of values are measured with the same code: the table of the results is printed.
  const char* const other = std::getenv("TARNKIT_PRECISION_VALUES");
  const std::string path =
      other ? other : TARNKIT_SOURCE_DIR "/tests/math/data/precision_values.tsv";
  std::ifstream file(path);
  ASSERT_TRUE(file) << path;
  const auto evaluator = make<detail::MXPrecisionFunctionEvaluator>(nullptr);
  std::map<std::string, Worst> results;
  for (std::string line; std::getline(file, line);) {
    std::istringstream fields(line);
    std::vector<std::string> parts;
    for (std::string part; std::getline(fields, part, '\t');) parts.push_back(part);
    ASSERT_GE(parts.size(), 3U) << line;
    const auto builtin = detail::builtinNamed(parts[0]);
    ASSERT_NE(builtin, detail::Builtin::none) << line;
    std::vector<MXNumber> arguments;
    for (std::size_t i = 1; i + 1 < parts.size(); ++i) {
      arguments.push_back(MXNumber(Decimal::fromText(parts[i]).value()));
    }
    MXError error;
    const auto value =
        evaluator->compute({detail::builtinFunction(builtin)}, arguments, &error).value();
    const double off = errorOf(value.decimal(), Reference(parts.back()));
    Worst& worst = results[parts[0]];
    ++worst.count;
    if (off > worst.error || worst.line.empty()) worst = {off, worst.count, line};
  }
  EXPECT_GE(results.size(), 43U);
  for (const auto& [name, worst] : results) {
    const auto builtin = detail::builtinNamed(name);
    const bool isExact = builtin <= detail::Builtin::divide || builtin == detail::Builtin::sqrt;
    EXPECT_LE(worst.error, isExact ? 0.5 : 0.51) << name << ": " << worst.line;
    if (other) std::printf("%-14s %zu %.12f\n", name.c_str(), worst.count, worst.error);
  }
}

// Between them the arguments come to each entry of the tables of sines, cosines, arc tangents,
// exponentials and logarithms; an entry that is off by its last bits is off by more than this.
TEST(PrecisionTest, FunctionsUndoEachOtherAtEveryStep) {
  const Decimal one = Decimal::of(1);
  const Decimal nearly = Decimal::fromText("1e-36").value();
  for (int i = 1; i <= 256; ++i) {
    const Decimal x = Decimal::of(i) / Decimal::of(256);
    EXPECT_LE((MXDecimalTan(MXDecimalAtan(x)) - x).absolute(), nearly) << i;
    EXPECT_LE((MXDecimalExp(MXDecimalLn(one + x)) - one - x).absolute(), nearly) << i;
    EXPECT_LE((MXDecimalExp(x) * MXDecimalExp(x.negated()) - one).absolute(), nearly) << i;
    const Decimal sine = MXDecimalSin(x), cosine = MXDecimalCos(x);
    EXPECT_LE((sine * sine + cosine * cosine - one).absolute(), nearly) << i;
  }
}

// Every function ends for every argument, and answers as its symmetry demands.
TEST(PrecisionTest, ExtremeArguments) {
  using Function = Decimal (*)(const Decimal&) noexcept;
  const Function odd[] = {MXDecimalSin,   MXDecimalTan,   MXDecimalCsc,   MXDecimalCot,
                          MXDecimalAsin,  MXDecimalAtan,  MXDecimalAcsc,  MXDecimalSinh,
                          MXDecimalTanh,  MXDecimalCsch,  MXDecimalCoth,  MXDecimalAsinh,
                          MXDecimalAtanh, MXDecimalAcsch, MXDecimalAcoth, MXDecimalInverse};
  const Function even[] = {MXDecimalCos, MXDecimalSec, MXDecimalCosh, MXDecimalSech};
  const Function others[] = {MXDecimalExp,   MXDecimalLn,    MXDecimalLog2,     MXDecimalLog10,
                             MXDecimalSqrt,  MXDecimalAcos,  MXDecimalAsec,     MXDecimalAcot,
                             MXDecimalAcosh, MXDecimalAsech, MXDecimalFactorial};
  std::vector<Decimal> values{Decimal::notANumber(), Decimal()};
  for (const int exponent : {-128, -127, -64, -38, -37, -20, -2, -1, 0, 1, 19, 37, 38, 100, 127}) {
    for (const char* digits : {"1", "5", "99999999999999999999999999999999999999",
                               "10000000000000000000000000000000000001"}) {
      values.push_back(Decimal::fromText(digits + ("e" + std::to_string(exponent))).value());
    }
  }
  for (const Decimal& x : values) {
    for (const Function function : odd) EXPECT_EQ(function(x.negated()), function(x).negated());
    for (const Function function : even) EXPECT_EQ(function(x.negated()), function(x));
    for (const Function function : others) {
      for (const Decimal& argument : {x, x.negated()}) {
        const Decimal value = function(argument);
        EXPECT_TRUE(value.isNaN() || !argument.isNaN());
        EXPECT_EQ(Decimal::fromText(value.text()), value);
      }
    }
    for (const Decimal& y : values) {
      for (const Decimal& sign : {y, y.negated()}) {
        const Decimal power = MXDecimalPower(x, sign);
        EXPECT_TRUE(power.isNaN() || !power.isNegative());
        const Decimal root = MXDecimalNthRoot(x, sign);
        EXPECT_TRUE(root.isNaN() || !root.isNegative());
        const Decimal rest = MXDecimalMod(x, sign);
        EXPECT_TRUE(rest.isNaN() || rest.isZero() || rest.isNegative() == sign.isNegative());
        EXPECT_TRUE(rest.isNaN() || rest.absolute() <= sign.absolute());
        EXPECT_EQ(MXDecimalLeftShift(x.negated(), sign), MXDecimalLeftShift(x, sign).negated());
        EXPECT_LE(MXDecimalRightShift(x, sign), x);
      }
    }
  }
}

}  // namespace
}  // namespace tarnkit
