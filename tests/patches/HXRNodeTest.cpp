#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "FakeOwner.h"
#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/HXRPlugin.h"
#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/system/Bundle.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {
namespace {

constexpr auto kIn = HXOrientationInput;
constexpr auto kOut = HXOrientationOutput;
constexpr const char* kHidden[] = {"Advanced", nullptr};
int declarations = 0;

const HXRNodeClass kBase{"TestBaseNode",
                         &HXRNode::kClass,
                         {.defaultName = "Base",
                          .libraryCategory = "Utility",
                          .libraryDescription = "Shared.html",
                          .processClassName = "PMRBasePatch",
                          .defaultColor = &HXGesturePatchColor,
                          .hiddenInLibrary = HXRNodeClass::Flag::yes,
                          .allowsSubnodes = HXRNodeClass::Flag::yes,
                          .hiddenPortGroupKeys = kHidden},
                         [](PatchDeclaration& patch) {
                           ++declarations;
                           patch.in("First", "Tarn.firstInput", value::number(1));
                           patch.group("Advanced");
                           patch.in("Second", "Tarn.secondInput");
                           patch.group();
                           patch.out("Result", "Tarn.resultOutput");
                           patch.parameter("Count", "Tarn.countParameter", 2, 0, 9);
                         }};
const HXRNodeClass kDerived{"TestDerivedNode",
                            &kBase,
                            {.hiddenInLibrary = HXRNodeClass::Flag::no},
                            [](PatchDeclaration& patch) { patch.in("Third", "Tarn.thirdInput"); }};

Ref<HXRPort> input(const char* key) { return make<HXRValueInputPort>("Name", key); }

TEST(HXRNodeClass, InheritsWhatItLeavesOut) {
  EXPECT_EQ(HXRNode::kClass.defaultName(), "HXRNode");
  EXPECT_TRUE(HXRNode::kClass.libraryCategory().isNil());
  EXPECT_EQ(HXRNode::kClass.libraryDescription(), "HXRNode.html");
  EXPECT_EQ(HXRNode::kClass.processClassName(), "PMRPatch");
  EXPECT_EQ(HXRNode::kClass.patchViewClassName(), "HXBasicPatchView");
  EXPECT_EQ(HXRNode::kClass.defaultColor(), HXPrimaryPatchColor);
  EXPECT_FALSE(HXRNode::kClass.hiddenInLibrary());
  EXPECT_FALSE(HXRNode::kClass.secretInLibrary());
  EXPECT_FALSE(HXRNode::kClass.allowsSubnodes());
  EXPECT_TRUE(HXRNode::kClass.hiddenPortGroupKeys().isEmpty());

  EXPECT_EQ(kDerived.defaultName(), "Base");
  EXPECT_EQ(kDerived.libraryCategory(), "Utility");
  EXPECT_EQ(kBase.libraryDescription(), "Shared.html");
  EXPECT_EQ(kDerived.libraryDescription(), "TestDerivedNode.html");  // named after its own class
  EXPECT_EQ(kDerived.processClassName(), "PMRBasePatch");
  EXPECT_EQ(kDerived.defaultColor(), HXGesturePatchColor);
  EXPECT_TRUE(kBase.hiddenInLibrary());
  EXPECT_FALSE(kDerived.hiddenInLibrary());
  EXPECT_TRUE(kDerived.allowsSubnodes());
  EXPECT_TRUE(kDerived.hiddenPortGroupKeys().contains(String("Advanced").object().get()));
  EXPECT_TRUE(kDerived.isKindOf(kBase));
}

TEST(HXRNodeClass, InstancesShareOneDeclaration) {
  const auto first = kDerived.makeDefinition();
  const int declared = declarations;
  const auto second = as<HXRNode>(kDerived.make());
  EXPECT_EQ(declarations, declared);
  EXPECT_EQ(&first->portLayout(), &second->portLayout());
  EXPECT_TRUE(first->isMemberOf(kDerived));
  EXPECT_EQ(groupKeys(*first, kIn), (Texts{"__Default", "Advanced"}));
  EXPECT_EQ(keysOfGroup(*first, kIn, "__Default"), (Texts{"Tarn.firstInput", "Tarn.thirdInput"}));

  // Parameters are each instance's own.
  auto* const count = as<HXRIndexParameter>(first->parameterForKey("Tarn.countParameter"));
  ASSERT_TRUE(count);
  EXPECT_EQ(count->node(), first.get());
  count->setValue(7);
  EXPECT_EQ(as<HXRIndexParameter>(second->parameters()[0].get())->value(), 2);
  EXPECT_EQ(second->parameters()[0]->node(), second.get());
}

TEST(HXRNode, CopiesTheLayoutOnceAndTellsItsNode) {
  const auto definition = kBase.makeDefinition();
  const auto owner = make<FakeOwner>();
  definition->setNode(owner.get());
  const auto* const shared = &definition->portLayout();
  EXPECT_EQ(definition->portForKey("Tarn.unknown"), nullptr);
  EXPECT_EQ(&definition->portLayout(), shared);

  auto* const first = definition->portForKey("Tarn.firstInput");
  EXPECT_EQ(owner->take(), Texts{"copied"});
  EXPECT_FALSE(definition->portLayout().isShared());
  EXPECT_EQ(first->node(), definition.get());
  EXPECT_EQ(first->portGroupKey(), "__Default");
  EXPECT_EQ(as<HXRPrimitiveInputPort>(first)->defaultValue()->numberValue(), 1);
  first->setName("Renamed");
  first->setName("Renamed");
  EXPECT_EQ(owner->take(), Texts{"=Renamed"});

  // The others of the class have not seen any of it.
  EXPECT_EQ(shared->ports().get("Tarn.firstInput")->name(), "First");
  EXPECT_EQ(shared->ports().get("Tarn.firstInput")->node(), nullptr);
  EXPECT_EQ(&kBase.makeDefinition()->portLayout(), shared);
  EXPECT_EQ(groupKeys(*definition, kIn), (Texts{"__Default", "Advanced"}));
  EXPECT_EQ(definition->inputPortGroupCollection().node(), definition.get());
}

TEST(HXRNode, PortsGoIntoGroupsInTheOrderOfTheirFirst) {
  const auto definition = HXRNode::kClass.makeDefinition();
  const auto owner = make<FakeOwner>();
  definition->setNode(owner.get());
  const auto a = input("a");
  const auto b = input("b");
  const auto c = input("c");
  definition->addPort(*a, "X");
  definition->addPort(*b);
  definition->addPort(*c, "X");
  definition->addPort(*make<HXRValueOutputPort>("Out", "out"), "X");
  EXPECT_EQ(owner->take(), (Texts{"copied", "+a", "+b", "+c", "+out"}));
  EXPECT_EQ(groupKeys(*definition, kIn), (Texts{"X", "__Default"}));
  EXPECT_EQ(groupKeys(*definition, kOut), (Texts{"X"}));
  EXPECT_EQ(keysOfGroup(*definition, kIn, "X"), (Texts{"a", "c"}));
  EXPECT_EQ(definition->hx_inputPortGroupForKey("X")->portGroupCollection(),
            &definition->inputPortGroupCollection());

  const auto emptied = Ref<HXRPortGroup>(definition->hx_inputPortGroupForKey("X"));
  definition->removePort(*a);
  definition->removePort(*c);
  definition->removePort(*c);  // held no more
  EXPECT_EQ(owner->take(), (Texts{"-a", "-c"}));
  EXPECT_EQ(groupKeys(*definition, kIn), (Texts{"__Default"}));
  EXPECT_EQ(emptied->portGroupCollection(), nullptr);
  EXPECT_EQ(c->node(), nullptr);
  EXPECT_TRUE(c->portGroupKey().isNil());
  EXPECT_EQ(definition->portForKey("c"), nullptr);
  definition->addPort(*c, "X");
  EXPECT_EQ(groupKeys(*definition, kIn), (Texts{"__Default", "X"}));
}

TEST(HXRNode, IgnoresPortsThatAreNotItsOwn) {
  const auto definition = kBase.makeDefinition();
  const auto other = kBase.makeDefinition();
  const auto owner = make<FakeOwner>();
  definition->setNode(owner.get());
  definition->addPort(*make<HXRPort>("Neither", "k", 3, 1));
  definition->removePort(*other->portForKey("Tarn.firstInput"));
  definition->removePort(*Ref<HXRPort>(definition->portLayout().ports().get("Tarn.firstInput")));
  EXPECT_TRUE(owner->take().empty());
  EXPECT_TRUE(definition->portLayout().isShared());
  EXPECT_TRUE(other->portForKey("Tarn.firstInput"));
}

TEST(HXRNode, OfTwoPortsUnderOneKeyTheLastIsFound) {
  const auto definition = HXRNode::kClass.makeDefinition();
  const auto first = input("same");
  const auto second = input("same");
  definition->addPort(*first);
  definition->addPort(*second);
  EXPECT_EQ(keysOfGroup(*definition, kIn, "__Default"), Texts{"same"});
  EXPECT_EQ(definition->hx_inputPortGroupForKey("__Default")->ports().size(), 2U);
  EXPECT_EQ(definition->portForKey("same"), second.get());
  definition->removePort(*first);
  EXPECT_EQ(definition->portForKey("same"), second.get());
  definition->removePort(*second);
  EXPECT_TRUE(groupKeys(*definition, kIn).empty());
}

TEST(HXRNode, TellsOfParameters) {
  const auto definition = kBase.makeDefinition();
  const auto owner = make<FakeOwner>();
  definition->setNode(owner.get());
  const auto extra = make<HXRBooleanParameter>("Extra", "Tarn.extraParameter");
  definition->removeParameter(*extra);
  definition->addParameter(*extra);
  EXPECT_EQ(extra->node(), definition.get());
  EXPECT_EQ(definition->parameterForKey("Tarn.extraParameter"), extra.get());
  definition->removeParameter(*extra);
  EXPECT_EQ(extra->node(), nullptr);
  EXPECT_EQ(owner->take(), (Texts{"+Tarn.extraParameter", "-Tarn.extraParameter"}));
  EXPECT_EQ(definition->parameters().size(), 1U);
}

TEST(HXRNode, HoldsItsNodeWeaklyAndLeavesNothingBehind) {
  kBase.prototype();
  const auto alive = Object::liveObjectCount();
  {
    const auto definition = kBase.makeDefinition();
    auto owner = make<FakeOwner>();
    definition->setNode(owner.get());
    definition->portForKey("Tarn.firstInput")->setName("Other");
    owner = nullptr;
    EXPECT_EQ(definition->node(), nullptr);
    definition->addPort(*input("more"));
  }
  EXPECT_EQ(Object::liveObjectCount(), alive);
}

TEST(HXRNode, WhatIsHandedOutCannotChangeWhatIsKept) {
  const auto definition = kDerived.makeDefinition();
  const HXRPortLayout& shared = definition->portLayout();
  const auto other = make<HXRPortGroup>("Other", kIn);
  EXPECT_THROW(shared.inputs().addPortGroup(*other), std::logic_error);
  const Ref<HXRPortGroup> sharedGroup(shared.inputs().portGroupForKey("__Default"));
  EXPECT_THROW(shared.inputs().removePortGroup(*sharedGroup), std::logic_error);
  EXPECT_THROW(sharedGroup->addPort(*input("Tarn.more")), std::logic_error);
  EXPECT_THROW(sharedGroup->removePort(*sharedGroup->ports()[0]), std::logic_error);

  // Who walks a list may change what it was a list of.
  const Ref<const OrderedSet> keys = definition->hx_inputPortGroupForKey("__Default")->portKeys();
  const Ref<const OrderedSet> groups = definition->inputPortGroupCollection().portGroupKeys();
  for (int i = 0; i < 20; ++i) {
    definition->addParameter(*make<HXRIndexParameter>("Name", String("key" + std::to_string(i))));
  }
  const Ref<HXRPortGroup> group(definition->hx_inputPortGroupForKey("__Default"));
  for (const auto& port : group->ports()) definition->removePort(*port);
  for (const auto& [key, port] : definition->ports()) definition->removePort(*port);
  for (const auto& parameter : definition->parameters()) definition->removeParameter(*parameter);
  EXPECT_TRUE(definition->portLayout().ports().empty());
  EXPECT_TRUE(definition->parameters().empty());
  EXPECT_EQ(keys->count(), 2U);
  EXPECT_EQ(groups->count(), 2U);
  EXPECT_EQ(kDerived.prototype().portLayout().ports().size(), 4U);
}

TEST(HXRNode, TakesNothingWithoutAKey) {
  const auto definition = kDerived.makeDefinition();
  std::vector<std::string> lines;
  const auto earlier = Log::setSink([&](std::string_view line) { lines.emplace_back(line); });
  const auto nameless = make<HXRValueInputPort>("Name", String());
  definition->addPort(*nameless);
  definition->addParameter(*make<HXRIndexParameter>("Name", String()));
  make<HXRPortGroup>("Group", kIn)->addPort(*nameless);
  make<HXRPortGroupCollection>(definition.get(), kIn)
      ->addPortGroup(*make<HXRPortGroup>(String(), kIn));
  // Neither does it take another's shared description, which it would change.
  definition->addPort(**kBase.prototype().portLayout().ports().find("Tarn.firstInput"));
  Log::setSink(earlier);
  EXPECT_EQ(lines.size(), 5U);
  EXPECT_EQ(lines[0], "WARNING: [TestDerivedNode] A port without a key is not added");
  EXPECT_TRUE(definition->portLayout().isShared());
  EXPECT_EQ(definition->parameters().size(), 1U);
  definition->removePort(*definition->portForKey("Tarn.firstInput"));
  EXPECT_EQ(keysOfGroup(*definition, kIn, "__Default"), (Texts{"Tarn.thirdInput"}));
}

TEST(PatchRegistry, PlugInsAddClasses) {
  class Plugin final : public HXRPlugin {
   public:
    std::vector<const HXRNodeClass*> nodeClasses() const override { return {&kBase, &kDerived}; }
  };
  const Plugin plugin;
  EXPECT_EQ(plugin.name(), "Untitled");
  EXPECT_EQ(plugin.description(), "This plugin has no description");
  EXPECT_TRUE(HXRPlugin().nodeClasses().empty());

  const auto before = catalogue().size();
  for (int times = 0; times < 2; ++times) {
    for (const auto* const patchClass : plugin.nodeClasses()) {
      EXPECT_TRUE(addPatchClass(*patchClass));
    }
    EXPECT_EQ(catalogue().size(), before + 2);
  }
  EXPECT_EQ(patchClassNamed("TestDerivedNode"), &kDerived);
  EXPECT_EQ(patchClassNamed("PMRPrimitive"), nullptr);  // a class, but of no definition
  EXPECT_EQ(patchClassNamed("NoSuchNode"), nullptr);
}

/// Two C++ classes of definitions, and one that says that its definitions are another class's.
class OwnNode : public HXRNode {
 public:
  explicit OwnNode(const HXRNodeClass& patchClass) : HXRNode(patchClass) {}
};
class OtherNode final : public HXRNode {
 public:
  explicit OtherNode(const HXRNodeClass& patchClass) : HXRNode(patchClass) {}
};
class StrangeNode final : public HXRNode {
 public:
  explicit StrangeNode(const HXRNodeClass&) : HXRNode(kBase) {}
};

TEST(PatchRegistry, RecordsAreCheckedAtTheDoor) {
  static const HXRNodeClass good{"TestGoodNode", &HXRNode::kClass, {}};
  static const HXRNodeClass own{
      "TestOwnNode", &HXRNode::kClass, {}, nullptr, constructPatch<OwnNode>};
  static const HXRNodeClass rootless{"TestRootlessNode", nullptr, {}};
  static const HXRNodeClass unnamed{nullptr, &HXRNode::kClass, {}};
  static const HXRNodeClass impostor{"HXRClampNode", &HXRNode::kClass, {}};
  static const HXRNodeClass listed{"NSDictionary", &HXRNode::kClass, {}};
  static const HXRNodeClass twin{"TestGoodNode", &HXRNode::kClass, {}};
  struct Case {
    HXRNodeClass record;
    const char* reason;
  };
  static const Case cases[] = {
      {{nullptr, &HXRNode::kClass, {}}, "class ?, it has no name"},
      {{"", &HXRNode::kClass, {}}, "class ?, it has no name"},
      {{"A", nullptr, {}}, "class A, it does not derive from this library's HXRNode"},
      {{"A", &rootless, {}}, "class A, it does not derive from this library's HXRNode"},
      {{"HXRMathNode", &HXRNode::kClass, {}},
       "class HXRMathNode, its name is taken by a built-in patch"},
      {{"HXRNode", &HXRNode::kClass, {}}, "class HXRNode, its name is taken by a built-in patch"},
      {{"TestGoodNode", &HXRNode::kClass, {}}, "class TestGoodNode, it is brought twice"},
      {{"A", &HXRNode::kClass, {}, [](PatchDeclaration& patch) { patch.in("In", nullptr); }},
       "class A, its declaration leaves out a name or a key"},
      {{"A", &HXRNode::kClass, {}, [](PatchDeclaration& patch) { patch.out(nullptr, "a"); }},
       "class A, its declaration leaves out a name or a key"},
      {{"A",
        &HXRNode::kClass,
        {},
        [](PatchDeclaration& patch) { patch.parameter("Count", nullptr, 1, 0, 9); }},
       "class A, its declaration leaves out a name or a key"},
      {{"A",
        &HXRNode::kClass,
        {},
        [](PatchDeclaration& patch) {
          patch.choice("In", "a", 0, {"One", nullptr});
        }},
       "class A, its declaration leaves out a name or a key"},
      {{"A", &HXRNode::kClass, {}, [](PatchDeclaration& patch) { patch.definition<OwnNode>(); }},
       "class A, its definitions are no objects of the C++ class that it declares"},
      {{"A", &own, {}, nullptr, constructPatch<StrangeNode>},
       "class A, its record makes definitions of another class"},
      {{"A", &own, {}, nullptr, constructPatch<OtherNode>},
       "class A, its definitions are no objects of its base's C++ class"},
      {{"A", &unnamed, {}}, "class A, it derives from a class without a name"},
      {{"A", &impostor, {}}, "class A, it derives from a class that takes the name HXRClampNode"},
      {{"A", &listed, {}}, "class A, it derives from a class that takes the name NSDictionary"},
      {{"A", &twin, {}}, "class A, it derives from a class that takes the name TestGoodNode"},
      {{"A", &HXRNode::kClass, {}, [](PatchDeclaration& patch) { patch.in("In", ""); }},
       "class A, its declaration gives a port an empty key"},
      {{"A",
        &HXRNode::kClass,
        {},
        [](PatchDeclaration& patch) {
          patch.in("In", "a");
          patch.group("More");
          patch.out("Out", "a");
        }},
       "class A, its declaration gives a key to two ports"},
      {{"A",
        &kBase,
        {},
        [](PatchDeclaration& patch) { patch.in("Its base's", "Tarn.firstInput"); }},
       "class A, its declaration gives a key to two ports"},
      {{"A",
        &HXRNode::kClass,
        {},
        [](PatchDeclaration& patch) {
          patch.in("In", "a");
          patch.definition<HXRNode>().addPort(*make<HXRViewInputPort>("In", "a"), "Own");
        }},
       "class A, its declaration gives a key to two ports"},
      {{"A",
        &HXRNode::kClass,
        {},
        [](PatchDeclaration& patch) { patch.in<HXRViewOutputPort>("In", "a"); }},
       "class A, its declaration mistakes an output for an input"},
      {{"A", &HXRNode::kClass, {}, [](PatchDeclaration& patch) { patch.imageParameter("P", ""); }},
       "class A, its declaration gives a parameter an empty key"},
      {{"A",
        &HXRNode::kClass,
        {},
        [](PatchDeclaration& patch) {
          patch.parameter("P", "p", true);
          patch.definition<HXRNode>().addParameter(*make<HXRIndexParameter>("P", "p"));
        }},
       "class A, its declaration gives a key to two parameters"},
  };
  auto& bundle = Bundle::addBundle("test.door");
  const auto before = catalogue().size();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.reason);
    const auto status = addPatchClasses(std::array{&good, &own, &c.record}, bundle);
    EXPECT_EQ(nameOf(status.code()), "refused");
    EXPECT_EQ(status.message(), c.reason);
    EXPECT_EQ(catalogue().size(), before);
    EXPECT_FALSE(patchClassNamed("TestGoodNode"));
    EXPECT_FALSE(HXRNode::hx_isExternalClass(good));
  }
  EXPECT_EQ(addPatchClasses(std::array<const HXRNodeClass*, 1>{}, bundle).message(),
            "a class without a record");
  EXPECT_TRUE(addPatchClasses(std::array{&good, &own}, bundle));
  EXPECT_TRUE(HXRNode::hx_isExternalClass(good));
  EXPECT_TRUE(addPatchClasses(std::array{&own}, bundle));
  EXPECT_EQ(catalogue().size(), before + 2);
  // Another bundle cannot bring it too.
  EXPECT_EQ(addPatchClasses(std::array{&own}, Bundle::addBundle("test.other")).message(),
            "class TestOwnNode, its name is taken by a class of test.door");
}

