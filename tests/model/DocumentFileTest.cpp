#include <cstdlib>
#include <filesystem>
#include <set>

#include "ModelFixture.h"
#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/collections/Array.h"
#include "tarnkit/platform/objects/Null.h"
#include "tarnkit/platform/propertylist/PropertyList.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/system/File.h"

namespace tarnkit::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class DocumentFileTest : public ModelTest {};

TEST_F(DocumentFileTest, EverythingThatTheUserMadeComesBack) {
  const auto group = add("");
  const auto mux = add("HXRMultiplexerNode", group.get());
  const auto source = add("HXRClampNode");
  const auto view = add("HXRColorViewNode", group.get());
  as<HXIndexParameter>(mux->parameterForKey("Tarn.numberOfSourcesParameter"))->setValue(4);
  port(*mux, "Tarn.source3Input").setStaticValue(PMRPrimitive::primitiveWithDegreesValue(90));
  const auto first = group->subnodeGroup()->addSymbolicPortForPort(port(*mux, "Tarn.source2Input"));
  first->setName("Box: In");
  document->connectPort(*first, port(*source, "Tarn.resultOutput"));
  mux->portGroupForKey("Sources", HXOrientationInput)->setCollapsedCanvasGroup(true);
  mux->setPosition({3, -4.5F});
  mux->setInspectorPanel(2);
  mux->setSelected(true);
  mux->setName("Choice");
  group->subnodeGroup()->setCanvasCenter({10, 20});
  group->subnodeGroup()->setOpaque(true);

  Recorder recorder;
  const auto opened = reopened(*document);
  EXPECT_THAT(recorder.take(), IsEmpty()) << "an opening document announces nothing";
  EXPECT_THAT(recorder.takeLog(), IsEmpty());
  EXPECT_NE(opened->documentKey(), document->documentKey());
  const auto group2 = named(*opened, "Group");
  EXPECT_TRUE(as<HXSubviewGroup>(group2->subnodeGroup().get()));
  EXPECT_NE(group2->uniqueKey(), group->uniqueKey());
  EXPECT_EQ(group2->subnodeGroup()->canvasCenter(), (HXPoint{10, 20}));
  EXPECT_TRUE(group2->subnodeGroup()->isOpaque());
  const auto mux2 = named(*group2, "Choice");
  EXPECT_EQ(mux2->position(), (HXPoint{3, -4.5F}));
  EXPECT_EQ(mux2->inspectorPanel(), 2U);
  EXPECT_TRUE(mux2->selected());
  EXPECT_EQ(keys(mux2->inputPorts()), keys(mux->inputPorts()));
  EXPECT_TRUE(port(*mux2, "Tarn.source3Input")
                  .staticValue()
                  ->isEqual(*PMRPrimitive::primitiveWithDegreesValue(90)));
  EXPECT_TRUE(mux2->portGroupForKey("Sources", HXOrientationInput)->collapsedCanvasGroup());
  EXPECT_THAT(mux2->keyPath(),
              ElementsAre(mux2->uniqueKey(), group2->uniqueKey(), opened->uniqueKey()));
  const auto& symbolic =
      static_cast<HXSymbolicPort&>(**group2->symbolicInputPortsInForce().begin());
  EXPECT_EQ(symbolic.name(), "Box: In");
  EXPECT_EQ(symbolic.resolvedPort(), &port(*mux2, "Tarn.source2Input"));
  EXPECT_EQ(symbolic.node(), group2.get());
  EXPECT_EQ(group2->inputPorts().size(), 1U);
  const auto connections = port(*mux2, "Tarn.source2Input").connections().toVector();
  ASSERT_EQ(connections.size(), 1U);
  EXPECT_EQ(connections[0]->displayInputPort(), &symbolic);
  EXPECT_EQ(connections[0]->outputPort(), &port(*named(*opened, "Clamp"), "Tarn.resultOutput"));
  // The opened document is alive: an edit is announced again.
  mux2->setName("Other");
  EXPECT_EQ(recorder.take().size(), 1U);
}

