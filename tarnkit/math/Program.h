#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace tarnkit::detail {

struct HostFunction;
struct Instruction;

/// Where an instruction finds an operand: in the accumulator, among the values of the variables, in
/// itself, or among the results that were put aside.
enum class Source : std::uint8_t { accumulator, variable, constant, temporary };

/// What an instruction does; its result is the accumulator.
enum class Operation : std::uint8_t {
  // Of two operands.
  add,
  subtract,
  multiply,
  divide,
  less,
  greater,
  lessOrEqual,
  greaterOrEqual,
  equal,
  notEqual,
  minimum,
  maximum,
  callBinary,
  // Of one operand.
  load,
  negate,
  absolute,
  squareRoot,
  square,
  toRadians,
  toDegrees,
  callUnary,
  // Of a run of temporaries.
  callList,
  callHost,
  /// Puts the accumulator aside and changes nothing else.
  store,
  /// The end of a segment.
  end,
};

constexpr bool isBinary(Operation operation) noexcept { return operation <= Operation::callBinary; }

using ScalarHandler = double (*)(const Instruction* at, const double* values, double* temporaries,
                                 double accumulator);

/// The rows that are computed together.
inline constexpr std::size_t kBlockRows = 128;

/// The state of a block of rows: the accumulators, the column of each variable from the block's
/// first row on, and the temporaries, `kBlockRows` of each. None of them overlap.
struct BlockState {
  double* accumulator;
  const double* const* columns;
  double* temporaries;
};
using BlockHandler = void (*)(const Instruction& instruction, BlockState& block);

/// One step of a program, as data of its handlers.
struct Instruction {
  ScalarHandler run;
  BlockHandler runBlock;
  union {
    double (*unary)(double);
    double (*binary)(double, double);
    double (*list)(const double*, std::size_t);
    const HostFunction* host;
  };
  double constant;
  std::uint32_t first;   // index of the first operand, or of the first of a run
  std::uint32_t second;  // index of the second operand, or the length of a run
  std::uint32_t aside;   // where the accumulator goes first, when the handler stores it
  Operation operation;
  Source firstSource;
  Source secondSource;
  bool stores;
};

/// The handlers for an instruction's operation, sources and storing. Host functions are called row
/// by row, in the order of the rows, so their instructions do nothing to a block.
ScalarHandler scalarHandler(const Instruction& instruction) noexcept;
BlockHandler blockHandler(const Instruction& instruction) noexcept;

/// A straight line of instructions in segments, each of which ends with `end`. Handlers call the
/// next one; a compiler that does not make jumps of these calls needs stack for one segment only.
///
/// A program that calls host functions finds a pointer to `HostCalls` right before its temporaries,
/// in the bytes of a double, and stops where a call fails.
struct Program {
  static constexpr std::size_t kSegmentLength = 96;

  std::vector<Instruction> instructions;
  std::vector<std::uint32_t> segments;  // where each begins
  std::uint32_t temporaries = 0;
  std::vector<std::shared_ptr<const HostFunction>> hosts;  // that it calls
};

}  // namespace tarnkit::detail
