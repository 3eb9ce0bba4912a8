#include <gtest/gtest.h>

#include <deque>
#include <limits>

#include "FakeOwner.h"
#include "tarnkit/patches/HXRValueParameters.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/patches/catalogue/animation/HXRSpringNode.h"
#include "tarnkit/patches/catalogue/data/HXRArrayNode.h"
#include "tarnkit/patches/catalogue/data/HXRArrayValuesNode.h"
#include "tarnkit/patches/catalogue/data/HXRDictionaryNode.h"
#include "tarnkit/patches/catalogue/logic/HXRConditionalNode.h"
#include "tarnkit/patches/catalogue/logic/HXRDemultiplexerNode.h"
#include "tarnkit/patches/catalogue/logic/HXRLogicNode.h"
#include "tarnkit/patches/catalogue/logic/HXRMultiplexerNode.h"
#include "tarnkit/patches/catalogue/math/HXRMathNode.h"
#include "tarnkit/patches/catalogue/state/HXRIndexSwitchNode.h"

namespace tarnkit {
namespace {

constexpr auto kIn = HXOrientationInput;
constexpr auto kOut = HXOrientationOutput;
constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();

Ref<HXRNode> definitionOf(const char* name) {
  registerPatchClasses();
  return patchClassNamed(name)->makeDefinition();
}

HXRIndexParameter& countOf(HXRNode& definition) {
  return *as<HXRIndexParameter>(definition.parameters()[0].get());
}

void setCount(HXRNode& definition, std::int32_t count) {
  countOf(definition).setValue(count);
  definition.parameterValueDidChange(countOf(definition));
}

/// One run of ports that follows a count.
struct PortRun {
  const char* patch;
  std::int32_t orientation;
  const char* group;
  std::string keyBefore;
  std::string keyAfter;
  std::string nameBefore;
  const char* portClass;
  /// The groups of that side while the run has ports.
  Texts groups;
};

const PortRun kRuns[] = {
    {"HXRMultiplexerNode",
     kIn,
     "Sources",
     "Tarn.source",
     "Input",
     "Source ",
     "HXRValueInputPort",
     {"__Default", "Sources"}},
    {"HXRDemultiplexerNode",
     kOut,
     "Destinations",
     "Tarn.destination",
     "Output",
     "Destination ",
     "HXRValueOutputPort",
     {"Destinations"}},
    {"HXRIndexSwitchNode",
     kIn,
     "Indices",
     "Tarn.indexSwitch",
     "Input",
     "Index ",
     "HXRPrimitiveInputPort",
     {"__Default", "Indices"}},
    {"HXRArrayNode",
     kIn,
     "Values",
     "Tarn.value",
     "Input",
     "Value ",
     "HXRValueInputPort",
     {"Values"}},
    {"HXRArrayValuesNode",
     kOut,
     "Values",
     "Tarn.value",
     "Output",
     "Value ",
     "HXRValueOutputPort",
     {"Values"}},
};

Texts numbered(const std::string& before, const std::string& after, std::int32_t count) {
  Texts texts;
  for (std::int32_t i = 0; i < count; ++i) texts.push_back(before + std::to_string(i) + after);
  return texts;
}

TEST(VariableArity, PortsFollowTheCountWithinItsUpperBound) {
  // What a caller or an archive may set, and how many ports there are then.
  const std::pair<std::int32_t, std::int32_t> counts[] = {
      {1, 1}, {4, 4}, {100, 100}, {101, 100},     {kLargest, 100}, {3, 3},
      {0, 0}, {2, 2}, {-1, 0},    {kSmallest, 0}, {5, 5},
  };
  for (const PortRun& run : kRuns) {
    SCOPED_TRACE(run.patch);
    const auto definition = definitionOf(run.patch);
    EXPECT_TRUE(definition->portLayout().isShared());
    EXPECT_EQ(groupKeys(*definition, run.orientation), run.groups);
    for (const auto& [count, built] : counts) {
      setCount(*definition, count);
      EXPECT_EQ(keysOfGroup(*definition, run.orientation, run.group),
                numbered(run.keyBefore, run.keyAfter, built))
          << count;
      EXPECT_EQ(namesOfGroup(*definition, run.orientation, run.group),
                numbered(run.nameBefore, "", built));
      EXPECT_EQ(countOf(*definition).value(), count);
    }
    const auto first =
        definition->portLayout().ports().get(String(run.keyBefore + "0" + run.keyAfter));
    EXPECT_EQ(first->isa().name(), run.portClass);
  }
}

TEST(VariableArity, OnlyTheDifferenceIsAnnounced) {
  const auto definition = definitionOf("HXRMultiplexerNode");
  const auto owner = make<FakeOwner>();
  definition->setNode(owner.get());
  setCount(*definition, 2);  // as it was
  EXPECT_TRUE(owner->take().empty());
  EXPECT_TRUE(definition->portLayout().isShared());
  setCount(*definition, 4);
  EXPECT_EQ(owner->take(), (Texts{"copied", "+Tarn.source2Input", "+Tarn.source3Input"}));
  const Ref<HXRPort> kept(definition->portForKey("Tarn.source1Input"));
  setCount(*definition, 2);
  EXPECT_EQ(owner->take(), (Texts{"-Tarn.source3Input", "-Tarn.source2Input"}));
  EXPECT_EQ(definition->portForKey("Tarn.source1Input"), kept.get());
  EXPECT_EQ(kept->node(), definition.get());

  // Any other parameter is none of its business.
  const auto other = make<HXRIndexParameter>("Sources", "Tarn.numberOfSourcesParameter");
  other->setValue(50);
  definition->parameterValueDidChange(*other);
  EXPECT_TRUE(owner->take().empty());
  // Nobody but this definition has changed.
  EXPECT_EQ(keysOfGroup(*definitionOf("HXRMultiplexerNode"), kIn, "Sources").size(), 2U);
}

TEST(VariableArity, TheArrayKeepsItsOutputWithoutValues) {
  const auto definition = definitionOf("HXRArrayNode");
  setCount(*definition, 0);
  EXPECT_TRUE(groupKeys(*definition, kIn).empty());
  EXPECT_EQ(keysOfGroup(*definition, kOut, "__Default"), Texts{"Tarn.arrayOutput"});
}

TEST(VariableArity, DictionaryEntriesHaveGroupsOfTheirOwn) {
  const auto definition = definitionOf("HXRDictionaryNode");
  auto& dictionary = static_cast<HXRDictionaryNode&>(*definition);
  EXPECT_EQ(groupKeys(*definition, kIn), numbered("Entry ", "", 5));
  EXPECT_EQ(keysOfGroup(*definition, kIn, "Entry 3"),
            (Texts{"Tarn.key3Input", "Tarn.value3Input"}));
  EXPECT_EQ(namesOfGroup(*definition, kIn, "Entry 3"), (Texts{"Key 3", "Value 3"}));
  const auto owner = make<FakeOwner>();
  definition->setNode(owner.get());
  setCount(*definition, 3);
  EXPECT_EQ(owner->take(), (Texts{"copied", "-Tarn.key4Input", "-Tarn.value4Input",
                                  "-Tarn.key3Input", "-Tarn.value3Input"}));
  EXPECT_EQ(groupKeys(*definition, kIn), numbered("Entry ", "", 3));
  const auto entry = dictionary.entryAtIndex(2);
  EXPECT_EQ(entry->keyInput()->uniqueKey(), "Tarn.key2Input");
  EXPECT_EQ(entry->valueInput()->uniqueKey(), "Tarn.value2Input");
  EXPECT_FALSE(dictionary.entryAtIndex(3));
  EXPECT_FALSE(dictionary.entryAtIndex(-1));
  for (const auto& [count, built] :
       {std::pair{kSmallest, 0}, std::pair{kLargest, 100}, std::pair{1, 1}}) {
    setCount(*definition, count);
    EXPECT_EQ(groupKeys(*definition, kIn), numbered("Entry ", "", built));
  }
}

TEST(VariableArity, SpringsNameTheirDimensions) {
  struct Case {
    std::int32_t dimensions;
    Texts rests;
    Texts positions;
  };
  const Case cases[] = {
      {1, {"Rest"}, {"Position"}},
      {2, {"X Rest", "Y Rest"}, {"X Position", "Y Position"}},
      {4,
       {"X Rest", "Y Rest", "Z Rest", "4D Rest"},
       {"X Position", "Y Position", "Z Position", "4D Position"}},
      {1, {"Rest"}, {"Position"}},
      {0, {}, {}},
  };
  const auto definition = HXRSpring2DNode.makeDefinition();
  auto& spring = static_cast<HXRSpringNode&>(*definition);
  EXPECT_EQ(spring.numberOfDimensions(), 2);
  EXPECT_EQ(namesOfGroup(*definition, kIn, "Rest Position"), cases[1].rests);
  for (const Case& c : cases) {
    spring.setNumberOfDimensions(c.dimensions);
    EXPECT_EQ(namesOfGroup(*definition, kIn, "Rest Position"), c.rests);
    EXPECT_EQ(namesOfGroup(*definition, kOut, "Position"), c.positions);
    EXPECT_EQ(keysOfGroup(*definition, kIn, "Rest Position"),
              numbered("Tarn.restPosition", "Input", c.dimensions));
  }
  spring.setNumberOfDimensions(kLargest);
  EXPECT_EQ(namesOfGroup(*definition, kOut, "Position").size(), 10U);
  EXPECT_EQ(spring.numberOfDimensions(), kLargest);
  EXPECT_EQ(HXRSpringNode::hx_inputNameForIndex(kLargest, 3), "2147483648D Rest");
}

TEST(VariableArity, ASpringThatGrowsRenamesItsFirstPorts) {
  const auto definition = HXRSpring1DNode.makeDefinition();
  const auto owner = make<FakeOwner>();
  definition->setNode(owner.get());
  setCount(*definition, 1);
  EXPECT_TRUE(owner->take().empty());
  setCount(*definition, 2);
  EXPECT_EQ(owner->take(), (Texts{"copied", "+Tarn.restPosition1Input", "=X Rest",
                                  "+Tarn.position1Output", "=X Position"}));
}

TEST(VariableArity, AnObserverMayChangeTheCountMeanwhile) {
  for (const char* const name : {"HXRMultiplexerNode", "HXRArrayNode", "HXRDictionaryNode",
                                 "HXRSpring2DNode", "HXRMathNode"}) {
    SCOPED_TRACE(name);
    const auto definition = definitionOf(name);
    const auto owner = make<FakeOwner>();
    definition->setNode(owner.get());
    int steps = 0;
    owner->observer = [&] {
      if (++steps == 2) setCount(*definition, 1);
    };
    setCount(*definition, 9);
    const auto expected = definitionOf(name);
    setCount(*expected, 1);
    for (const auto orientation : {kIn, kOut}) {
      ASSERT_EQ(groupKeys(*definition, orientation), groupKeys(*expected, orientation));
      for (const auto& group : groupKeys(*expected, orientation)) {
        EXPECT_EQ(namesOfGroup(*definition, orientation, group.c_str()),
                  namesOfGroup(*expected, orientation, group.c_str()));
      }
    }
    EXPECT_EQ(definition->parameters().size(), expected->parameters().size());
  }
}

TEST(VariableArity, TheNodeIsToldWhenARebuildBeginsAndEnds) {
  for (const auto* const patchClass : catalogue()) {
    if (patchClass->prototype().parameters().empty()) continue;
    SCOPED_TRACE(patchClass->name());
    const auto definition = patchClass->makeDefinition();
    const auto* const count = as<HXRIndexParameter>(definition->parameters()[0].get());
    if (!count) continue;
    const auto owner = make<FakeOwner>();
    definition->setNode(owner.get());
    owner->observer = [&, steps = 0]() mutable {
      if (++steps == 1) setCount(*definition, 3);
    };
    setCount(*definition, 5);
    EXPECT_EQ(owner->rebuildsAtSteps, std::vector<int>(owner->take().size(), 1));
    EXPECT_EQ(owner->rebuilds, 0);
    // One that leaves its node in the middle has told it of both ends.
    owner->rebuildsAtSteps.clear();
    owner->observer = [&] { definition->setNode(nullptr); };
    setCount(*definition, 1);
    EXPECT_EQ(owner->rebuildsAtSteps, std::vector<int>(owner->take().size(), 1));
    EXPECT_EQ(owner->rebuilds, 0);
  }
}

TEST(VariableArity, ACountRaisedWhileAnEntryGoesLeavesWholeEntries) {
  // At each announced step of each change one more observer changes its mind.
  for (int step = 1; step <= 6; ++step) {
    for (const std::int32_t last : {0, 1, 4, 5, 7}) {
      for (const std::int32_t first : {2, 4, 7}) {
        SCOPED_TRACE(testing::Message() << "5 to " << first << ", at step " << step << " " << last);
        const auto definition = definitionOf("HXRDictionaryNode");
        const auto owner = make<FakeOwner>();
        definition->setNode(owner.get());
        int steps = 0;
        owner->observer = [&] {
          if (++steps == step) setCount(*definition, last);
        };
        setCount(*definition, first);
        const auto expected = steps < step ? first : last;
        ASSERT_EQ(groupKeys(*definition, kIn), numbered("Entry ", "", expected));
        for (std::int32_t i = 0; i < expected; ++i) {
          const auto number = std::to_string(i);
          EXPECT_EQ(keysOfGroup(*definition, kIn, ("Entry " + number).c_str()),
                    (Texts{"Tarn.key" + number + "Input", "Tarn.value" + number + "Input"}));
        }
        EXPECT_EQ(definition->portLayout().ports().size(),
                  2U * static_cast<unsigned>(expected) + 1);
        EXPECT_EQ(static_cast<HXRDictionaryNode&>(*definition).entries().size(),
                  static_cast<std::size_t>(expected));
      }
    }
  }
}

// What a class derived from theirs adds is none of the patches' business, even where it stands
// among what they have built.
TEST(VariableArity, DerivedClassesMayAddPortsAndParametersOfTheirOwn) {
  static constexpr auto addOwn = [](PatchDeclaration& patch) {
    patch.parameter("Own", "Own.parameter", 50, 0, 100);
    for (const char* const group : {"Own", "Operands", "Values", "Rest Position", "Variables"}) {
      patch.group(group);
      patch.in(group, group);
    }
  };
  for (const char* const base :
       {"HXRMathNode", "HXRLogicNode", "HXRConditionalNode", "HXRDictionaryNode", "HXRArrayNode",
        "HXRSpringNode", "HXRMathExpressionNode"}) {
    SCOPED_TRACE(base);
    registerPatchClasses();
    static auto* const classes = new std::deque<HXRNodeClass>;  // lives for ever
    const HXRNodeClass& derivedClass = classes->emplace_back("Derived", patchClassNamed(base),
                                                             HXRNodeClass::Descriptors{}, addOwn);
    const auto plain = definitionOf(base);
    const auto derived = derivedClass.makeDefinition();
    const auto expectSame = [&] {
      EXPECT_EQ(derived->parameters().size(), plain->parameters().size() + 1);
      EXPECT_EQ(derived->portLayout().ports().size(), plain->portLayout().ports().size() + 5);
      for (const auto& [key, port] : plain->portLayout().ports()) {
        EXPECT_TRUE(derived->portLayout().ports().contains(key)) << key.view();
      }
    };
    expectSame();
    for (const std::int32_t count : {4, 1, 0, 3}) {
      for (const auto& definition : {plain, derived}) {
        if (const auto text = as<HXRStringParameter>(definition->parameters()[0])) {
          text->setValue(count == 1 ? "$a" : "$b + $c");
          definition->parameterValueDidChange(*text);
        } else {
          setCount(*definition, count);
        }
      }
      expectSame();
    }
  }
}

TEST(VariableArity, PatchesListWhatTheyHaveBuilt) {
  const auto keysOf = [](const auto& ports) {
    Texts keys;
    for (const auto& port : ports) keys.push_back(port->uniqueKey().toStdString());
    return keys;
  };
  const auto math = definitionOf("HXRMathNode");
  auto& operators = static_cast<HXRMathNode&>(*math);
  EXPECT_EQ(operators.numberOfOperationsParameter(), &countOf(*math));
  setCount(*math, 2);
  EXPECT_EQ(keysOf(operators.operatorParameters()), numbered("Tarn.operator", "Parameter", 2));
  EXPECT_EQ(keysOf(operators.operandInputs()), numbered("Tarn.operand", "Input", 3));

  const auto spring = HXRSpring1DNode.makeDefinition();
  auto& dimensions = static_cast<HXRSpringNode&>(*spring);
  EXPECT_EQ(keysOf(dimensions.restPositionInputs()), numbered("Tarn.restPosition", "Input", 1));
  EXPECT_EQ(keysOf(dimensions.positionOutputs()), numbered("Tarn.position", "Output", 1));
  EXPECT_EQ(dimensions.positionOutputs()[0].get(), spring->portForKey("Tarn.position0Output"));

  const auto listed = [&]<class Patch>(const char* name, auto(Patch::*list)(), std::size_t count) {
    const auto definition = definitionOf(name);
    auto& patch = static_cast<Patch&>(*definition);
    EXPECT_EQ((patch.*list)().size(), count);
    setCount(patch, 4);
    const auto ports = (patch.*list)();
    EXPECT_EQ(ports.size(), 4U);
    EXPECT_EQ(ports[3]->node(), &patch);
  };
  listed("HXRMultiplexerNode", &HXRMultiplexerNode::sourceInputs, 2);
  listed("HXRDemultiplexerNode", &HXRDemultiplexerNode::destinationOutputs, 2);
  listed("HXRIndexSwitchNode", &HXRIndexSwitchNode::indexSwitchInputs, 3);
  listed("HXRArrayNode", &HXRArrayNode::valueInputs, 5);
  listed("HXRArrayValuesNode", &HXRArrayValuesNode::valueOutputs, 5);
}

TEST(OperatorPatches, OperatorsCountFromOneByNameAndFromZeroByKey) {
  struct Case {
    const HXRNodeClass* patch;
    std::int32_t lastOperator;
    PMRPrimitive::StorageType operandKind;
  };
  const Case cases[] = {
      {&HXRMathNode::kClass, 7, PMRPrimitive::number},
      {&HXRLogicNode::kClass, 6, PMRPrimitive::boolean},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.patch->name());
    const auto definition = c.patch->makeDefinition();
    EXPECT_TRUE(definition->portLayout().isShared());
    EXPECT_EQ(definition->parameters().size(), 2U);
    const auto owner = make<FakeOwner>();
    definition->setNode(owner.get());
    setCount(*definition, 3);
    EXPECT_EQ(owner->take(), (Texts{"+Tarn.operator1Parameter", "+Tarn.operator2Parameter",
                                    "copied", "+Tarn.operand2Input", "+Tarn.operand3Input"}));
    auto* const first = as<HXRIndexParameter>(definition->parameters()[1].get());
    first->setValue(4);
    definition->parameterValueDidChange(*first);
    setCount(*definition, 2);
    EXPECT_EQ(owner->take(), (Texts{"-Tarn.operator2Parameter", "-Tarn.operand3Input"}));
    ASSERT_EQ(definition->parameters().size(), 3U);
    EXPECT_EQ(definition->parameters()[1].get(), first);
    EXPECT_EQ(first->value(), 4);
    const auto& last = *as<HXRIndexParameter>(definition->parameters()[2].get());
    EXPECT_EQ(last.name(), "Operator 2");
    EXPECT_EQ(last.uniqueKey(), "Tarn.operator1Parameter");
    EXPECT_TRUE(last.hidden());
    EXPECT_EQ(last.value(), 0);
    EXPECT_EQ(last.maximumValue(), c.lastOperator);
    EXPECT_EQ(namesOfGroup(*definition, kIn, "Operands"),
              (Texts{"Operand 1", "Operand 2", "Operand 3"}));
    EXPECT_EQ(keysOfGroup(*definition, kIn, "Operands"), numbered("Tarn.operand", "Input", 3));
    const auto* const operand =
        as<HXRPrimitiveInputPort>(definition->portForKey("Tarn.operand2Input"));
    EXPECT_EQ(operand->defaultValue()->storageType(), c.operandKind);
    EXPECT_FALSE(operand->defaultValue()->booleanValue());
  }
}

TEST(OperatorPatches, CountsOutsideTheBoundsBuildNothingBeyondThem) {
  struct Case {
    std::int32_t count;
    std::size_t operators;
    std::size_t operands;
  };
  const Case cases[] = {{kLargest, 100, 101}, {101, 100, 101}, {0, 0, 1},
                        {-1, 0, 0},           {1, 1, 2},       {kSmallest, 0, 0}};
  const auto definition = HXRMathNode::kClass.makeDefinition();
  for (const Case& c : cases) {
    setCount(*definition, c.count);
    EXPECT_EQ(definition->parameters().size(), c.operators + 1) << c.count;
    EXPECT_EQ(keysOfGroup(*definition, kIn, "Operands").size(), c.operands) << c.count;
    EXPECT_EQ(countOf(*definition).value(), c.count);
  }
  // The Conditional's count is pinned.
  const auto conditional = HXRConditionalNode::kClass.makeDefinition();
  EXPECT_TRUE(countOf(*conditional).hidden());
  setCount(*conditional, 9);
  EXPECT_EQ(conditional->parameters().size(), 2U);
  EXPECT_EQ(keysOfGroup(*conditional, kIn, "Operands").size(), 2U);
}

TEST(OperatorPatches, TextsOfTheOperators) {
  const auto join = [](String (*textAt)(std::uint64_t)) {
    std::string all;
    for (std::uint64_t i = 0; i < 10; ++i) all += textAt(i).toStdString() + "|";
    return all;
  };
  EXPECT_EQ(join(HXRStringForMathOperator), "+|-|*|/|%|POW|MIN|MAX|||");
  EXPECT_EQ(join(HXRStringForLogicOperator), "AND|OR|XOR|NAND|NOR|NXOR|NOT||||");
  EXPECT_EQ(join(HXRStringForConditionalOperator), "==|!=|>|<|>=|<=|||||");
  EXPECT_EQ(HXRStringForMathOperator(std::numeric_limits<std::uint64_t>::max()), "");
}

}  // namespace
}  // namespace tarnkit