TEST_F(DocumentFileTest, OnlyTypeThreeKeepsTheUniqueKeys) {
  const auto node = add("HXRClampNode");
  for (const std::int32_t codingType : {0, 1, 3}) {
    const auto opened = reopened(*document, codingType);
    const auto same = named(*opened, "Clamp");
    EXPECT_EQ(same->uniqueKey() == node->uniqueKey(), codingType == 3) << codingType;
    EXPECT_EQ(opened->subnodeGroup()->subnodeForKey(same->uniqueKey()), same.get());
  }
  EXPECT_EQ(savedBytes(*document, 0), savedBytes(*document, 1));
}

TEST_F(DocumentFileTest, ANodeOfAnUnknownPatchLosesNothing) {
  static const HXRNodeClass visitor("HXRVisitorNode", &HXRClampNode, {});
  const auto node = make<HXNode>();
  node->setPatch(visitor.makeDefinition());
  node->setName("Visitor");
  document->subnodeGroup()->addNode(*node);
  const auto source = add("HXRClampNode");
  connect(*source, "Tarn.resultOutput", *node, "Tarn.valueInput");
  port(*node, "Tarn.minimumInput").setStaticValue(PMRPrimitive::primitiveWithIndexValue(5));
  const auto bytes = savedBytes(*document, 0);
  auto opened = openedDocument(bytes, 0);
  ASSERT_TRUE(opened);
  for (int round = 0; round < 2; ++round) {
    const auto visiting = named(*opened, "Visitor");
    EXPECT_FALSE(visiting->patch());
    EXPECT_EQ(visiting->unknownPatchClass(), "HXRVisitorNode");
    EXPECT_EQ(visiting->portsInForce().size(), 4U);
    EXPECT_EQ(port(*visiting, "Tarn.minimumInput").staticValue()->indexValue(), 5);
    EXPECT_EQ(port(*visiting, "Tarn.valueInput").connections().count(), 1U);
    const auto again = savedBytes(*opened, 0);
    opened = openedDocument(again, 0);
    ASSERT_TRUE(opened);
  }
  static const HXRNodeClass arrived("HXRVisitorNode", &HXRClampNode, {});
  ClassRegistry::add(arrived);
  opened = openedDocument(savedBytes(*opened, 0), 0);
  EXPECT_TRUE(named(*opened, "Visitor")->patch()) << "back with the plug-in";
}

TEST_F(DocumentFileTest, AViewWhoseKeyAnotherNodeTookIsNoViewAnyMore) {
  add("HXRColorViewNode");
  const auto first = reopened(*document, HXCodingTypeEditorWithKeys);
  const auto second = reopened(*document, HXCodingTypeEditorWithKeys);
  first->subnodeGroup()->addNode(*second->subnodeGroup()->subnodes()[0]);
  const auto bytes = savedBytes(*first, HXCodingTypeEditorWithKeys);
  Recorder recorder;
  const auto opened = openedDocument(bytes, HXCodingTypeEditorWithKeys);
  ASSERT_TRUE(opened);
  EXPECT_THAT(recorder.takeLog(), IsEmpty()) << "nothing of the other node was saved";
  const auto group = as<HXSubviewGroup>(opened->subnodeGroup());
  ASSERT_TRUE(group);
  ASSERT_EQ(group->subviewNodesInForce().count(), 1U);
  EXPECT_EQ(group->subviewNodesInForce().objectAtIndex(0).get(), group->subnodes()[0].get());
}

