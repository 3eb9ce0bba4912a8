// Prints what every function of the engine gives over a grid of arguments, bit by bit, so that two
// architectures can be compared: one line a call, "sin double 3ff0000000000000 = 3feaed548f090cee".
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numbers>
#include <span>
#include <string>
#include <vector>

#include "tarnkit/math/MXLanguage.h"
#include "tarnkit/math/MXMathEvaluator.h"

namespace {

using namespace tarnkit;

// Which of its bits are set in what is no number is the processor's own affair.
std::string bitsOf(double value) {
  if (std::isnan(value)) return "nan";
  char text[17];
  std::snprintf(text, sizeof text, "%016llx",
                static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(value)));
  return text;
}

// Small and large, exact and not, near the places where functions are hard, and what is no number.
std::vector<double> doubles() {
  std::vector<double> values{0.0,         -0.0, 0.1,   1.0 / 3, 0.5,   0.7,   0.999999999999,
                             1.000000001, 2.5,  20.5,  170.0,   171.5, 709.7, 1e5,
                             1e15 + 0.3,  1e22, 1e100, 1e300,   1e-5,  1e-20, 1e-300,
                             5e-324};
  for (int whole = 1; whole <= 12; ++whole) values.push_back(whole);
  for (int part = 1; part <= 16; ++part) values.push_back(part * std::numbers::pi / 8);
  for (int step = 0; step < 160; ++step) {
    values.push_back(std::ldexp(1 + std::fmod(step * 0.61803398874989485, 1), step / 4 - 20));
  }
  const auto count = values.size();
  for (std::size_t i = 0; i < count; ++i) values.push_back(-values[i]);
  values.push_back(std::numeric_limits<double>::infinity());
  values.push_back(-std::numeric_limits<double>::infinity());
  values.push_back(std::numeric_limits<double>::quiet_NaN());
  return values;
}

std::vector<MXNumber> numbers(std::span<const double> values) {
  return {values.begin(), values.end()};
}

std::vector<MXNumber> decimals() {
  std::vector<MXNumber> values;
  for (const char* text : {"0",
                           "1",
                           "2",
                           "3",
                           "7",
                           "10",
                           "0.1",
                           "0.3333333333333333333333333333333333333",
                           "0.5",
                           "0.99",
                           "1.000000000000000000000000000001",
                           "2.718281828459045235360287471352662498",
                           "12.25",
                           "30",
                           "45",
                           "90",
                           "123456789.987654321",
                           "1e-30",
                           "1e30",
                           "99999999999999999999999999999999999999"}) {
    values.push_back(MXNumber::fromText(text));
    values.push_back(MXNumber::fromText("-" + std::string(text)));
  }
  return values;
}

std::string written(const MXNumber& number) {
  return number.isDecimal() ? number.text() : bitsOf(number.doubleValue());
}

class Printer {
 public:
  Printer(const MXFunctionDescription& function, const char* mode, const MXMathEvaluator& evaluator)
      : function_(function), mode_(mode), evaluator_(evaluator) {}

  void print(const std::vector<MXNumber>& arguments) const {
    std::vector<Ref<MXExpression>> expressions;
    std::string line = std::string(function_.name) + " " + mode_;
    for (const auto& argument : arguments) {
      expressions.push_back(MXExpression::numberExpressionWithNumber(argument));
      line += " " + written(argument);
    }
    MXError error;
    const auto call =
        MXExpression::functionExpressionWithFunction(String(function_.name), expressions, &error);
    const auto value = evaluator_.evaluateExpression(*call, {}, &error);
    line +=
        " = " + (value ? written(*value) : "error " + std::string(error.localizedDescription()));
    std::puts(line.c_str());
  }

  /// Every argument alone, pairs and triples of some.
  void printAll(const std::vector<MXNumber>& values, std::size_t stride) const {
    const auto takes = [&](std::uint32_t count) {
      return function_.minimumArguments <= count && count <= function_.maximumArguments.value_or(3);
    };
    if (takes(0)) print({});
    if (takes(1)) {
      for (const auto& value : values) print({value});
    }
    for (std::size_t i = 0; i < values.size() && takes(2); i += stride) {
      for (std::size_t j = 0; j < values.size(); j += stride) print({values[i], values[j]});
    }
    for (std::size_t i = 0; i + 2 < values.size() && takes(3); i += stride) {
      print({values[i], values[i + 1], values[i + 2]});
    }
  }

 private:
  const MXFunctionDescription& function_;
  const char* mode_;
  const MXMathEvaluator& evaluator_;
};

}  // namespace

int main() {
  const auto inDoubles = make<MXMathEvaluator>();
  const auto inDegrees = make<MXMathEvaluator>();
  inDegrees->setAngleMeasurementMode(MXAngleMeasurementMode::degrees);
  const auto inDecimals = make<MXMathEvaluator>();
  inDecimals->setUsesHighPrecisionEvaluation(true);

  const auto plain = numbers(doubles());
  const auto exact = decimals();
  for (const auto& function : functionDescriptions()) {
    if (function.name == "random") continue;
    Printer(function, "double", *inDoubles).printAll(plain, 11);
    if (function.angle != MXFunctionDescription::Angle::none) {
      Printer(function, "degrees", *inDegrees).printAll(plain, 11);
    }
    if (function.isDecimal) Printer(function, "decimal", *inDecimals).printAll(exact, 3);
  }
}
