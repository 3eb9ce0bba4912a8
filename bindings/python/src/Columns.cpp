#include <pybind11/numpy.h>

#include <algorithm>

#include "bindings/python/src/ExpressionObjects.h"
#include "bindings/python/src/Values.h"

// Expressions over arrays of NumPy, through the prepared columns.
namespace tarnkit::python {

namespace {

using Column = py::array_t<double, py::array::c_style | py::array::forcecast>;

bool overlap(const Column& column, const double* from, py::ssize_t count) {
  const auto* const begin = column.data();
  return begin < from + count && from < begin + count;
}

// While a thread evaluates without the interpreter's lock nobody may change the evaluator.
class Use {
 public:
  explicit Use(Evaluator* evaluator) : evaluator_(evaluator) {
    if (evaluator_) ++evaluator_->uses;
  }
  ~Use() {
    if (evaluator_) --evaluator_->uses;
  }
  Use(const Use&) = delete;
  Use& operator=(const Use&) = delete;

 private:
  Evaluator* evaluator_;
};

std::vector<py::ssize_t> shapeOf(const py::array& array) {
  return {array.shape(), array.shape() + array.ndim()};
}

// Double, in one piece and writable: written where it is.
py::array_t<double> resultFor(const py::object& out, const std::vector<py::ssize_t>& shape) {
  if (out.is_none()) return py::array_t<double>(shape);
  const bool fits = py::isinstance<py::array_t<double, py::array::c_style>>(out);
  if (!fits || shapeOf(py::reinterpret_borrow<py::array>(out)) != shape) {
    throw py::type_error("out is an array of float64 in one piece, of the shape of the values");
  }
  auto array = py::reinterpret_borrow<py::array_t<double>>(out);
  if (!array.writeable()) throw py::value_error("out cannot be written");
  return array;
}

// The values of one variable: a column, or a scalar so many times that it serves a piece of rows,
// which stays in the cache.
constexpr std::size_t kRowsWithScalars = 1024;
struct Operand {
  const double* column;
  std::vector<double> scalar;
};

bool evaluateRows(const MXCompiledExpression& prepared, const std::vector<Operand>& operands,
                  std::size_t count, double* results, MXError* error) {
  const bool hasScalars = std::any_of(operands.begin(), operands.end(),
                                      [](const Operand& operand) { return !operand.column; });
  const std::size_t step = hasScalars ? kRowsWithScalars : std::max<std::size_t>(count, 1);
  std::vector<const double*> starts(operands.size());
  for (std::size_t from = 0; from < count; from += step) {
    for (std::size_t i = 0; i < operands.size(); ++i) {
      const auto& [column, scalar] = operands[i];
      starts[i] = column ? column + from : scalar.data();
    }
    const std::size_t rows = std::min(step, count - from);
    if (!prepared.evaluate(starts, rows, results + from, error)) return false;
  }
  return true;
}

}  // namespace

bool isColumn(py::handle value) {
  return !PyFloat_Check(value.ptr()) && !PyLong_Check(value.ptr()) &&
         !PyUnicode_Check(value.ptr()) && py::hasattr(value, "__array_interface__") &&
         py::cast<py::ssize_t>(value.attr("ndim")) > 0;
}

py::object evaluateColumns(Expression& expression, const py::dict& values, const py::object& out) {
  if (expression.evaluator().usesHighPrecisionEvaluation()) {
    throw py::type_error("an evaluator of decimals has no arrays");
  }
  // Kept: another thread may have the expression prepared anew.
  const Ref<const MXCompiledExpression> prepared = &expression.prepared();
  bool hasShape = false;
  std::vector<py::ssize_t> shape;
  if (!out.is_none() && isColumn(out)) {
    shape = shapeOf(py::reinterpret_borrow<py::array>(out));
    hasShape = true;
  }
  std::vector<Column> columns;
  for (const auto& variable : prepared->variables()) {
    const py::object name = text(variable);
    if (!values.contains(name)) {
      throwExpressionError(MXError(MXErrorCode::invalidVariable,
                                   "no value for the variable " + variable.toStdString()),
                           expression.text);
    }
    const py::object value = values[name];
    if (!isColumn(value)) {
      columns.emplace_back();
      continue;
    }
    auto column = Column::ensure(value);
    if (!column) throw py::type_error("an array of values has numbers");
    if (hasShape && shapeOf(column) != shape) {
      throw py::value_error("the arrays have different shapes");
    }
    shape = shapeOf(column);
    hasShape = true;
    columns.push_back(std::move(column));
  }
  // An expression without variables, and arrays for others.
  if (!hasShape) {
    for (const auto& [name, value] : values) {
      if (isColumn(value)) shape = shapeOf(py::array::ensure(value));
    }
  }

  auto result = resultFor(out, shape);
  const py::ssize_t count = result.size();
  std::vector<Operand> operands;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const py::object value = values[text(prepared->variables()[i])];
    if (isColumn(value)) {
      if (!out.is_none() && overlap(columns[i], result.data(), count)) {
        throw py::value_error("out is one of the arrays of values");
      }
      operands.push_back({columns[i].data(), {}});
      continue;
    }
    const double number = PyFloat_AsDouble(value.ptr());
    if (number == -1 && PyErr_Occurred()) throw py::error_already_set();
    operands.push_back({nullptr, std::vector<double>(kRowsWithScalars, number)});
  }

  MXError error;
  double* const to = result.mutable_data();
  Evaluator* const own = expression.own();
  bool isDone = false;
  if (own && !own->functions.empty()) {
    isDone = evaluateRows(*prepared, operands, static_cast<std::size_t>(count), to, &error);
  } else {
    const Use use(own);
    const py::gil_scoped_release released;
    isDone = evaluateRows(*prepared, operands, static_cast<std::size_t>(count), to, &error);
  }
  if (!isDone) throwExpressionError(error, expression.text);
  return result;
}

}  // namespace tarnkit::python
