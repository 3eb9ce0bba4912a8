#include <gtest/gtest.h>

#include <chrono>
#include <tuple>

#include "FakeOwner.h"
#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/patches/HXRValueParameters.h"
#include "tarnkit/patches/catalogue/math/FirstOccurrences.h"
#include "tarnkit/patches/catalogue/math/HXRMathExpressionNode.h"
#include "tarnkit/patches/catalogue/utility/HXRJavascriptExpressionNode.h"
#include "tarnkit/patches/catalogue/utility/ScriptSignature.h"
#include "tarnkit/platform/system/Log.h"
#include "tests/ProcessorTime.h"

namespace tarnkit {
namespace {

constexpr auto kIn = HXOrientationInput;

/// Collects the log's lines while it lives.
class LogCapture {
 public:
  LogCapture()
      : earlier_(Log::setSink([this](std::string_view line) { lines.emplace_back(line); })) {}
  ~LogCapture() { Log::setSink(std::move(earlier_)); }
  Texts take() { return std::exchange(lines, {}); }
  Texts lines;

 private:
  Log::Sink earlier_;
};

/// The editor's twin of a text parameter: holds the value, and has the change come back to the
/// definition as the editor node does.
class TextTwin final : public HXRParameterTwin, public HXRValueHolder<String> {
  TARNKIT_CLASS
 public:
  explicit TextTwin(HXRParameter& parameter)
      : parameter_(&parameter), value_(as<HXRStringParameter>(&parameter)->defaultValue()) {
    parameter.setParameter(this);
  }
  HXRValueHolderKind valueHolder() override { return static_cast<HXRValueHolder<String>*>(this); }
  String value() const override { return value_; }
  void setValue(String value) override {
    value_ = std::move(value);
    parameter_->node()->parameterValueDidChange(*parameter_);
  }

 private:
  HXRParameter* parameter_;
  String value_;
};
const Class TextTwin::kClass{"TextTwin", &Object::kClass};

/// An expression definition with its editor's side.
struct Fixture {
  explicit Fixture(const HXRNodeClass& patchClass) : definition(patchClass.makeDefinition()) {
    definition->setNode(owner.get());
    for (const auto& parameter : definition->parameters()) {
      twins.push_back(make<TextTwin>(*parameter));
    }
  }
  void edit(const std::string& text) { twins[0]->setValue(String(text)); }
  Texts variables() const { return namesOfGroup(*definition, kIn, "Variables"); }
  Texts keys() const { return keysOfGroup(*definition, kIn, "Variables"); }

