#include <gtest/gtest.h>

#include <stdexcept>

#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/patches/HXRReplicatorArrayOutputPort.h"
#include "tarnkit/patches/HXRTypedPorts.h"
#include "tarnkit/patches/PatchColors.h"

namespace tarnkit {
namespace {

/// An editor port as far as the replicator's output needs one.
class FakePatchPort final : public HXRCollectedPort {
  TARNKIT_CLASS
 public:
  String symbolicPortName() const override { return "Published"; }
};
const Class FakePatchPort::kClass{"FakePatchPort", &Object::kClass};

template <class Port>
Ref<HXRPort> port() {
  return make<Port>("Name", "Tarn.key");
}

struct Row {
  Ref<HXRPort> port;
  const char* name;
  std::int32_t orientation;
  std::int32_t relationship;
  const char* processClassName;
  RGBA color;
  /// The outputs it takes, by the row's name.
  std::vector<std::string_view> takes;
};

constexpr auto kIn = HXOrientationInput;
constexpr auto kOut = HXOrientationOutput;
constexpr auto kOne = HXConnectionRelationshipOne;
constexpr auto kMany = HXConnectionRelationshipMany;

std::vector<Row> rows() {
  const RGBA plain = HXPrimaryPatchColor;
  const RGBA view = HXViewPatchColor;
  const RGBA gesture = HXGesturePatchColor;
  const RGBA interaction = HXInteractionPatchColor;
  const std::vector<std::string_view> inputs = {"value in", "primitive in", "angle in",  "array in",
                                                "dict in",  "image in",     "filter in", "view in"};
  return {
      {make<HXRPort>("N", "k", 7, 8), "port", 7, 8, "PMRPort", plain, {}},
      {make<HXRInputPort>("N", "k", kMany), "in", kIn, kMany, "PMRInputPort", plain, {}},
      {make<HXROutputPort>("N", "k", kOne), "out", kOut, kOne, "PMROutputPort", plain, {}},
      {port<HXRValueInputPort>(),
       "value in",
       kIn,
       kOne,
       "PMRValueInputPort",
       plain,
       {"value out", "primitive out", "array out", "replicator out", "dict out", "image out",
        "filter out", "view out"}},
      {port<HXRValueOutputPort>(), "value out", kOut, kMany, "PMRValueOutputPort", plain, inputs},
      {port<HXRPrimitiveInputPort>(),
       "primitive in",
       kIn,
       kOne,
       "PMRPrimitiveInputPort",
       plain,
       {"primitive out"}},
      {port<HXRPrimitiveOutputPort>(),
       "primitive out",
       kOut,
       kMany,
       "PMRPrimitiveOutputPort",
       plain,
       {}},
      {port<HXRAngleInputPort>(),
       "angle in",
       kIn,
       kOne,
       "PMRAngleInputPort",
       plain,
       {"primitive out"}},
      {port<HXRArrayInputPort>(),
       "array in",
       kIn,
       kOne,
       "PMRArrayInputPort",
       plain,
       {"array out", "replicator out"}},
      {port<HXRArrayOutputPort>(), "array out", kOut, kMany, "PMRArrayOutputPort", plain, {}},
      {make<HXRReplicatorArrayOutputPort>(make<FakePatchPort>(), "k"),
       "replicator out",
       kOut,
       kMany,
       "PMRArrayOutputPort",
       plain,
       {}},
      {port<HXRDictionaryInputPort>(),
       "dict in",
       kIn,
       kOne,
       "PMRDictionaryInputPort",
       plain,
       {"dict out"}},
      {port<HXRDictionaryOutputPort>(),
       "dict out",
       kOut,
       kMany,
       "PMRDictionaryOutputPort",
       plain,
       {}},
      {port<HXRImageInputPort>(), "image in", kIn, kOne, "PMRImageInputPort", plain, {"image out"}},
      {port<HXRImageOutputPort>(), "image out", kOut, kMany, "PMRImageOutputPort", plain, {}},
      {port<HXRFilterInputPort>(),
       "filter in",
       kIn,
       kOne,
       "PMRFilterInputPort",
       plain,
       {"filter out"}},
      {port<HXRFilterOutputPort>(), "filter out", kOut, kMany, "PMRFilterOutputPort", plain, {}},
      {port<HXRViewInputPort>(), "view in", kIn, kOne, "PMRViewInputPort", view, {"view out"}},
      {port<HXRViewOutputPort>(), "view out", kOut, kMany, "PMRViewOutputPort", view, {}},
      {port<HXRGestureInputPort>(),
       "gesture in",
       kIn,
       kMany,
       "PMRGestureInputPort",
       gesture,
       {"gesture out"}},
      {port<HXRGestureOutputPort>(),
       "gesture out",
       kOut,
       kOne,
       "PMRGestureOutputPort",
       gesture,
       {}},
      {port<HXRInteractionInputPort>(),
       "interaction in",
       kIn,
       kMany,
       "PMRInteractionInputPort",
       interaction,
       {"interaction out"}},
      {port<HXRInteractionOutputPort>(),
       "interaction out",
       kOut,
       kOne,
       "PMRInteractionOutputPort",
       interaction,
       {}},
      {port<HXRFeedbackInputPort>(),
       "feedback in",
       kIn,
       kMany,
       "PMRFeedbackInputPort",
       plain,
       {"feedback out"}},
      {port<HXRFeedbackOutputPort>(),
       "feedback out",
       kOut,
       kOne,
       "PMRFeedbackOutputPort",
       plain,
       {}},
  };
}

TEST(HXRPort, ClassesFixWhatTheTableSays) {
  for (const Row& row : rows()) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.port->orientation(), row.orientation);
    EXPECT_EQ(row.port->connectionRelationship(), row.relationship);
    EXPECT_EQ(row.port->processClassName(), row.processClassName);
    EXPECT_EQ(row.port->defaultColor(), row.color);
    const auto copy = row.port->copy();
    EXPECT_TRUE(copy->isMemberOf(row.port->isa()));
    EXPECT_EQ(copy->name(), row.port->name());
    EXPECT_EQ(copy->uniqueKey(), row.port->uniqueKey());
    EXPECT_EQ(copy->orientation(), row.orientation);
    EXPECT_EQ(copy->connectionRelationship(), row.relationship);
  }
}

