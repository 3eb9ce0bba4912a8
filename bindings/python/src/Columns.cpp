#include <pybind11/numpy.h>

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

// The error of the engine's for the first variable that has no value, which knows its place.
[[noreturn]] void failWithoutValues(const Expression& expression, const py::dict& values,
                                    const String& variable) {
  py::dict others;
  for (const auto& [name, value] : values) others[name] = py::float_(1.0);
  MXError error;
  if (expression.evaluator().evaluateExpression(*expression.tree, substitutionsFrom(others),
                                                &error)) {
    error = MXError(MXErrorCode::invalidVariable,
                    "no value for the variable " + variable.toStdString());
  }
  expression.fail(error);
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
    if (!values.contains(name)) failWithoutValues(expression, values, variable);
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
  std::vector<MXColumn> operands(columns.size());
  std::vector<double> constants(columns.size());
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const py::object value = values[text(prepared->variables()[i])];
    if (isColumn(value)) {
      if (!out.is_none() && overlap(columns[i], result.data(), count)) {
        throw py::value_error("out is one of the arrays of values");
      }
      operands[i].values = columns[i].data();
      continue;
    }
    constants[i] = PyFloat_AsDouble(value.ptr());
    if (constants[i] == -1 && PyErr_Occurred()) throw py::error_already_set();
    operands[i] = {&constants[i], true};
  }

  MXError error;
  double* const to = result.mutable_data();
  Evaluator* const own = expression.own();
  bool isDone = false;
  if (own && !own->functions.empty()) {
    isDone = prepared->evaluate(operands, static_cast<std::size_t>(count), to, &error);
  } else {
    const Use use(own);
    const py::gil_scoped_release released;
    isDone = prepared->evaluate(operands, static_cast<std::size_t>(count), to, &error);
  }
  if (!isDone) expression.fail(error);
  return result;
}

}  // namespace tarnkit::python