  Ref<FakeOwner> owner = make<FakeOwner>();
  Ref<HXRNode> definition;
  std::vector<Ref<TextTwin>> twins;
};

TEST(MathExpressionPatch, InputsFollowTheVariables) {
  Fixture f(HXRMathExpressionNode::kClass);
  EXPECT_EQ(f.variables(), (Texts{"a", "b"}));
  EXPECT_EQ(f.keys(), (Texts{"Tarn.aInput", "Tarn.bInput"}));
  f.edit("$b + $a");  // the same variables: nothing to announce, and they keep their places
  EXPECT_EQ(f.variables(), (Texts{"a", "b"}));
  EXPECT_TRUE(f.owner->take().empty());
  const auto variables = static_cast<HXRMathExpressionNode&>(*f.definition).variableInputs();
  EXPECT_EQ(variables.size(), 2U);
  EXPECT_EQ(variables.get("b").get(), f.definition->portForKey("Tarn.bInput"));
  f.owner->take();
  f.edit("$b * $c");
  EXPECT_EQ(f.owner->take(), (Texts{"-Tarn.aInput", "+Tarn.cInput"}));
  EXPECT_EQ(f.variables(), (Texts{"b", "c"}));
  const auto* const port = as<HXRPrimitiveInputPort>(f.definition->portForKey("Tarn.cInput"));
  ASSERT_TRUE(port);
  EXPECT_TRUE(port->defaultValue()->isEqual(*PMRPrimitive::primitiveWithNumberValue(0)));

  LogCapture log;
  f.edit("$b + \"");
  ASSERT_EQ(log.lines.size(), 1U);
  EXPECT_EQ(log.lines[0].rfind("WARNING: [HXRMathExpression] ", 0), 0U) << log.lines[0];
  EXPECT_TRUE(f.variables().empty());
  EXPECT_TRUE(f.definition->portForKey("Tarn.resultOutput"));
  f.edit("");
  EXPECT_TRUE(f.variables().empty());
}

TEST(ExpressionPatches, AnObserverMayChangeTheTextMeanwhile) {
  for (const auto& [patchClass, first, second] :
       {std::tuple{&HXRMathExpressionNode::kClass, "$c + $d + $e", "$x + $y"},
        std::tuple{&HXRJavascriptExpressionNode::kClass, "function expression(c, d, e)",
                   "function expression(x, y)"}}) {
    Fixture f(*patchClass);
    int steps = 0;
    f.owner->observer = [&, text = second] {
      if (++steps == 2) f.edit(text);
    };
    f.edit(first);
    EXPECT_EQ(f.variables(), (Texts{"x", "y"})) << patchClass->name();
    EXPECT_EQ(f.owner->rebuildsAtSteps, std::vector<int>(f.owner->take().size(), 1));
    EXPECT_EQ(f.owner->rebuilds, 0);
  }
}

TEST(MathExpressionPatch, VariablesStandByTheFirstPlaceOfTheirText) {
  const std::pair<const char*, Texts> cases[] = {
      {"$b + $a + $b", {"b", "a"}},
      // "x" occurs inside of "max" before it is a variable, and "y z" is one quoted name.
      {"max($z, $x)", {"x", "z"}},
      {"1 + 2", {}},
      {nullptr, {}},
  };
  for (const auto& [expression, names] : cases) {
    Texts found;
    for (const String& name : HXRMathExpressionNode::trn_variablesForExpression(expression)) {
      found.push_back(name.toStdString());
    }
    EXPECT_EQ(found, names) << (expression ? expression : "nil");
  }
}

TEST(MathExpressionPatch, FirstOccurrencesAreThoseOfPlainSearch) {
  const std::string text = "abracadabra cabab 世界 aab";
  std::vector<String> names;
  std::vector<std::size_t> expected;
  for (const char* name : {"a", "ab", "abr", "bra", "cadab", "cab", "abab", "aab", "b", "界", "zz",
                           "abracadabra", "ra c", "dabra cabab 世界 aab", ""}) {
    names.emplace_back(name);
    expected.push_back(*name ? text.find(name) : text.npos);
  }
  EXPECT_EQ(detail::firstOccurrences(text, names), expected);
}

TEST(MathExpressionPatch, TakesExpressionsOfManyVariablesInLinearTime) {
  std::string text;
  for (int i = 0; i < 50000; ++i) text += "+$variable" + std::to_string(i);
  const auto start = test::ProcessorTime::now();
  EXPECT_EQ(HXRMathExpressionNode::trn_variablesForExpression(String(text)).size(), 50000U);
  EXPECT_LT(test::ProcessorTime::now() - start, std::chrono::seconds(20));
}

TEST(JavascriptExpressionPatch, InputsFollowTheSignature) {
  Fixture f(HXRJavascriptExpressionNode::kClass);
  EXPECT_TRUE(f.twins[1]->value().isNil());
  EXPECT_TRUE(f.definition->parameters()[1]->hidden());
  EXPECT_TRUE(f.variables().empty());
  EXPECT_EQ(as<HXRStringParameter>(f.definition->parameters()[0].get())->displayStyle(), 1);
  LogCapture log;
  f.definition->parameterValueDidChange(*f.definition->parameters()[0]);
  EXPECT_EQ(log.take(), Texts{"No function found."});
  EXPECT_EQ(f.twins[1]->value(), "");

  f.edit("function expression(x, y) {}");
  EXPECT_EQ(f.twins[1]->value(), "x, y");
  EXPECT_EQ(f.owner->take(), (Texts{"copied", "+Tarn.xinput", "+Tarn.yinput"}));
  const auto ports = static_cast<HXRJavascriptExpressionNode&>(*f.definition).inputPorts();
  EXPECT_EQ(ports.size(), 2U);
  EXPECT_EQ(ports[0].get(), f.definition->portForKey("Tarn.xinput"));
  f.edit("function expression(z, y) {}");
  EXPECT_EQ(f.owner->take(), (Texts{"-Tarn.xinput", "+Tarn.zinput"}));
  EXPECT_EQ(f.variables(), (Texts{"y", "z"}));
  f.edit("function expression( x ,, x ) {}");
  EXPECT_EQ(f.twins[1]->value(), "x, x");
  EXPECT_EQ(f.keys(), Texts{"Tarn.xinput"});
  f.edit("x + y");
  EXPECT_EQ(log.take(), Texts{"No function found."});
  EXPECT_TRUE(f.variables().empty());
  EXPECT_TRUE(f.definition->portForKey("Tarn.errorOutput"));
}

TEST(JavascriptExpressionPatch, FindsTheSignature) {
  const std::pair<const char*, String> cases[] = {
      {"function expression(x, y) {", "x, y"},
      {"FUNCTION\n\tExpression  \n (a)", "a"},
      // To the last parenthesis of the line, as greedy matching does.
      {"function expression(x) { return (x); }", "x) { return (x"},
      {"function expression(x)\n(y)", "x"},
      {"function expression(x)\r(y)", "x"},
      {"function expression(x)\v(y)", "x"},
      {"function expression(x)\u0085(y)", "x"},
      {"function expression(x)\u2028(y)", "x"},
      {"function expression(x)\u2029(y)", "x"},
      {"function expression(x)\t(y)", "x)\t(y"},
      {"function expression()", nullptr},
      {"function expression() {} ()", ") {} ("},
      {"function expression(a\n, b)", nullptr},
      {"function expression(\n) function expression(b)", "b"},
      {"function expressions(x)", nullptr},
      {"functionexpression(x)", nullptr},
      {"my function expression( ü\xC2\xA0) //", " ü\xC2\xA0"},
      {"function function expression(x)", "x"},
      {"function expression(x", nullptr},
      {"", nullptr},
      {nullptr, nullptr},
  };
  for (const auto& [script, signature] : cases) {
    EXPECT_EQ(detail::scriptSignature(script), signature) << (script ? script : "nil");
  }
}

TEST(JavascriptExpressionPatch, TakesScriptsOfAnyContentInLinearTime) {
  std::string openings;
  for (int i = 0; i < 100000; ++i) openings += "function expression(";
  std::string names = "function expression(";
  for (int i = 0; i < 20000; ++i) names += "n" + std::to_string(i) + ",";
  const auto start = test::ProcessorTime::now();
  EXPECT_TRUE(detail::scriptSignature(String(openings)).isNil());
  EXPECT_TRUE(detail::scriptSignature(String("function" + std::string(2000000, ' '))).isNil());
  Fixture f(HXRJavascriptExpressionNode::kClass);
  f.edit(names + ")");
  EXPECT_EQ(f.keys().size(), 20000U);
  EXPECT_LT(test::ProcessorTime::now() - start, std::chrono::seconds(20));
}

}  // namespace
}  // namespace tarnkit
