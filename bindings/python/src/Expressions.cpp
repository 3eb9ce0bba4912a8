#include <pybind11/stl.h>

#include <algorithm>

#include "bindings/python/src/ExpressionObjects.h"
#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/platform/numbers/Number.h"

namespace tarnkit::python {

namespace {

// Of the thread whose evaluation calls back.
thread_local std::unique_ptr<py::error_already_set> ownFailure;

py::object toNumber(const MXNumber& number, bool asDecimal) {
  if (!asDecimal) return py::float_(number.doubleValue());
  return py::module_::import("decimal").attr("Decimal")(number.text());
}

Ref<Object> substitutionFrom(py::handle value) {
  if (py::isinstance<Expression>(value)) {
    return Ref<Object>(value.cast<Expression&>().tree.get());
  }
  if (PyUnicode_Check(value.ptr())) {
    return Ref<Object>(String(viewOf(value, "a value")).object().get());
  }
  const bool isDecimal = py::isinstance(value, py::module_::import("decimal").attr("Decimal"));
  if (isDecimal || (PyLong_Check(value.ptr()) && !PyBool_Check(value.ptr()))) {
    const auto decimal = Decimal::fromText(py::str(value).cast<std::string>());
    if (decimal && !decimal->isNaN()) {
      return Ref<Object>(MXExpression::numberExpressionWithNumber(MXNumber(*decimal)).get());
    }
  }
  const double number = PyFloat_AsDouble(value.ptr());
  if (number == -1 && PyErr_Occurred()) throw py::error_already_set();
  return Ref<Object>(MXExpression::numberExpressionWithNumber(MXNumber(number)).get());
}

// Bytes of UTF-8 as characters of Python's.
std::size_t charactersIn(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

// `source` is the text in which the error has its place, `text` that of the expression itself.
[[noreturn]] void throwExpressionError(const MXError& error, std::string_view expression,
                                       std::string_view source) {
  rethrowOwnFailure();
  py::object name = py::none();
  for (const auto& [key, value] : error.userInfo()) name = text(value);
  py::object offset = py::none();
  py::object length = py::none();
  if (error.hasPlace() && error.offset() + error.length() <= source.size()) {
    expression = source;
    offset = py::int_(charactersIn(source.substr(0, error.offset())));
    length = py::int_(charactersIn(source.substr(error.offset(), error.length())));
  }
  const py::object type = plainType("ExpressionError");
  const py::object made =
      type(text(std::string_view(error.localizedDescription())), static_cast<int>(error.code()),
           text(expression), name, offset, length);
  PyErr_SetObject(type.ptr(), made.ptr());
  throw py::error_already_set();
}

Expression parse(const std::string& text, const py::object& evaluator) {
  if (!evaluator.is_none() && !py::isinstance<Evaluator>(evaluator)) {
    failWithType(evaluator.ptr(), "tarnkit.Evaluator");
  }
  MXError error;
  auto tree = MXExpression::expressionFromString(text, &error);
  if (!tree) throwExpressionError(error, text, text);
  return Expression(std::move(tree), text, text, evaluator);
}

Expression derived(const Expression& from, const Ref<MXExpression>& tree) {
  return Expression(tree, tree->description().toStdString(), from.source, from.owner);
}

py::object evaluateOnce(const Expression& expression, const py::dict& values) {
  MXError error;
  const auto number = expression.evaluator().evaluateExpression(*expression.tree,
                                                                substitutionsFrom(values), &error);
  if (!number) expression.fail(error);
  return toNumber(*number, expression.evaluator().usesHighPrecisionEvaluation());
}

py::object evaluate(Expression& expression, const py::object& given, const py::object& out,
                    const py::kwargs& named) {
  py::dict values;
  if (!given.is_none()) values.attr("update")(given);
  if (!named.empty()) values.attr("update")(named);
  bool hasColumns = !out.is_none();
  for (const auto& [name, value] : values) hasColumns = hasColumns || isColumn(value);
  return hasColumns ? evaluateColumns(expression, values, out) : evaluateOnce(expression, values);
}

void registerOwn(Evaluator& self, const std::string& name, const py::object& callable) {
  if (!PyCallable_Check(callable.ptr())) failWithType(callable.ptr(), "function");
  self.requireUnused();
  const auto function = std::make_shared<OwnFunction>(OwnFunction{callable});
  const bool isNew = self.evaluator->registerNumberFunction(
      [function](std::span<const double> arguments, MXError*) -> std::optional<double> {
        const py::gil_scoped_acquire acquired;
        try {
          if (!function->callable) return std::nullopt;
          py::tuple given(arguments.size());
          for (std::size_t i = 0; i < arguments.size(); ++i) given[i] = py::float_(arguments[i]);
          return py::cast<double>(py::float_(function->callable(*given)));
        } catch (py::error_already_set& failure) {
          keepOwnFailure(failure);
          return std::nullopt;
        }
      },
      String(name));
  if (!isNew) throwRefused("there is a function of that name already");
  self.functions.push_back(function);
  ++self.version;
}

int traverse(PyObject* self, visitproc visit, void* arg) {
  Py_VISIT(Py_TYPE(self));
  auto* const instance = reinterpret_cast<py::detail::instance*>(self);
  if (!instance->get_value_and_holder().holder_constructed()) return 0;
  for (const auto& function : py::cast<Evaluator&>(py::handle(self)).functions) {
    Py_VISIT(function->callable.ptr());
  }
  return 0;
}

int clear(PyObject* self) {
  auto* const instance = reinterpret_cast<py::detail::instance*>(self);
  if (!instance->get_value_and_holder().holder_constructed()) return 0;
  for (const auto& function : py::cast<Evaluator&>(py::handle(self)).functions) {
    function->callable = py::object();
  }
  return 0;
}

void defineEvaluator(py::module_& module) {
  const auto collected = py::custom_type_setup([](PyHeapTypeObject* heap) {
    auto& type = heap->ht_type;
    type.tp_flags |= Py_TPFLAGS_HAVE_GC;
    type.tp_traverse = traverse;
    type.tp_clear = clear;
  });
  py::class_<Evaluator, std::shared_ptr<Evaluator>>(
      module, "Evaluator",
      "Evaluator(*, degrees=False, decimals=False, functions_as_variables=True, seed=None)\n--\n\n"
      "Computes expressions: whether angles are in degrees, whether in decimals of 38 digits, "
      "whether a name that is no function is a variable (otherwise only \"$x\" is one), and with "
      "which functions of one's own.",
      collected, plainClass())
      .def(py::init([](bool degrees, bool decimals, bool functionsAsVariables,
                       const std::optional<std::uint64_t>& seed) {
             auto made = std::make_shared<Evaluator>();
             auto& evaluator = *made->evaluator;
             if (degrees) evaluator.setAngleMeasurementMode(MXAngleMeasurementMode::degrees);
             evaluator.setUsesHighPrecisionEvaluation(decimals);
             evaluator.setResolvesFunctionsAsVariables(functionsAsVariables);
             if (seed) evaluator.seedRandomNumbers(*seed);
             return made;
           }),
           py::kw_only(), py::arg("degrees") = false, py::arg("decimals") = false,
           py::arg("functions_as_variables") = true, py::arg("seed") = py::none())
      .def_property_readonly(
          "degrees",
          [](const Evaluator& e) {
            return e.evaluator->angleMeasurementMode() == MXAngleMeasurementMode::degrees;
          },
          "Whether angles are in degrees, and not in radians: bool.")
      .def_property_readonly(
          "decimals", [](const Evaluator& e) { return e.evaluator->usesHighPrecisionEvaluation(); },
          "Whether it computes in decimals, and not in floats: bool.")
      .def_property_readonly(
          "functions",
          [](const Evaluator& e) {
            py::list names;
            for (const auto& name : e.evaluator->registeredFunctions()) names.append(text(name));
            return names;
          },
          "The names of all functions and their other names: list of str.")
      .def("register", registerOwn, py::arg("name"), py::arg("function"),
           "register(self, name, function)\n--\n\nMakes a function of floats one that expressions "
           "call; what it raises comes out of the evaluation. RefusedError when the name is taken.")
      .def(
          "alias",
          [](Evaluator& self, const std::string& alias, const std::string& function) {
            self.requireUnused();
            if (!self.evaluator->addAlias(String(alias), String(function))) {
              throwRefused("there is a function of that name already");
            }
            ++self.version;
          },
          py::arg("alias"), py::arg("function"),
          "alias(self, alias, function)\n--\n\nMakes another name for a function.")
      .def(
          "unregister",
          [](Evaluator& self, const std::string& name) {
            self.requireUnused();
            self.evaluator->unregisterFunctionWithName(String(name));
            ++self.version;
          },
          py::arg("name"),
          "unregister(self, name)\n--\n\nForgets a function of one's own, or another name.");
}

}  // namespace

void Evaluator::requireUnused() const {
  if (uses.load() != 0) throwRefused("another thread evaluates with it");
}

Evaluator* Expression::own() const { return owner.is_none() ? nullptr : &owner.cast<Evaluator&>(); }

MXMathEvaluator& Expression::evaluator() const {
  if (const auto* const mine = own()) return *mine->evaluator;
  // Not the engine's default one, since people write "x" for a variable in Python, and not "$x".
  static auto* const common = new Ref<MXMathEvaluator>([] {
    auto made = make<MXMathEvaluator>();
    made->setResolvesFunctionsAsVariables(true);
    return made;
  }());
  return **common;
}

const MXCompiledExpression& Expression::prepared() {
  const auto* const mine = own();
  const std::uint64_t version = mine ? mine->version : 0;
  if (!prepared_ || preparedVersion_ != version) {
    prepared_ = MXCompiledExpression::compile(tree, &evaluator());
    preparedVersion_ = version;
  }
  return *prepared_;
}

void keepOwnFailure(py::error_already_set& failure) {
  ownFailure = std::make_unique<py::error_already_set>(failure);
}

void rethrowOwnFailure() {
  if (!ownFailure) return;
  const auto failure = std::move(ownFailure);
  throw py::error_already_set(*failure);
}

void Expression::fail(const MXError& error) const { throwExpressionError(error, text, source); }

MXSubstitutions substitutionsFrom(const py::dict& values) {
  MXSubstitutions substitutions;
  for (const auto& [name, value] : values) {
    substitutions.set(stringFrom(name, "a variable"), substitutionFrom(value));
  }
  return substitutions;
}

void defineExpressions(py::module_& module) {
  defineEvaluator(module);
  py::class_<Expression>(module, "Expression",
                         "Expression(text, evaluator=None)\n--\n\n"
                         "A formula, as people type it: `Expression(\"sqrt(x**2 + y**2)\")`. Does "
                         "not change; may be evaluated by several threads.",
                         plainClass())
      .def(py::init(&parse), py::arg("text"), py::arg("evaluator") = py::none())
      .def_property_readonly(
          "text", [](const Expression& e) { return text(std::string_view(e.text)); },
          "What it was made from: str.")
      .def_property_readonly(
          "variables",
          [](Expression& e) {
            py::list names;
            for (const auto& name : e.prepared().variables()) names.append(text(name));
            return py::tuple(names);
          },
          "The names of its variables, in the order of their first appearance: tuple of str.")
      .def_property_readonly(
          "evaluator", [](const Expression& e) { return e.owner; },
          "Who evaluates it: Evaluator, or None for the default one.")
      .def_property_readonly(
          "kind",
          [](const Expression& e) {
            switch (e.tree->expressionType()) {
              case MXExpressionType::number:
                return "number";
              case MXExpressionType::variable:
                return "variable";
              default:
                return "function";
            }
          },
          "\"number\", \"variable\" or \"function\": str.")
      .def_property_readonly(
          "name",
          [](const Expression& e) -> py::object {
            switch (e.tree->expressionType()) {
              case MXExpressionType::number:
                return py::none();
              case MXExpressionType::variable:
                return text(e.tree->variable());
              default:
                return text(e.tree->function());
            }
          },
          "The name of the variable or the function; None of a number.")
      .def_property_readonly(
          "number",
          [](const Expression& e) {
            const bool isNumber = e.tree->expressionType() == MXExpressionType::number;
            return isNumber ? toNumber(e.tree->number(), true) : py::object(py::none());
          },
          "The value of a number, with all its digits: decimal.Decimal; None of anything else.")
      .def_property_readonly(
          "arguments",
          [](const Expression& e) {
            py::list list;
            if (e.tree->expressionType() == MXExpressionType::function) {
              for (const auto& argument : e.tree->arguments()) list.append(derived(e, argument));
            }
            return py::tuple(list);
          },
          "The arguments of a function: tuple of Expression.")
      .def("evaluate", evaluate, py::arg("values") = py::none(), py::pos_only(), py::kw_only(),
           py::arg("out") = py::none(),
           "evaluate(self, values=None, /, *, out=None, **variables)\n--\n\n"
           "The value for values of the variables, by name or in a mapping: numbers, "
           "decimal.Decimal, texts and expressions (which are evaluated in their place), or arrays "
           "of NumPy.\n\n"
           "With arrays, which have one shape, the result is an array of that shape, or goes to "
           "`out`; arrays of float64 are read where they are, without the interpreter's lock. "
           "ExpressionError when there is no value.")
      .def(
          "simplified",
          [](Expression& e) {
            MXError error;
            const auto tree = e.tree->simplifiedExpressionWithEvaluator(&e.evaluator(), &error);
            if (!tree) e.fail(error);
            return derived(e, tree);
          },
          "simplified(self)\n--\n\nThe expression with what has a value replaced by it.")
      .def(
          "rewritten",
          [](Expression& e) {
            return derived(e, e.evaluator().expressionByRewritingExpression(e.tree));
          },
          "rewritten(self)\n--\n\nThe expression by the engine's rules: \"x + 0\" is \"x\".")
      .def("__str__", [](const Expression& e) { return text(e.tree->description()); })
      .def("__repr__",
           [](const Expression& e) {
             return text("tarnkit.Expression(" +
                         py::repr(text(std::string_view(e.text))).cast<std::string>() + ")");
           })
      .def("__eq__",
           [](const Expression& e, const py::object& other) {
             return py::isinstance<Expression>(other) &&
                    e.tree->isEqual(*other.cast<Expression&>().tree);
           })
      .def("__hash__", [](const Expression& e) { return e.tree->hash(); })
      .def("__reduce__", [](const Expression& e) {
        if (!e.owner.is_none()) {
          throw py::type_error(
              "an expression with an evaluator of its own cannot be copied or "
              "pickled: an evaluator has functions that only its process has");
        }
        return py::make_tuple(py::type::of<Expression>(),
                              py::make_tuple(text(std::string_view(e.text))));
      });
}

}  // namespace tarnkit::python