TEST_F(DocumentFileTest, ANodeOfAnUnknownPatchCanBeEditedAround) {
  static const HXRNodeClass guest("HXRGuestNode", &HXRColorViewNode, {});
  const auto node = make<HXNode>();
  node->setPatch(guest.makeDefinition());
  node->setName("Guest");
  document->subnodeGroup()->addNode(*node);
  const auto clamp = add("HXRClampNode", node.get());
  node->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.valueInput"));
  const auto source = add("HXRTransitionNode");
  connect(*source, "Tarn.output", *node, "Tarn.xPositionInput");
  const auto bytes = savedBytes(*document, 0);
  // The name may name something that is no patch.
  static const Class impostor("HXRGuestNode", &Object::kClass);
  ClassRegistry::add(impostor);
  const auto opened = openedDocument(bytes, 0);
  ASSERT_TRUE(opened);
  const auto guesting = named(*opened, "Guest");
  const auto inner = named(*guesting, "Clamp");
  const auto groups = guesting->inputPortGroups().size();
  EXPECT_EQ(guesting->inputPorts().size(), guesting->portsInForce().size() + 1);
  EXPECT_TRUE(guesting->shouldBeTreatedAsViewNode());

  guesting->setForceAllowsSubnodes(true);
  guesting->setForceAllowsSubnodes(false);
  ASSERT_TRUE(guesting->subnodeGroup()) << "nobody knows whether its patch holds nodes";
  guesting->subnodeGroup()->addSymbolicPortForPort(port(*inner, "Tarn.minimumInput"));
  EXPECT_EQ(guesting->inputPortGroups().size(), groups);
  EXPECT_EQ(guesting->inputPorts().size(), guesting->portsInForce().size() + 2);
  EXPECT_EQ(guesting->unknownPatchClass(), "HXRGuestNode");

  auto& output = port(*named(*opened, "Transition"), "Tarn.output");
  EXPECT_EQ(output.connections().count(), 1U);
  guesting->parentGroup()->removeNode(guesting.get());
  EXPECT_TRUE(output.connections().isEmpty());
  guesting->setPatch(nullptr);
  EXPECT_TRUE(guesting->unknownPatchClass().isNil());
  EXPECT_TRUE(guesting->portsInForce().empty());
}

TEST_F(DocumentFileTest, TheDeviceGraphHoldsWhatTheDeviceNeeds) {
  const auto group = add("");
  const auto clamp = add("HXRClampNode", group.get());
  const auto delay = add("HXRDelayNode");
  port(*delay, "Tarn.delayInput").setStaticValue(PMRPrimitive::primitiveWithNumberValue(3));
  connect(*delay, "Tarn.valueOutput", *clamp, "Tarn.valueInput");
  const auto bytes = HXDocumentFile::deviceGraph(*document);
  ASSERT_TRUE(bytes) << bytes.status().message();
  const auto read = PropertyListReader::read(*bytes);
  ASSERT_TRUE(read) << read.status().message();
  const PropertyList& list = *read;
  const auto objects = list.valueForKey(list.root(), "$objects");
  const auto text = [&](PropertyList::Index map, const char* key) {
    const auto value = list.valueForKey(map, key);
    return value == PropertyList::kNone ? std::string_view("absent") : list.string(value);
  };
  const auto target = [&](PropertyList::Index map, const char* key) {
    const auto reference = list.valueForKey(map, key);
    if (reference == PropertyList::kNone) return PropertyList::kNone;
    return list.valueForKey(objects, text(reference, "$reference"));
  };
  const auto root = list.valueForKey(objects, "$object-0");
  EXPECT_EQ(text(root, "$class"), "PMGraph");
  EXPECT_EQ(text(root, "PMNode.uniqueKey"), document->uniqueKey().view());
  EXPECT_EQ(text(root, "PMNode.processClassName"), "PMRPatch");
  EXPECT_EQ(list.valueForKey(root, "PMNode.parentGroup"), PropertyList::kNone);
  EXPECT_EQ(text(target(root, "PMNode.subnodeGroup"), "$class"), "PMGroup");

  std::map<std::string_view, int> classes;
  for (const auto object : list.values(objects)) {
    if (list.kind(object) != PropertyList::Kind::map) continue;
    const auto name = text(object, "$class");
    ++classes[name];
    if (name == "PMConnection") {
      EXPECT_EQ(target(object, "PMConnection.parentNode"), root);
      EXPECT_EQ(list.count(target(object, "PMConnection.outputPortKeyPath")), 1U);
      const auto path = target(object, "PMConnection.inputPortKeyPath");
      ASSERT_EQ(list.count(path), 2U);
      EXPECT_EQ(list.string(list.elements(path)[0]), clamp->uniqueKey().view());
    }
    if (name == "PMPort" && text(object, "PMPort.uniqueKey") == "Tarn.delayInput") {
      EXPECT_EQ(text(object, "PMPort.processClassName"), "PMRPrimitiveInputPort");
      const auto value = target(object, "PMPort.defaultValue");
      EXPECT_EQ(text(value, "$class"), "PMRPrimitive");
      EXPECT_EQ(list.real(list.valueForKey(value, "PMRPrimitive.numberValue")), 3.0);
    }
  }
  EXPECT_EQ(classes["PMNode"], 3);
  EXPECT_EQ(classes["PMPort"], 7);
  EXPECT_EQ(classes["PMConnection"], 1);
}

