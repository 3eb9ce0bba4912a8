#include <cmath>
#include <cstring>

#include "tarnkit/math/FunctionMath.h"
#include "tarnkit/math/HostFunction.h"
#include "tarnkit/math/Program.h"

namespace tarnkit::detail {

namespace {

template <Operation O>
inline double compute(const Instruction& at, double x, double y) {
  switch (O) {
    case Operation::add:
      return x + y;
    case Operation::subtract:
      return x - y;
    case Operation::multiply:
      return x * y;
    case Operation::divide:
      return x / y;
    case Operation::less:
      return math::less(x, y);
    case Operation::greater:
      return math::greater(x, y);
    case Operation::lessOrEqual:
      return math::lessOrEqual(x, y);
    case Operation::greaterOrEqual:
      return math::greaterOrEqual(x, y);
    case Operation::equal:
      return math::equal(x, y);
    case Operation::notEqual:
      return math::notEqual(x, y);
    case Operation::minimum:
      return math::smaller(x, y);
    case Operation::maximum:
      return math::larger(x, y);
    case Operation::callBinary:
      return at.binary(x, y);
    case Operation::negate:
      return -x;
    case Operation::absolute:
      return std::fabs(x);
    case Operation::squareRoot:
      return std::sqrt(x);
    case Operation::square:
      return x * x;
    case Operation::toRadians:
      return math::toRadians(x);
    case Operation::toDegrees:
      return math::toDegrees(x);
    case Operation::callUnary:
      return at.unary(x);
    default:
      return x;
  }
}

template <Source S>
inline double operand(const Instruction& at, std::uint32_t index, const double* values,
                      const double* temporaries, double accumulator) {
  switch (S) {
    case Source::accumulator:
      return accumulator;
    case Source::variable:
      return values[index];
    case Source::constant:
      return at.constant;
    case Source::temporary:
      return temporaries[index];
  }
}

template <Operation O, Source First, Source Second, bool Stores>
struct Step {
  static double scalar(const Instruction* at, const double* values, double* temporaries,
                       double accumulator) {
    if constexpr (Stores) temporaries[at->aside] = accumulator;
    if constexpr (O == Operation::callList) {
      accumulator = at->list(temporaries + at->first, at->second);
    } else if constexpr (O != Operation::store) {
      const double x = operand<First>(*at, at->first, values, temporaries, accumulator);
      const double y =
          isBinary(O) ? operand<Second>(*at, at->second, values, temporaries, accumulator) : 0.0;
      accumulator = compute<O>(*at, x, y);
    }
    return at[1].run(at + 1, values, temporaries, accumulator);
  }

  template <Source S>
  static const double* rows(const BlockState& block, std::uint32_t index) noexcept {
    if constexpr (S == Source::variable) return block.columns[index];
    if constexpr (S == Source::temporary) return block.temporaries + index * kBlockRows;
    return nullptr;
  }

  static void block(const Instruction& at, BlockState& state) {
    if constexpr (Stores) copyRows(state.temporaries + at.aside * kBlockRows, state.accumulator);
    if constexpr (O == Operation::callList) {
      callList(at, state);
    } else if constexpr (O != Operation::store) {
      computeRows(at, state.accumulator, rows<First>(state, at.first),
                  rows<Second>(state, at.second), at.constant);
    }
  }

  // The compiler is told by the arguments that none of the rows are others' as well.
  static void copyRows(double* __restrict to, const double* __restrict from) noexcept {
    for (std::size_t i = 0; i < kBlockRows; ++i) to[i] = from[i];
  }
  static void computeRows(const Instruction& at, double* __restrict accumulators,
                          const double* __restrict first, const double* __restrict second,
                          double constant) {
    for (std::size_t i = 0; i < kBlockRows; ++i) {
      const double x = row<First>(first, accumulators, constant, i);
      const double y = row<Second>(second, accumulators, constant, i);
      accumulators[i] = compute<O>(at, x, y);
    }
  }

  template <Source S>
  static double row(const double* from, const double* accumulators, double constant,
                    std::size_t i) noexcept {
    if constexpr (S == Source::accumulator) return accumulators[i];
    if constexpr (S == Source::constant) return constant;
    return from[i];
  }

