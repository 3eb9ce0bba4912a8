#include "tarnkit/math/MXLanguage.h"

#include <algorithm>
#include <iterator>

#include "tarnkit/math/BuiltinFunctions.h"
#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/MathText.h"

namespace tarnkit {

namespace {

using detail::Builtin;
using detail::BuiltinAngle;
using detail::BuiltinFunction;

struct Text {
  Builtin id;
  std::string_view arguments;
  std::string_view meaning;
};

struct Subject {
  std::string_view title;
  std::vector<Text> texts;
};

const std::vector<Subject>& subjects() {
  static const std::vector<Subject> all = {
      {"Arithmetic",
       {{Builtin::add, "x, y", "x + y"},
        {Builtin::subtract, "x, y", "x − y"},
        {Builtin::multiply, "x, y", "x · y"},
        {Builtin::divide, "x, y", "x ÷ y"},
        {Builtin::mod, "x, y", "what is left of x when it is divided by y"},
        {Builtin::negate, "x", "−x"},
        {Builtin::pow, "x, y", "x to the power y"},
        {Builtin::nthroot, "x, y", "x to the power 1 ÷ y"},
        {Builtin::sqrt, "x", "the square root"},
        {Builtin::exp, "x", "e to the power x"},
        {Builtin::ln, "x", "the natural logarithm"},
        {Builtin::log, "x", "the logarithm to base 10"},
        {Builtin::log2, "x", "the logarithm to base 2"},
        {Builtin::factorial, "x", "Γ(x + 1), which is x! for a whole number"},
        {Builtin::percent, "x", "x hundredths: of 1, or, behind + and −, of what stands before"},
        {Builtin::abs, "x", "x without its sign"},
        {Builtin::ceil, "x", "the next whole number upward"},
        {Builtin::floor, "x", "the next whole number downward"},
        {Builtin::random, "low, high",
         "a whole number by chance, from low up to, and without, high, which have 32 bits"}}},
      {"Comparisons and logic",
       {{Builtin::equal, "x, y", "1 when x = y, otherwise 0"},
        {Builtin::notEqual, "x, y", "1 when x ≠ y, otherwise 0"},
        {Builtin::less, "x, y", "1 when x < y, otherwise 0"},
        {Builtin::greater, "x, y", "1 when x > y, otherwise 0"},
        {Builtin::lessOrEqual, "x, y", "1 when x ≤ y, otherwise 0"},
        {Builtin::greaterOrEqual, "x, y", "1 when x ≥ y, otherwise 0"},
        {Builtin::logicalAnd, "x, y", "1 when neither is 0, otherwise 0"},
        {Builtin::logicalOr, "x, y", "1 when one is not 0, otherwise 0"},
        {Builtin::logicalNot, "x", "1 when x is 0, otherwise 0"}}},
      {"Bits",
       {{Builtin::bitAnd, "x, y", "the bits that both whole numbers have"},
        {Builtin::bitOr, "x, y", "the bits that one of them has, or both"},
        {Builtin::bitXor, "x, y", "the bits that just one of them has"},
        {Builtin::bitNot, "x", "every bit the other way round: −x − 1"},
        {Builtin::lshift, "x, y", "x with its bits moved up by y"},
        {Builtin::rshift, "x, y", "x with its bits moved down by y"}}},
      {"Statistics",
       {{Builtin::average, "x, …", "the mean"},
        {Builtin::sum, "x, …", "the sum"},
        {Builtin::count, "x, …", "how many arguments there are; none is computed"},
        {Builtin::min, "x, …", "the smallest"},
        {Builtin::max, "x, …", "the largest"},
        {Builtin::median, "x, …", "the one in the middle, or the mean of the two there"},
        {Builtin::stddev, "x, …", "the standard deviation of a whole population"}}},
      {"Angles",
       {{Builtin::sin, "x", "the sine"},
        {Builtin::cos, "x", "the cosine"},
        {Builtin::tan, "x", "the tangent"},
        {Builtin::csc, "x", "1 ÷ sin x"},
        {Builtin::sec, "x", "1 ÷ cos x"},
        {Builtin::cotan, "x", "1 ÷ tan x"},
        {Builtin::asin, "x", "the angle whose sine is x"},
        {Builtin::acos, "x", "the angle whose cosine is x"},
        {Builtin::atan, "x", "the angle whose tangent is x"},
        {Builtin::acsc, "x", "the angle whose cosecant is x"},
        {Builtin::asec, "x", "the angle whose secant is x"},
        {Builtin::acotan, "x", "the angle whose cotangent is x"},
        {Builtin::versin, "x", "1 − cos x"},
        {Builtin::vercosin, "x", "1 + cos x"},
        {Builtin::coversin, "x", "1 − sin x"},
        {Builtin::covercosin, "x", "1 + sin x"},
        {Builtin::haversin, "x", "half of 1 − cos x"},
        {Builtin::havercosin, "x", "half of 1 + cos x"},
        {Builtin::hacoversin, "x", "half of 1 − sin x"},
        {Builtin::hacovercosin, "x", "half of 1 + sin x"},
        {Builtin::exsec, "x", "1 ÷ cos x − 1"},
        {Builtin::excsc, "x", "1 ÷ sin x − 1"},
        {Builtin::crd, "x", "the chord: 2 · sin(x ÷ 2)"},
        {Builtin::dtor, "x", "degrees as radians: x · π ÷ 180"},
        {Builtin::rtod, "x", "radians as degrees: x · 180 ÷ π"}}},
      {"Hyperbolic functions",
       {{Builtin::sinh, "x", "the hyperbolic sine"},
        {Builtin::cosh, "x", "the hyperbolic cosine"},
        {Builtin::tanh, "x", "the hyperbolic tangent"},
        {Builtin::csch, "x", "1 ÷ sinh x"},
        {Builtin::sech, "x", "1 ÷ cosh x"},
        {Builtin::cotanh, "x", "1 ÷ tanh x"},
        {Builtin::asinh, "x", "whose hyperbolic sine is x"},
        {Builtin::acosh, "x", "whose hyperbolic cosine is x"},
        {Builtin::atanh, "x", "whose hyperbolic tangent is x"},
        {Builtin::acsch, "x", "whose hyperbolic cosecant is x"},
        {Builtin::asech, "x", "whose hyperbolic secant is x"},
        {Builtin::acotanh, "x", "whose hyperbolic cotangent is x"}}},
      {"Constants",
       {{Builtin::pi, "", "π"},
        {Builtin::pi_2, "", "π ÷ 2"},
        {Builtin::pi_4, "", "π ÷ 4"},
        {Builtin::tau, "", "2 · π"},
        {Builtin::e, "", "the base of the natural logarithm"},
        {Builtin::phi, "", "the golden ratio"},
        {Builtin::sqrt2, "", "the square root of 2"},
        {Builtin::ln2, "", "the natural logarithm of 2"},
        {Builtin::ln10, "", "the natural logarithm of 10"},
        {Builtin::log2e, "", "the logarithm of e to base 2"},
        {Builtin::log10e, "", "the logarithm of e to base 10"}}}};
  return all;
}

bool isComputedInDoubles(Builtin id) {
  return (id >= Builtin::bitAnd && id <= Builtin::bitXor) ||
         (id >= Builtin::logicalAnd && id <= Builtin::greaterOrEqual) || id == Builtin::bitNot ||
         id == Builtin::logicalNot || id == Builtin::min || id == Builtin::max ||
         id == Builtin::random;
}

MXFunctionDescription::Angle angleOf(BuiltinAngle angle) {
  using Angle = MXFunctionDescription::Angle;
  switch (angle) {
    case BuiltinAngle::argument:
      return Angle::argument;
    case BuiltinAngle::result:
      return Angle::result;
    default:
      return Angle::none;
  }
}

std::vector<String> aliasesOf(std::string_view function, const MXMathEvaluator& evaluator) {
  std::vector<String> aliases;
  for (const String& name : evaluator.registeredFunctions()) {
    const auto* registered = evaluator.registeredFunction(name);
    if (registered && registered->aliasOf == function) aliases.push_back(name);
  }
  return aliases;
}

MXFunctionDescription describe(const Text& text, std::string_view subject,
                               const MXMathEvaluator& evaluator, const MXMathOperatorSet& set) {
  const BuiltinFunction& function = detail::builtinFunction(text.id);
  MXFunctionDescription description;
  description.name = function.name;
  description.subject = subject;
  description.arguments = text.arguments;
  description.minimumArguments = function.minimumArguments;
  if (function.maximumArguments != BuiltinFunction::kAnyCount) {
    description.maximumArguments = function.maximumArguments;
  }
  description.angle = angleOf(function.angle);
  description.isDecimal = !isComputedInDoubles(text.id);
  description.meaning = text.meaning;
  description.aliases = aliasesOf(function.name, evaluator);
  if (const auto operatorOfIt = set.operatorForFunction(String(function.name))) {
    description.operators = operatorOfIt->tokens();
  }
  return description;
}

std::string_view meaningOf(std::string_view function) {
  if (function == MXOperatorUnaryPlus) return "nothing: it is left out";
  const Builtin id = detail::builtinNamed(function);
  for (const Subject& subject : subjects()) {
    for (const Text& text : subject.texts) {
      if (text.id == id) return text.meaning;
    }
  }
  return {};
}

bool isAmong(const String& name, const std::vector<String>& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

bool MXFunctionDescription::isCalled(const String& called) const {
  const String lower = detail::lowerCase(called);
  return lower == name || isAmong(lower, aliases) || isAmong(lower, operators);
}

bool MXOperatorDescription::isCalled(const String& called) const {
  return isAmong(detail::lowerCase(called), tokens);
}

std::vector<MXFunctionDescription> functionDescriptions() {
  const auto evaluator = make<MXMathEvaluator>();
  const auto set = make<MXMathOperatorSet>();
  std::vector<MXFunctionDescription> all;
  all.reserve(detail::builtinCount());
  for (const Subject& subject : subjects()) {
    const auto first = static_cast<std::ptrdiff_t>(all.size());
    for (const Text& text : subject.texts) {
      all.push_back(describe(text, subject.title, *evaluator, *set));
    }
    std::sort(all.begin() + first, all.end(),
              [](const auto& a, const auto& b) { return a.name < b.name; });
  }
  return all;
}

std::vector<MXOperatorDescription> operatorDescriptions(bool percentSign) {
  const auto set = make<MXMathOperatorSet>();
  set->setInterpretsPercentSignAsModulo(!percentSign);
  std::vector<MXOperatorDescription> all;
  for (const auto& operatorOfSet : set->operators()) {
    const String& function = operatorOfSet->function();
    if (function == MXOperatorParenthesisOpen || function == MXOperatorParenthesisClose ||
        function == MXOperatorComma) {
      continue;
    }
    all.push_back({function, operatorOfSet->tokens(), operatorOfSet->arity(),
                   operatorOfSet->associativity(), operatorOfSet->precedence(),
                   meaningOf(function.view())});
  }
  return all;
}

}  // namespace tarnkit