TEST_F(DocumentFileTest, ADocumentThatIsLetGoLeavesNothingBehind) {
  const auto liveAndDie = [this] {
    document = make<HXDocument>();
    const auto group = add("");
    const auto a = add("HXRClampNode", group.get());
    const auto b = add("HXRImageViewNode", group.get());
    connect(*a, "Tarn.resultOutput", *b, "Tarn.widthInput");
    group->subnodeGroup()->addSymbolicPortForPort(port(*a, "Tarn.valueInput"));
    port(*a, "Tarn.minimumInput").patchPort();
    reopened(*document);
    EXPECT_TRUE(HXDocumentFile::deviceGraph(*document));
    document = nullptr;
  };
  liveAndDie();  // what the process shares from now on is made
  const auto alive = Object::liveObjectCount();
  liveAndDie();
  EXPECT_EQ(Object::liveObjectCount(), alive);
}

TEST_F(DocumentFileTest, DeepDocumentsAreSavedOpenedSentAndTakenDown) {
  constexpr int kDepth = 20000;
  Ref<HXNode> parent(document.get());
  for (int i = 0; i < kDepth; ++i) {
    auto node = make<HXNode>();
    node->setForceAllowsSubnodes(true);
    node->setPatch(nullptr);
    parent->subnodeGroup()->addNode(*node);
    parent = node;
  }
  const auto opened = reopened(*document);
  ASSERT_TRUE(opened);
  int depth = 0;
  for (const HXNode* node = opened.get();
       node->subnodeGroup() && node->subnodeGroup()->subnodesInForce().size() == 1;
       node = node->subnodeGroup()->subnodesInForce().begin()->value.get()) {
    ++depth;
  }
  EXPECT_EQ(depth, kDepth);
  EXPECT_TRUE(HXDocumentFile::deviceGraph(*opened));
}

/// A node with something in it that no archive of the device can hold.
class UnsendableNode final : public HXNode {
 public:
  void encodeWithCoder(Encoder& coder) const override {
    static constinit const Symbol key{"table"};
    static const String nil;
    HXNode::encodeWithCoder(coder);
    if (coder.codingType() != HXCodingTypeDevice) return;
    coder.encodeMap(
        1,
        [](std::size_t) {
          return Encoder::MapEntry{nil, Null::null().get()};
        },
        key);
  }
};