// Records under these names would stand beside what archives and device graphs call by them.
TEST(PatchRegistry, NamesThatAreWrittenCannotBeTaken) {
  for (const char* name : {"NSObject",
                           "NSString",
                           "NSMutableString",
                           "NSNumber",
                           "NSData",
                           "NSArray",
                           "NSSet",
                           "NSOrderedSet",
                           "NSDictionary",
                           "NSMutableDictionary",
                           "NSNull",
                           "_MXNumberExpression",
                           "HXRNode",
                           "HXRPort",
                           "HXRPrimitiveInputPort",
                           "HXRReplicatorArrayOutputPort",
                           "HXRPortGroup",
                           "HXRPortGroupCollection",
                           "HXRParameter",
                           "HXRImageParameter",
                           "PMRPatch",
                           "PMRClampPatch",
                           "PMRPort",
                           "PMRPrimitiveInputPort",
                           "PMRParameter",
                           "PMRIndexParameter",
                           "PMRPrimitive"}) {
    const HXRNodeClass taking{name, &HXRNode::kClass, {}};
    const auto status = addPatchClasses(std::array{&taking}, Bundle::addBundle("test.names"));
    EXPECT_THAT(status.message(),
                testing::StartsWith(std::string("class ") + name + ", its name is taken"));
  }
  EXPECT_FALSE(ClassRegistry::classNamed("NSDictionary"));
  // A base that is brought itself may come after what derives from it.
  static const HXRNodeClass base{"TestLateBaseNode", &HXRNode::kClass, {}};
  static const HXRNodeClass derived{"TestEarlyNode", &base, {}};
  EXPECT_TRUE(addPatchClasses(std::array{&derived, &base}, Bundle::addBundle("test.names")));
}

