#pragma once

#include <atomic>
#include <memory>

#include "bindings/python/src/Errors.h"
#include "tarnkit/math/MXCompiledExpression.h"
#include "tarnkit/math/MXMathEvaluator.h"

namespace tarnkit::python {

/// A function of Python's that expressions call; emptied when Python's collector says so.
struct OwnFunction {
  py::object callable;
};

/// What Python's `Evaluator` is: an evaluator with the functions that Python gave it.
struct Evaluator {
  Ref<MXMathEvaluator> evaluator = make<MXMathEvaluator>();
  std::vector<std::shared_ptr<OwnFunction>> functions;
  /// Grows with every change of what prepared expressions have taken from it.
  std::uint64_t version = 0;
  /// How many threads evaluate without the interpreter's lock.
  std::atomic<int> uses = 0;

  void requireUnused() const;
};

/// What Python's `Expression` is: a tree, its text, and who evaluates it.
struct Expression {
  Expression(Ref<MXExpression> treeOf, std::string textOf, std::string sourceOf, py::object ownerOf)
      : tree(std::move(treeOf)),
        text(std::move(textOf)),
        source(std::move(sourceOf)),
        owner(std::move(ownerOf)) {}

  Ref<MXExpression> tree;
  std::string text;
  /// The text that places in errors are about: that of the expression of which it is a part.
  std::string source;
  py::object owner;  // the Evaluator; None for the common one

  Evaluator* own() const;
  MXMathEvaluator& evaluator() const;
  /// Prepared anew when the evaluator has changed.
  const MXCompiledExpression& prepared();
  /// `ExpressionError`.
  [[noreturn]] void fail(const MXError& error) const;

 private:
  Ref<MXCompiledExpression> prepared_;
  std::uint64_t preparedVersion_ = 0;
};

/// The exception that a function of Python's has raised during an evaluation comes out of it.
void rethrowOwnFailure();
void keepOwnFailure(py::error_already_set& failure);
/// What the engine is to know of a value of a variable. `TypeError` for what is none.
MXSubstitutions substitutionsFrom(const py::dict& values);
/// The values for columns of values, some of which may be scalars.
py::object evaluateColumns(Expression& expression, const py::dict& values, const py::object& out);
/// Whether a value is an array, and no scalar.
bool isColumn(py::handle value);

}  // namespace tarnkit::python