TEST(HXRPort, ConnectsAsTheMatrixSays) {
  const auto all = rows();
  for (const Row& row : all) {
    for (const Row& other : all) {
      const bool takes =
          std::find(row.takes.begin(), row.takes.end(), other.name) != row.takes.end();
      EXPECT_EQ(row.port->canConnectToPort(other.port.get()), takes)
          << row.name << " asked about " << other.name;
    }
    EXPECT_FALSE(row.port->canConnectToPort(nullptr));
  }
}

TEST(HXRPort, SharedDescriptionsCannotBeChanged) {
  const auto shared = make<HXRPrimitiveInputPort>("Name", "Tarn.key");
  shared->mapValue(PMRPrimitive::primitiveWithIndexValue(1), "One");
  shared->share();
  EXPECT_NO_THROW(shared->setName("Name"));
  EXPECT_THROW(shared->setName("Other"), std::logic_error);
  EXPECT_THROW(shared->mapValue(nullptr, "One"), std::logic_error);
  EXPECT_THROW(shared->setLockToMappedValues(true), std::logic_error);
  const auto copy = as<HXRPrimitiveInputPort>(shared->copy());
  copy->setName("Other");
  copy->mapValue(nullptr, "One");
  EXPECT_EQ(shared->name(), "Name");
  EXPECT_EQ(shared->mappedValues().size(), 1U);
}

std::vector<std::string> labels(const HXRPrimitiveInputPort& port) {
  std::vector<std::string> labels;
  for (const String& label : port.mappedValueLabels()) labels.push_back(label.toStdString());
  return labels;
}

TEST(HXRPrimitiveInputPort, NamesValues) {
  using Labels = std::vector<std::string>;
  const auto value = [](std::int32_t i) { return PMRPrimitive::primitiveWithIndexValue(i); };
  const auto port = make<HXRPrimitiveInputPort>("Wave", "Tarn.waveInput", value(0));
  port->setLockToMappedValues(true);
  EXPECT_FALSE(port->effectiveLockToMappedValues());  // there is nothing to choose from yet
  port->mapValue(value(0), "Sine");
  port->mapValue(value(1), "Square");
  port->mapValue(value(1), "Rectangle");
  EXPECT_TRUE(port->effectiveLockToMappedValues());
  EXPECT_EQ(labels(*port), (Labels{"Sine", "Square", "Rectangle"}));
  EXPECT_EQ(port->labelForMappedValue(value(1).get()), "Square");
  EXPECT_TRUE(port->labelForMappedValue(PMRPrimitive::primitiveWithNumberValue(1).get()).isNil());
  EXPECT_TRUE(port->labelForMappedValue(nullptr).isNil());

  port->mapValue(value(5), "Sine");  // keeps its place
  EXPECT_EQ(labels(*port), (Labels{"Sine", "Square", "Rectangle"}));
  EXPECT_EQ(port->mappedValueForLabel("Sine")->indexValue(), 5);
  // Every port of a description shares them, in every document.
  EXPECT_TRUE(port->defaultValue()->isFrozen());
  EXPECT_TRUE(port->mappedValueForLabel("Sine")->isFrozen());
  port->mapValue(nullptr, "Sine");
  port->mapValue(value(9), nullptr);
  port->mapValue(nullptr, "Unknown");
  EXPECT_EQ(labels(*port), (Labels{"Square", "Rectangle"}));
  EXPECT_FALSE(port->mappedValueForLabel("Sine"));
  EXPECT_FALSE(port->mappedValueForLabel(nullptr));

  const auto copy = as<HXRPrimitiveInputPort>(port->copy());
  EXPECT_EQ(labels(*copy), labels(*port));
  EXPECT_TRUE(copy->lockToMappedValues());
  EXPECT_EQ(copy->defaultValue(), port->defaultValue());
}

TEST(HXRReplicatorArrayOutputPort, IsNamedAfterTheSymbolicPortAndKeepsThePort) {
  WeakRef<FakePatchPort> collected;
  {
    auto patchPort = make<FakePatchPort>();
    collected = patchPort;
    const auto output = make<HXRReplicatorArrayOutputPort>(patchPort, "Tarn.key");
    patchPort = nullptr;
    EXPECT_EQ(output->name(), "Published");
    EXPECT_EQ(output->port(), collected.get());
    EXPECT_TRUE(collected);
  }
  EXPECT_FALSE(collected);
  EXPECT_TRUE(make<HXRReplicatorArrayOutputPort>(nullptr, "k")->name().isNil());
}

}  // namespace
}  // namespace tarnkit
