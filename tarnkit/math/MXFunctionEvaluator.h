#pragma once

#include <optional>
#include <span>
#include <vector>

#include "tarnkit/math/MXExpression.h"

namespace tarnkit::detail {

/// What a built-in knows beside the values of its arguments.
struct BuiltinCall {
  const BuiltinFunction& function;
  bool degrees = false;
  /// The only argument is a dtor call, so it is in radians already.
  bool argumentIsRadians = false;
  /// What a percentage is taken of.
  MXNumber percentBase = 1;
};

/// The value of a built-in of doubles, `random` and `count` excepted; `arguments` as many as it
/// takes.
double computeBuiltin(const BuiltinFunction& function, const double* arguments, std::size_t count,
                      bool degrees, bool argumentIsRadians, double percentBase);

/// Computes the built-in functions, here in double precision; a subclass may compute in another
/// arithmetic. Owned by an evaluator, to which it refers weakly; safe on any thread.
class MXFunctionEvaluator : public Object {
  TARNKIT_CLASS
 public:
  explicit MXFunctionEvaluator(MXMathEvaluator* evaluator);
  ~MXFunctionEvaluator() override;

  /// The names of all built-ins, sorted.
  static const std::vector<String>& standardFunctions();
  /// Whether the name, in any case, is a built-in's.
  static bool isStandardFunction(std::string_view name) {
    return builtinNamed(name) != Builtin::none;
  }

  /// The value of a function node as a number expression; null on failure.
  Ref<MXExpression> evaluateFunction(const Ref<MXExpression>& function,
                                     const MXSubstitutions& variables, MXError* error) const;

  /// Whether everything is computed in doubles, by `computeBuiltin`.
  virtual bool computesInDoubles() const noexcept { return true; }
  /// Computes a built-in from the values of its arguments, whose number fits.
  virtual std::optional<MXNumber> compute(const BuiltinCall& call,
                                          std::span<const MXNumber> arguments,
                                          MXError* error) const;

 private:
  std::optional<MXNumber> random(std::span<const MXNumber> arguments, MXError* error) const;

  WeakRef<MXMathEvaluator> evaluator_;
};

}  // namespace tarnkit::detail
