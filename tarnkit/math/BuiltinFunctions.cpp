#include "tarnkit/math/BuiltinFunctions.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstring>

#include "tarnkit/math/FunctionMath.h"
#include "tarnkit/platform/text/ASCII.h"

namespace tarnkit::detail {

namespace {

using Unary = double (*)(double);
using Binary = double (*)(double, double);
using List = double (*)(const double*, std::size_t);

constexpr BuiltinFunction constant(std::string_view name, Builtin id, double value) {
  return {name, id, BuiltinShape::constant, BuiltinAngle::none, 0, 0, {.value = value}};
}
constexpr BuiltinFunction unary(std::string_view name, Builtin id, Unary function,
                                BuiltinAngle angle = BuiltinAngle::none) {
  return {name, id, BuiltinShape::unary, angle, 1, 1, {.unary = function}};
}
constexpr BuiltinFunction ofAngle(std::string_view name, Builtin id, Unary function) {
  return unary(name, id, function, BuiltinAngle::argument);
}
constexpr BuiltinFunction toAngle(std::string_view name, Builtin id, Unary function) {
  return unary(name, id, function, BuiltinAngle::result);
}
constexpr BuiltinFunction binary(std::string_view name, Builtin id, Binary function) {
  return {name, id, BuiltinShape::binary, BuiltinAngle::none, 2, 2, {.binary = function}};
}
constexpr BuiltinFunction list(std::string_view name, Builtin id, std::uint32_t minimum,
                               List function) {
  return {name,
          id,
          BuiltinShape::list,
          BuiltinAngle::none,
          minimum,
          BuiltinFunction::kAnyCount,
          {.list = function}};
}
constexpr BuiltinFunction special(std::string_view name, Builtin id, std::uint32_t minimum,
                                  std::uint32_t maximum) {
  return {name, id, BuiltinShape::special, BuiltinAngle::none, minimum, maximum, {.value = 0}};
}

template <double (*Function)(double)>
double reciprocal(double x) {
  return 1 / Function(x);
}
template <double (*Function)(double)>
double ofReciprocal(double x) {
  return Function(1 / x);
}
template <double (*Function)(double)>
double half(double x) {
  return Function(x) / 2;
}

double sine(double x) { return std::sin(x); }
double cosine(double x) { return std::cos(x); }
double tangent(double x) { return std::tan(x); }
double arcSine(double x) { return std::asin(x); }
double arcCosine(double x) { return std::acos(x); }
double arcTangent(double x) { return std::atan(x); }
double hyperbolicSine(double x) { return std::sinh(x); }
double hyperbolicCosine(double x) { return std::cosh(x); }
double hyperbolicTangent(double x) { return std::tanh(x); }
double areaSine(double x) { return std::asinh(x); }
double areaCosine(double x) { return std::acosh(x); }
double areaTangent(double x) { return std::atanh(x); }
double versine(double x) { return 1 - std::cos(x); }
double vercosine(double x) { return 1 + std::cos(x); }
double coversine(double x) { return 1 - std::sin(x); }
double covercosine(double x) { return 1 + std::sin(x); }
double exsecant(double x) { return 1 / std::cos(x) - 1; }
double excosecant(double x) { return 1 / std::sin(x) - 1; }
double chord(double x) { return 2 * std::sin(x / 2); }
double nthRoot(double x, double y) { return std::pow(x, 1 / y); }

constexpr BuiltinFunction kFunctions[] = {
    special("", Builtin::none, 0, 0),
    binary("add", Builtin::add, math::add),
    binary("subtract", Builtin::subtract, math::subtract),
    binary("multiply", Builtin::multiply, math::multiply),
    binary("divide", Builtin::divide, math::divide),
    binary("mod", Builtin::mod, math::mod),
    binary("pow", Builtin::pow, math::power),
    binary("nthroot", Builtin::nthroot, nthRoot),
    binary("and", Builtin::bitAnd, math::bitAnd),
    binary("or", Builtin::bitOr, math::bitOr),
    binary("xor", Builtin::bitXor, math::bitXor),
    binary("rshift", Builtin::rshift, math::shiftRight),
    binary("lshift", Builtin::lshift, math::shiftLeft),
    binary("l_and", Builtin::logicalAnd, math::logicalAnd),
    binary("l_or", Builtin::logicalOr, math::logicalOr),
    binary("l_eq", Builtin::equal, math::equal),
    binary("l_neq", Builtin::notEqual, math::notEqual),
    binary("l_lt", Builtin::less, math::less),
    binary("l_gt", Builtin::greater, math::greater),
    binary("l_ltoe", Builtin::lessOrEqual, math::lessOrEqual),
    binary("l_gtoe", Builtin::greaterOrEqual, math::greaterOrEqual),
    unary("negate", Builtin::negate, math::negate),
    unary("factorial", Builtin::factorial, math::factorial),
    unary("not", Builtin::bitNot, math::bitNot),
    unary("l_not", Builtin::logicalNot, math::logicalNot),
    unary("sqrt", Builtin::sqrt, [](double x) { return std::sqrt(x); }),
    unary("log", Builtin::log, [](double x) { return std::log10(x); }),
    unary("ln", Builtin::ln, [](double x) { return std::log(x); }),
    unary("log2", Builtin::log2, [](double x) { return std::log2(x); }),
    unary("exp", Builtin::exp, [](double x) { return std::exp(x); }),
    unary("ceil", Builtin::ceil, [](double x) { return std::ceil(x); }),
    unary("floor", Builtin::floor, [](double x) { return std::floor(x); }),
    unary("abs", Builtin::abs, [](double x) { return std::fabs(x); }),
    special("percent", Builtin::percent, 1, 1),
    ofAngle("sin", Builtin::sin, sine),
    ofAngle("cos", Builtin::cos, cosine),
    ofAngle("tan", Builtin::tan, tangent),
    ofAngle("csc", Builtin::csc, reciprocal<sine>),
    ofAngle("sec", Builtin::sec, reciprocal<cosine>),
    ofAngle("cotan", Builtin::cotan, reciprocal<tangent>),
    ofAngle("versin", Builtin::versin, versine),
    ofAngle("vercosin", Builtin::vercosin, vercosine),
    ofAngle("coversin", Builtin::coversin, coversine),
    ofAngle("covercosin", Builtin::covercosin, covercosine),
    ofAngle("haversin", Builtin::haversin, half<versine>),
    ofAngle("havercosin", Builtin::havercosin, half<vercosine>),
    ofAngle("hacoversin", Builtin::hacoversin, half<coversine>),
    ofAngle("hacovercosin", Builtin::hacovercosin, half<covercosine>),
    ofAngle("exsec", Builtin::exsec, exsecant),
    ofAngle("excsc", Builtin::excsc, excosecant),
    ofAngle("crd", Builtin::crd, chord),
    toAngle("asin", Builtin::asin, arcSine),
    toAngle("acos", Builtin::acos, arcCosine),
    toAngle("atan", Builtin::atan, arcTangent),
    toAngle("acsc", Builtin::acsc, ofReciprocal<arcSine>),
    toAngle("asec", Builtin::asec, ofReciprocal<arcCosine>),
    toAngle("acotan", Builtin::acotan, ofReciprocal<arcTangent>),
    unary("sinh", Builtin::sinh, hyperbolicSine),
    unary("cosh", Builtin::cosh, hyperbolicCosine),
    unary("tanh", Builtin::tanh, hyperbolicTangent),
    unary("asinh", Builtin::asinh, areaSine),
    unary("acosh", Builtin::acosh, areaCosine),
    unary("atanh", Builtin::atanh, areaTangent),
    unary("csch", Builtin::csch, reciprocal<hyperbolicSine>),
    unary("sech", Builtin::sech, reciprocal<hyperbolicCosine>),
    unary("cotanh", Builtin::cotanh, reciprocal<hyperbolicTangent>),
    unary("acsch", Builtin::acsch, ofReciprocal<areaSine>),
    unary("asech", Builtin::asech, ofReciprocal<areaCosine>),
    unary("acotanh", Builtin::acotanh, ofReciprocal<areaTangent>),
    unary("dtor", Builtin::dtor, math::toRadians),
    unary("rtod", Builtin::rtod, math::toDegrees),
    list("average", Builtin::average, 2, math::average),
    list("sum", Builtin::sum, 1, math::sum),
    special("count", Builtin::count, 1, BuiltinFunction::kAnyCount),
    list("min", Builtin::min, 2, math::minimum),
    list("max", Builtin::max, 2, math::maximum),
    list("median", Builtin::median, 2, math::median),
    list("stddev", Builtin::stddev, 2, math::standardDeviation),
    special("random", Builtin::random, 0, 2),
    constant("phi", Builtin::phi, 1.61803398874989484820),
    constant("pi", Builtin::pi, math::kPi),
    constant("pi_2", Builtin::pi_2, math::kPi / 2),
    constant("pi_4", Builtin::pi_4, math::kPi / 4),
    constant("tau", Builtin::tau, math::kPi * 2),
    constant("sqrt2", Builtin::sqrt2, 1.41421356237309504880),
    constant("e", Builtin::e, 2.71828182845904523536),
    constant("log2e", Builtin::log2e, 1.44269504088896340736),
    constant("log10e", Builtin::log10e, 0.43429448190325182765),
    constant("ln2", Builtin::ln2, 0.69314718055994530942),
    constant("ln10", Builtin::ln10, 2.30258509299404568402),
};
constexpr std::size_t kFunctionCount = std::size(kFunctions);

constexpr bool rowsStandAtTheirIds() {
  for (std::size_t i = 0; i < kFunctionCount; ++i) {
    if (static_cast<std::size_t>(kFunctions[i].id) != i) return false;
  }
  return true;
}
static_assert(rowsStandAtTheirIds());

// A name packed into two words, in lower case; longer names are no built-in's.
constexpr std::size_t kLongestName = 16;
struct PackedName {
  std::uint64_t low = 0;
  std::uint64_t high = 0;
  constexpr bool operator==(const PackedName&) const = default;
};

constexpr PackedName pack(std::string_view name) {
  PackedName packed;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const auto c = static_cast<unsigned char>(lowerCaseOf(name[i]));
    auto& word = i < 8 ? packed.low : packed.high;
    word |= std::uint64_t{c} << (8 * (i % 8));
  }
  return packed;
}

// Up to eight bytes, without a loop; the others are 0.
std::uint64_t load(const char* from, std::size_t size) noexcept {
  std::uint64_t word = 0;
  if (size >= 8) {
    std::memcpy(&word, from, sizeof word);
  } else if (size >= 4) {
    std::uint32_t low;
    std::uint32_t high;
    std::memcpy(&low, from, sizeof low);
    std::memcpy(&high, from + size - 4, sizeof high);
    word = low | std::uint64_t{high} << (8 * (size - 4));
  } else if (size > 0) {
    const auto byte = [from](std::size_t i) {
      return std::uint64_t{static_cast<unsigned char>(from[i])} << (8 * i);
    };
    word = byte(0) | byte(size / 2) | byte(size - 1);
  }
  return word;
}

// Every byte of "A" to "Z" in lower case.
std::uint64_t lowerCaseBytes(std::uint64_t word) noexcept {
  constexpr std::uint64_t kOnes = 0x0101010101010101ULL;
  const std::uint64_t low = word & (kOnes * 0x7F);
  const std::uint64_t fromA = low + kOnes * (0x80 - 'A');
  const std::uint64_t beyondZ = low + kOnes * (0x7F - 'Z');
  const std::uint64_t upper = (fromA ^ beyondZ) & ~word & (kOnes * 0x80);
  return word | upper >> 2;
}

PackedName packQuickly(std::string_view name) noexcept {
  if constexpr (std::endian::native != std::endian::little) return pack(name);
  PackedName packed;
  packed.low = lowerCaseBytes(load(name.data(), name.size()));
  if (name.size() > 8) packed.high = lowerCaseBytes(load(name.data() + 8, name.size() - 8));
  return packed;
}

constexpr std::size_t kSlots = 512;
constexpr std::size_t slotOf(const PackedName& name) {
  const std::uint64_t mixed =
      (name.low ^ (name.high * 0x9E3779B97F4A7C15ULL)) * 0xD6E8FEB86659FD93ULL;
  return static_cast<std::size_t>(mixed >> 55) & (kSlots - 1);
}

struct NameIndex {
  std::array<std::uint8_t, kSlots> slots{};
  std::array<PackedName, kFunctionCount> names{};
};

constexpr NameIndex makeNameIndex() {
  NameIndex index;
  for (std::size_t i = 1; i < kFunctionCount; ++i) {
    index.names[i] = pack(kFunctions[i].name);
    std::size_t at = slotOf(index.names[i]);
    while (index.slots[at] != 0) at = (at + 1) & (kSlots - 1);
    index.slots[at] = static_cast<std::uint8_t>(i);
  }
  return index;
}
constexpr NameIndex kNames = makeNameIndex();

}  // namespace

const BuiltinFunction& builtinFunction(Builtin id) noexcept {
  return kFunctions[static_cast<std::size_t>(id)];
}

Builtin builtinNamed(std::string_view name) noexcept {
  if (name.size() > kLongestName || name.empty()) return Builtin::none;
  const PackedName packed = packQuickly(name);
  for (std::size_t at = slotOf(packed);; at = (at + 1) & (kSlots - 1)) {
    const std::uint8_t found = kNames.slots[at];
    if (found == 0) return Builtin::none;
    if (kNames.names[found] == packed) return static_cast<Builtin>(found);
  }
}

std::size_t builtinCount() noexcept { return kFunctionCount - 1; }

}  // namespace tarnkit::detail
