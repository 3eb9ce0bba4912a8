#include <gtest/gtest.h>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/HXRValueParameters.h"

namespace tarnkit {
namespace {

/// An editor parameter as far as a description needs one.
template <class Value>
class FakeTwin final : public HXRParameterTwin, public HXRValueHolder<Value> {
  TARNKIT_CLASS
 public:
  HXRValueHolderKind valueHolder() override { return static_cast<HXRValueHolder<Value>*>(this); }
  Value value() const override { return held; }
  void setValue(Value value) override { held = std::move(value); }
  Value held{};
};
template <class Value>
const Class FakeTwin<Value>::kClass{"FakeTwin", &Object::kClass};

template <class Parameter, class Value>
void expectForwarding(const Value& first, const Value& second) {
  const auto parameter = make<Parameter>("Name", "Tarn.keyParameter");
  SCOPED_TRACE(parameter->isa().name());
  parameter->setValue(first);
  EXPECT_EQ(parameter->defaultValue(), first);
  auto twin = make<FakeTwin<Value>>();
  twin->held = first;
  parameter->setParameter(twin.get());
  parameter->setValue(second);
  EXPECT_EQ(parameter->value(), second);
  EXPECT_EQ(twin->held, second);
  EXPECT_EQ(parameter->defaultValue(), first);

  const auto copy = as<Parameter>(parameter->copy());
  EXPECT_TRUE(copy->isMemberOf(parameter->isa()));
  EXPECT_EQ(copy->parameter(), nullptr);
  EXPECT_EQ(copy->value(), first);

  twin = nullptr;  // the twin is held weakly
  EXPECT_EQ(parameter->parameter(), nullptr);
  EXPECT_EQ(parameter->value(), first);
}

TEST(HXRParameter, ForwardsItsValueToTheTwinButKeepsItsDefault) {
  expectForwarding<HXRBooleanParameter>(true, false);
  expectForwarding<HXRNumberParameter>(0.5F, -7.25F);
  expectForwarding<HXRIndexParameter>(std::int32_t{3}, std::int32_t{-4});
  expectForwarding<HXRStringParameter>(String("a"), String("b"));
  expectForwarding<HXRColorParameter>(RGBA{1, 0, 0, 1}, RGBA{0, 1, 0, 1});
  expectForwarding<HXRImageParameter>(Ref<Object>(), Ref<Object>(String("entry").object()));
}

TEST(HXRParameter, ATwinOfAnotherKindIsNone) {
  const auto parameter = make<HXRIndexParameter>("Name", "Tarn.key");
  const auto twin = make<FakeTwin<float>>();
  parameter->setParameter(twin.get());
  EXPECT_EQ(parameter->parameter(), nullptr);
  parameter->setValue(9);
  EXPECT_EQ(parameter->defaultValue(), 9);
}

TEST(HXRParameter, BoundsDoNotClamp) {
  const auto parameter = make<HXRIndexParameter>("Name", "Tarn.key", true);
  parameter->setMinimumValue(1);
  parameter->setMaximumValue(10);
  parameter->setValue(-99);
  const auto copy = as<HXRIndexParameter>(parameter->copy());
  EXPECT_EQ(copy->value(), -99);
  EXPECT_EQ(copy->minimumValue(), 1);
  EXPECT_EQ(copy->maximumValue(), 10);
  EXPECT_TRUE(copy->hidden());
}

TEST(HXRParameter, ClassesNameTheEditorsAndTheDevices) {
  struct Row {
    Ref<HXRParameter> parameter;
    const char* process;
  };
  const Row rows[] = {
      {make<HXRParameter>("N", "k"), "PMRParameter"},
      {make<HXRBooleanParameter>("N", "k"), "PMRBooleanParameter"},
      {make<HXRNumberParameter>("N", "k"), "PMRNumberParameter"},
      {make<HXRIndexParameter>("N", "k"), "PMRIndexParameter"},
      {make<HXRStringParameter>("N", "k"), "PMRStringParameter"},
      {make<HXRColorParameter>("N", "k"), "PMRColorParameter"},
      {make<HXRImageParameter>("N", "k"), "PMRImageParameter"},
  };
  for (const Row& row : rows) EXPECT_EQ(row.parameter->processClassName(), row.process);
  EXPECT_EQ(rows[0].parameter->parameterClass(), nullptr);

  EXPECT_EQ(rows[3].parameter->parameterClass(), nullptr);  // nobody has registered the editor's
  static const Class editorClass{"HXIndexParameter", &Object::kClass};
  ClassRegistry::add(editorClass);
  EXPECT_EQ(rows[3].parameter->parameterClass(), &editorClass);
}

}  // namespace
}  // namespace tarnkit
