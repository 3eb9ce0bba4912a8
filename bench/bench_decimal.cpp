#include <benchmark/benchmark.h>
#include <mpfr.h>

#include <array>
#include <boost/multiprecision/cpp_dec_float.hpp>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tarnkit/math/MXDecimal.h"

// Decimals of 38 digits against Boost's of as many and against MPFR's binary numbers of 128 bits.
// Every function takes the same 256 arguments in turn.

namespace {

using tarnkit::Decimal;
using BoostDecimal = boost::multiprecision::number<boost::multiprecision::cpp_dec_float<38>,
                                                   boost::multiprecision::et_off>;

constexpr std::size_t kCount = 256;
constexpr mpfr_prec_t kBits = 128;

class MpfrNumber {
 public:
  MpfrNumber() { mpfr_init2(value_, kBits); }
  explicit MpfrNumber(const char* text) : MpfrNumber() {
    mpfr_set_str(value_, text, 10, MPFR_RNDN);
  }
  ~MpfrNumber() { mpfr_clear(value_); }
  MpfrNumber(const MpfrNumber&) = delete;
  MpfrNumber& operator=(const MpfrNumber&) = delete;
  mpfr_ptr get() { return value_; }

 private:
  mpfr_t value_;
};

/// What the arguments of a function are: numbers of 38 digits from one to another bound.
struct Range {
  double low;
  double high;
};

std::vector<std::string> textsOf(Range range, unsigned seed) {
  std::mt19937_64 draw(seed);
  std::uniform_real_distribution<double> spread(range.low, range.high);
  std::vector<std::string> texts;
  while (texts.size() < kCount) {
    std::array<char, 64> buffer{};
    const int length = std::snprintf(buffer.data(), buffer.size(), "%.15e", spread(draw));
    std::string text(buffer.data(), static_cast<std::size_t>(length));
    const auto e = text.find('e');
    std::string more = std::to_string(draw() % 9000000000000000000U + 1000000000000000000U);
    more += std::to_string(draw() % 900 + 100);
    text.insert(e, more);
    texts.push_back(text);
  }
  return texts;
}

void keep(const Decimal& value) { benchmark::DoNotOptimize(value.mantissa()); }
void keep(const BoostDecimal& value) { benchmark::DoNotOptimize(&value); }

template <class Number, class Compute>
void binary(benchmark::State& state, Range first, Range second, Compute compute) {
  const auto a = textsOf(first, 1);
  const auto b = textsOf(second, 2);
  std::vector<Number> x;
  std::vector<Number> y;
  for (std::size_t i = 0; i < kCount; ++i) {
    if constexpr (std::is_same_v<Number, Decimal>) {
      x.push_back(Decimal::fromText(a[i]).value());
      y.push_back(Decimal::fromText(b[i]).value());
    } else {
      x.emplace_back(a[i]);
      y.emplace_back(b[i]);
    }
  }
  std::size_t i = 0;
  for (auto _ : state) {
    keep(compute(x[i], y[i]));
    i = (i + 1) % kCount;
  }
}

template <class Compute>
void binaryMpfr(benchmark::State& state, Range first, Range second, Compute compute) {
  const auto a = textsOf(first, 1);
  const auto b = textsOf(second, 2);
  std::vector<std::unique_ptr<MpfrNumber>> x;
  std::vector<std::unique_ptr<MpfrNumber>> y;
  for (std::size_t i = 0; i < kCount; ++i) {
    x.push_back(std::make_unique<MpfrNumber>(a[i].c_str()));
    y.push_back(std::make_unique<MpfrNumber>(b[i].c_str()));
  }
  MpfrNumber result;
  std::size_t i = 0;
  for (auto _ : state) {
    compute(result.get(), x[i]->get(), y[i]->get());
    benchmark::DoNotOptimize(result.get());
    i = (i + 1) % kCount;
  }
}

/// Registers one function of the three.
template <class Ours, class Boosts, class Mpfrs>
void add(const std::string& name, Range first, Range second, Ours ours, Boosts boosts,
         Mpfrs mpfrs) {
  benchmark::RegisterBenchmark(("BM_" + name + "/decimal").c_str(), [=](benchmark::State& state) {
    binary<Decimal>(state, first, second, ours);
  });
  benchmark::RegisterBenchmark(
      ("BM_" + name + "/cpp_dec_float").c_str(),
      [=](benchmark::State& state) { binary<BoostDecimal>(state, first, second, boosts); });
  benchmark::RegisterBenchmark(("BM_" + name + "/mpfr").c_str(), [=](benchmark::State& state) {
    binaryMpfr(state, first, second, mpfrs);
  });
}

void addUnary(const std::string& name, Range range, Decimal (*ours)(const Decimal&) noexcept,
              BoostDecimal (*boosts)(const BoostDecimal&),
              int (*mpfrs)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t)) {
  add(
      name, range, range, [=](const Decimal& x, const Decimal&) { return ours(x); },
      [=](const BoostDecimal& x, const BoostDecimal&) { return boosts(x); },
      [=](mpfr_ptr result, mpfr_ptr x, mpfr_ptr) { mpfrs(result, x, MPFR_RNDN); });
}