TEST_F(DocumentFileTest, FailuresTellKindSentenceAndPath) {
  std::string pattern = (std::filesystem::temp_directory_path() / "tarnkit-XXXXXX").string();
  const std::filesystem::path folder = ::mkdtemp(pattern.data());
  const auto path = [&](const char* name) { return (folder / name).string(); };
  const auto write = [&](const char* name, ByteSpan bytes) {
    EXPECT_TRUE(File::write(path(name), bytes));
  };
  add("HXRClampNode");
  const auto whole = savedBytes(*document);
  write("whole", whole);
  write("cut", ByteSpan(whole).first(whole.size() / 2));
  write("text", bytesOf("text"));
  write("graph", *HXDocumentFile::deviceGraph(*document));
  write("foreign", StandardKeyedArchiver::archivedData(make<Array>().get(), 0)->bytes());
  const auto unsendable = make<HXDocument>();
  unsendable->subnodeGroup()->addNode(*make<UnsendableNode>());
  document->imageStore()->addImageEntry(make<HXImageStoreEntry>(nullptr, "../out"));

  const auto opening = [&](const char* name, std::int32_t codingType = 0) {
    return HXDocumentFile::open(path(name), codingType).status();
  };
  const struct {
    Status status;
    StatusCode code;
    std::string path;
    const char* sentence;
  } cases[] = {
      {opening("none"), StatusCode::notFound, path("none"), "No such file or directory"},
      {opening("."), StatusCode::notAFile, path("."), "Is a directory"},
      {opening("cut"), StatusCode::damaged, path("cut"), "not a readable property list: "},
      {opening("text"), StatusCode::damaged, path("text"), "not a readable property list: "},
      {opening("graph"), StatusCode::unsupported, path("graph"), "not a keyed archive: "},
      {opening("foreign"), StatusCode::unsupported, path("foreign"),
       "the root is a NSArray, not a document"},
      {opening("whole", 2), StatusCode::refused, path("whole"), "coding type 2 is not an editor's"},
      {HXDocumentFile::save(*document, path("none/a"), 0), StatusCode::notFound, path("none/a"),
       "No such file or directory"},
      {HXDocumentFile::save(*document, "/dev/full", 0), StatusCode::noSpace, "/dev/full",
       "No space left on device"},
      {HXDocumentFile::save(*document, path("a"), 2), StatusCode::refused, "",
       "coding type 2 is not an editor's (0, 1 or 3)"},
      {HXDocumentFile::send(*document, "/dev/full"), StatusCode::noSpace, "/dev/full",
       "No space left on device"},
      {HXDocumentFile::send(*unsendable, path("sent")), StatusCode::refused, path("sent"),
       "the device graph could not be made: a key of a map is not a string"},
      {HXDocumentFile::sendImages(*document, path("images")).status(), StatusCode::refused,
       path("images"), "the image key \"../out\" cannot name a file"},
      {HXDocumentFile::sendImages(*unsendable, path("text")).status(), StatusCode::notAFile,
       path("text"), "Not a directory"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.sentence);
    EXPECT_EQ(nameOf(c.status.code()), nameOf(c.code));
    EXPECT_EQ(c.status.path(), c.path);
    EXPECT_THAT(c.status.sentence(), ::testing::StartsWith(c.sentence));
  }
  EXPECT_FALSE(std::filesystem::exists(path("sent")));
  EXPECT_FALSE(std::filesystem::exists(path("images")));
  std::filesystem::remove_all(folder);
}

// Whatever an archive calls by a name, no class of a plug-in can be.
TEST_F(DocumentFileTest, TheNamesThatArchivesWriteAreTaken) {
  for (const auto* const patchClass : catalogue()) add(std::string(patchClass->name()).c_str());
  const auto inner = add("HXRClampNode", add("").get());
  inner->parentGroup()->addSymbolicPortForPort(port(*inner, "Tarn.valueInput"));
  connect(*add("HXRClampNode"), "Tarn.resultOutput", *add("HXRClampNode"), "Tarn.valueInput");
  const auto entry = HXImageStore::createImageEntry(*Image::imageWithPixels(1, 1, {1, 2, 3, 255}));
  document->imageStore()->addImageEntry(entry);
  auto& image = *as<HXImageParameter>(add("HXRImageNode")->parameterForKey("Tarn.imageParameter"));
  image.setValue(entry);
  ASSERT_TRUE(addPatchClass(HXRClampNode));
  std::set<std::string> names;
  for (const auto& bytes : {savedBytes(*document, 0), *HXDocumentFile::deviceGraph(*document)}) {
    const auto read = PropertyListReader::read(bytes);
    ASSERT_TRUE(read) << read.status().message();
    const PropertyList& list = *read;
    for (PropertyList::Index at = 0; at < list.count(); ++at) {
      if (list.kind(at) != PropertyList::Kind::map) continue;
      for (const char* key :
           {"$classname", "$class", "HXNode.patchClass", "PMNode.processClassName",
            "PMPort.processClassName", "PMParameter.processClassName"}) {
        const auto name = list.valueForKey(at, key);
        if (name == PropertyList::kNone || list.kind(name) != PropertyList::Kind::string) continue;
        names.emplace(list.string(name));
      }
    }
  }
  EXPECT_GT(names.size(), 150U);
  for (const auto& name : names) EXPECT_TRUE(ClassRegistry::isTaken(name)) << name;
}

}  // namespace tarnkit::test
