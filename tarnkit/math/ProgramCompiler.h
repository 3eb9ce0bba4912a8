#pragma once

#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tarnkit/math/BuiltinFunctions.h"
#include "tarnkit/math/ExpressionTree.h"
#include "tarnkit/math/Program.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {
class MXMathEvaluator;
}

namespace tarnkit::detail {

/// Makes a program of a tree for an evaluator: variables become numbered slots, functions of
/// constants their values, and every operation reads leaf operands where they stand. Nothing is
/// reassociated, so the results are those of evaluating the tree, to the bit. Linear in the tree.
class ProgramCompiler {
 public:
  ProgramCompiler(const TreeView& tree, const MXMathEvaluator& evaluator,
                  const std::vector<String>& variables, Program& program);

  /// False when the tree has something that only the tree evaluator can do: random numbers,
  /// registered functions of expressions, unknown names, wrong numbers of arguments.
  bool compile();

 private:
  /// A value that is still to be used: a leaf where it stands, or a result.
  struct Operand {
    Source source;
    std::uint32_t index;
    double constant;
    std::uint32_t held;  // temporaries in use by this operand and those before it
  };

  bool addFunction(std::uint32_t index);
  std::optional<std::uint32_t> slotOf(std::string_view name) const;
  bool foldConstants(const BuiltinFunction& function, std::uint32_t index, std::uint32_t count);
  bool addList(const BuiltinFunction& function, std::uint32_t count);
  void addHostCall(const std::shared_ptr<const HostFunction>& host, std::uint32_t count);
  void addCall(Instruction call, std::uint32_t count);
  void addChain(Operation operation, std::uint32_t count);
  void addUnary(const BuiltinFunction& function, bool argumentIsRadians);
  void addBinary(const BuiltinFunction& function);
  void addPercent(bool ofFirst);

  void applyUnary(Operation operation, double (*function)(double) = nullptr);
  void applyBinary(Operation operation, double (*function)(double, double) = nullptr);
  void emit(Instruction instruction);
  void push(Source source, std::uint32_t index = 0, double constant = 0);
  std::uint32_t held() const noexcept { return operands_.empty() ? 0 : operands_.back().held; }
  std::uint32_t putAside();
  void storeAccumulator();
  void putAccumulatorAside(Instruction& instruction);
  void setFirst(Instruction& instruction, const Operand& operand);
  void setSecond(Instruction& instruction, const Operand& operand);
  void endSegment();

  TreeView tree_;
  const MXMathEvaluator& evaluator_;
  const std::vector<String>& variables_;
  std::unordered_map<std::string_view, std::uint32_t> slots_;  // where there are many variables
  Program& program_;
  std::vector<Operand> operands_;
  std::optional<std::size_t> inAccumulator_;  // which operand, if any
  std::size_t segmentLength_ = 0;
};

}  // namespace tarnkit::detail