void addArithmetic() {
  const Range range{-1000, 1000};
  add(
      "Add", range, range, [](const Decimal& x, const Decimal& y) { return x + y; },
      [](const BoostDecimal& x, const BoostDecimal& y) { return BoostDecimal(x + y); },
      [](mpfr_ptr r, mpfr_ptr x, mpfr_ptr y) { mpfr_add(r, x, y, MPFR_RNDN); });
  add(
      "Multiply", range, range, [](const Decimal& x, const Decimal& y) { return x * y; },
      [](const BoostDecimal& x, const BoostDecimal& y) { return BoostDecimal(x * y); },
      [](mpfr_ptr r, mpfr_ptr x, mpfr_ptr y) { mpfr_mul(r, x, y, MPFR_RNDN); });
  add(
      "Divide", range, range, [](const Decimal& x, const Decimal& y) { return x / y; },
      [](const BoostDecimal& x, const BoostDecimal& y) { return BoostDecimal(x / y); },
      [](mpfr_ptr r, mpfr_ptr x, mpfr_ptr y) { mpfr_div(r, x, y, MPFR_RNDN); });
  add(
      "Power", {0.1, 100}, {-20, 20},
      [](const Decimal& x, const Decimal& y) { return tarnkit::MXDecimalPower(x, y); },
      [](const BoostDecimal& x, const BoostDecimal& y) { return BoostDecimal(pow(x, y)); },
      [](mpfr_ptr r, mpfr_ptr x, mpfr_ptr y) { mpfr_pow(r, x, y, MPFR_RNDN); });
}

void addFunctions() {
  using B = const BoostDecimal&;
  using namespace tarnkit;
  addUnary(
      "Sqrt", {0, 1000}, MXDecimalSqrt, [](B x) { return BoostDecimal(sqrt(x)); }, mpfr_sqrt);
  addUnary(
      "Exp", {-50, 50}, MXDecimalExp, [](B x) { return BoostDecimal(exp(x)); }, mpfr_exp);
  addUnary(
      "Ln", {0, 1000}, MXDecimalLn, [](B x) { return BoostDecimal(log(x)); }, mpfr_log);
  addUnary(
      "Sin", {-10, 10}, MXDecimalSin, [](B x) { return BoostDecimal(sin(x)); }, mpfr_sin);
  addUnary(
      "Cos", {-10, 10}, MXDecimalCos, [](B x) { return BoostDecimal(cos(x)); }, mpfr_cos);
  addUnary(
      "Tan", {-10, 10}, MXDecimalTan, [](B x) { return BoostDecimal(tan(x)); }, mpfr_tan);
  addUnary(
      "SinFar", {1e20, 1e30}, MXDecimalSin, [](B x) { return BoostDecimal(sin(x)); }, mpfr_sin);
  addUnary(
      "Atan", {-10, 10}, MXDecimalAtan, [](B x) { return BoostDecimal(atan(x)); }, mpfr_atan);
  addUnary(
      "Asin", {-1, 1}, MXDecimalAsin, [](B x) { return BoostDecimal(asin(x)); }, mpfr_asin);
  addUnary(
      "Sinh", {-10, 10}, MXDecimalSinh, [](B x) { return BoostDecimal(sinh(x)); }, mpfr_sinh);
  addUnary(
      "Asinh", {-10, 10}, MXDecimalAsinh, [](B x) { return BoostDecimal(asinh(x)); }, mpfr_asinh);
}

void BM_Parse(benchmark::State& state) {
  const auto texts = textsOf({-1000, 1000}, 3);
  std::vector<std::string> plain;
  for (const auto& text : texts) plain.push_back(Decimal::fromText(text).value().text());
  std::size_t i = 0;
  for (auto _ : state) {
    keep(*Decimal::fromText(plain[i]));
    i = (i + 1) % kCount;
  }
}
BENCHMARK(BM_Parse);

void BM_Print(benchmark::State& state) {
  std::vector<Decimal> values;
  for (const auto& text : textsOf({-1000, 1000}, 3)) {
    values.push_back(Decimal::fromText(text).value());
  }
  char buffer[Decimal::kMaximumTextLength];
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(values[i].write(buffer));
    benchmark::ClobberMemory();
    i = (i + 1) % kCount;
  }
}
BENCHMARK(BM_Print);

}  // namespace

int main(int argc, char** argv) {
  addArithmetic();
  addFunctions();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