  static void callList(const Instruction& at, BlockState& state) {
    std::vector<double> arguments(at.second);
    for (std::size_t i = 0; i < kBlockRows; ++i) {
      for (std::uint32_t k = 0; k < at.second; ++k) {
        arguments[k] = state.temporaries[(at.first + k) * kBlockRows + i];
      }
      state.accumulator[i] = at.list(arguments.data(), arguments.size());
    }
  }
};

template <bool Stores>
double callHost(const Instruction* at, const double* values, double* temporaries,
                double accumulator) {
  if constexpr (Stores) temporaries[at->aside] = accumulator;
  HostCalls* calls;
  static_assert(sizeof calls <= sizeof(double));
  std::memcpy(&calls, temporaries - 1, sizeof calls);
  const auto value = at->host->call({temporaries + at->first, at->second}, calls->error);
  if (!value) {
    calls->failed = true;
    return accumulator;
  }
  return at[1].run(at + 1, values, temporaries, *value);
}

double endSegment(const Instruction*, const double*, double*, double accumulator) {
  return accumulator;
}
void endBlock(const Instruction&, BlockState&) {}

struct Handlers {
  ScalarHandler scalar;
  BlockHandler block;
};

template <Operation O, Source First, Source Second>
Handlers withStoring(bool stores) {
  if (stores) return {&Step<O, First, Second, true>::scalar, &Step<O, First, Second, true>::block};
  return {&Step<O, First, Second, false>::scalar, &Step<O, First, Second, false>::block};
}

template <Operation O, Source First>
Handlers withSecond(const Instruction& at) {
  if constexpr (!isBinary(O)) {
    return withStoring<O, First, Source::accumulator>(at.stores);
  } else {
    switch (at.secondSource) {
      case Source::accumulator:
        return withStoring<O, First, Source::accumulator>(at.stores);
      case Source::variable:
        return withStoring<O, First, Source::variable>(at.stores);
      case Source::constant:
        return withStoring<O, First, Source::constant>(at.stores);
      case Source::temporary:
        break;
    }
    return withStoring<O, First, Source::temporary>(at.stores);
  }
}

template <Operation O>
Handlers withFirst(const Instruction& at) {
  switch (at.firstSource) {
    case Source::accumulator:
      return withSecond<O, Source::accumulator>(at);
    case Source::variable:
      return withSecond<O, Source::variable>(at);
    case Source::constant:
      return withSecond<O, Source::constant>(at);
    case Source::temporary:
      break;
  }
  return withSecond<O, Source::temporary>(at);
}

Handlers binaryHandlers(const Instruction& at) {
  switch (at.operation) {
    case Operation::add:
      return withFirst<Operation::add>(at);
    case Operation::subtract:
      return withFirst<Operation::subtract>(at);
    case Operation::multiply:
      return withFirst<Operation::multiply>(at);
    case Operation::divide:
      return withFirst<Operation::divide>(at);
    case Operation::less:
      return withFirst<Operation::less>(at);
    case Operation::greater:
      return withFirst<Operation::greater>(at);
    case Operation::lessOrEqual:
      return withFirst<Operation::lessOrEqual>(at);
    case Operation::greaterOrEqual:
      return withFirst<Operation::greaterOrEqual>(at);
    case Operation::equal:
      return withFirst<Operation::equal>(at);
    case Operation::notEqual:
      return withFirst<Operation::notEqual>(at);
    case Operation::minimum:
      return withFirst<Operation::minimum>(at);
    case Operation::maximum:
      return withFirst<Operation::maximum>(at);
    default:
      return withFirst<Operation::callBinary>(at);
  }
}

Handlers handlersFor(const Instruction& at) {
  switch (at.operation) {
    case Operation::load:
      return withFirst<Operation::load>(at);
    case Operation::negate:
      return withFirst<Operation::negate>(at);
    case Operation::absolute:
      return withFirst<Operation::absolute>(at);
    case Operation::squareRoot:
      return withFirst<Operation::squareRoot>(at);
    case Operation::square:
      return withFirst<Operation::square>(at);
    case Operation::toRadians:
      return withFirst<Operation::toRadians>(at);
    case Operation::toDegrees:
      return withFirst<Operation::toDegrees>(at);
    case Operation::callUnary:
      return withFirst<Operation::callUnary>(at);
    case Operation::callList:
      return withStoring<Operation::callList, Source::accumulator, Source::accumulator>(at.stores);
    case Operation::callHost:
      return {at.stores ? &callHost<true> : &callHost<false>, &endBlock};
    case Operation::store:
      return withStoring<Operation::store, Source::accumulator, Source::accumulator>(true);
    case Operation::end:
      return {&endSegment, &endBlock};
    default:
      return binaryHandlers(at);
  }
}

}  // namespace

ScalarHandler scalarHandler(const Instruction& instruction) noexcept {
  return handlersFor(instruction).scalar;
}

BlockHandler blockHandler(const Instruction& instruction) noexcept {
  return handlersFor(instruction).block;
}

}  // namespace tarnkit::detail