TEST(HXRNode, ClassesOfOtherBundlesAreExternal) {
  EXPECT_FALSE(HXRNode::hx_isExternalClass(HXRNode::kClass));
  static const HXRNodeClass foreign{"TestForeignNode", &HXRNode::kClass, {}};
  EXPECT_FALSE(HXRNode::hx_isExternalClass(foreign));
  Bundle::addBundle("org.example.plug-in").claimClass(foreign);
  EXPECT_TRUE(HXRNode::hx_isExternalClass(foreign));
  // A bundle that bears the application's identifier is the application's own.
  Bundle::mainBundle().setInfoDictionary(
      {{"CFBundleIdentifier", String("org.example.plug-in").object()}});
  EXPECT_FALSE(HXRNode::hx_isExternalClass(foreign));
  Bundle::mainBundle().setInfoDictionary({});
}

TEST(HXRNodeClass, NamesTheEditorNodeClassAndAsksTheModelForADocument) {
  EXPECT_EQ(kBase.nodeClassName(), "HXNode");
  const std::pair<const char*, const char*> containers[] = {
      {"HXRReplicatorNode", "HXReplicatorNode"},
      {"HXRLoopNode", "HXLoopNode"},
      {"HXRRemoteGroupNode", "HXRemoteGroupNode"},
      {"HXRRemoteGroupProcessorNode", "HXRemoteGroupProcessorNode"},
  };
  registerPatchClasses();
  for (const auto& [patch, node] : containers) {
    ASSERT_TRUE(patchClassNamed(patch)) << patch;
    EXPECT_EQ(patchClassNamed(patch)->nodeClassName(), node);
  }
  EXPECT_FALSE(kBase.documentGraph());
  HXRNodeClass::setDocumentGraphBuilder(
      [](const HXRNodeClass& asked) { return Ref<Object>(asked.nameString().object()); });
  EXPECT_EQ(String::from(kBase.documentGraph().get()), "TestBaseNode");
  HXRNodeClass::setDocumentGraphBuilder(nullptr);
}

}  // namespace
}  // namespace tarnkit
