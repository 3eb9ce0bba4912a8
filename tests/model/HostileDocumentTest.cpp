#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <random>

#include "Consistency.h"
#include "ModelFixture.h"
#include "Tampering.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"
#include "tarnkit/platform/collections/Array.h"
#include "tarnkit/platform/propertylist/PropertyList.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"

// Documents that somebody has tampered with: whatever stands in them, opening ends in a document
// that can be edited, saved and sent, or in one sentence and nothing left behind.

namespace tarnkit::test {

using Index = Tampering::Index;

class HostileDocumentTest : public ModelTest {
 protected:
  std::vector<std::uint8_t> documentWithEverything(std::int32_t codingType) {
    const auto group = add("");
    const auto mux = add("HXRMultiplexerNode", group.get());
    as<HXIndexParameter>(mux->parameterForKey("Tarn.numberOfSourcesParameter"))->setValue(3);
    const auto view = add("HXRColorViewNode", group.get());
    const auto clamp = add("HXRClampNode");
    port(*clamp, "Tarn.minimumInput").setStaticValue(PMRPrimitive::primitiveWithStringValue("s"));
    connect(*clamp, "Tarn.resultOutput", *mux, "Tarn.source0Input");
    const auto symbolic = group->subnodeGroup()->addSymbolicPortForPort(port(*mux, "Tarn.output"));
    document->connectPort(*symbolic, port(*clamp, "Tarn.valueInput"));
    auto replicator = make<HXReplicatorNode>();
    replicator->setPatch(HXRReplicatorNode.makeDefinition());
    document->subnodeGroup()->addNode(*replicator);
    const auto inner = add("HXRClampNode", replicator.get());
    replicator->subnodeGroup()->addSymbolicPortForPort(port(*inner, "Tarn.resultOutput"));
    add("HXRImageNode");
    document->imageStore()->addImageEntry(HXImageStore::createImageEntry(
        *Image::imageWithPixels(2, 1, {1, 2, 3, 255, 4, 5, 6, 255})));
    return savedBytes(*document, codingType);
  }

  // Opens the file; whatever opens is used.
  static bool openAndUse(const std::vector<std::uint8_t>& bytes, std::int32_t codingType) {
    const auto result = HXDocumentFile::document(bytes, codingType);
    EXPECT_NE(result.isOK(), !result.status().sentence().empty());
    if (!result) return false;
    const auto& opened = *result;
    EXPECT_TRUE(openedDocument(savedBytes(*opened, codingType), codingType));
    EXPECT_TRUE(HXDocumentFile::deviceGraph(*opened));
    opened->pruneInvalidConnections();
    for (const auto& node : opened->subnodeGroup()->subnodes()) {
      node->ports();
      opened->subnodeGroup()->removeNode(node.get());
    }
    return true;
  }

  // The document's file with each reference under one of the keys led to each object in turn.
  template <class Use>
  void pointEverywhere(std::initializer_list<std::string_view> keys, std::int32_t codingType,
                       const Use& use) {
    const auto bytes = savedBytes(*document, codingType);
    const auto read = PropertyListReader::read(bytes);
    ASSERT_TRUE(read);
    const PropertyList& list = *read;
    const auto objects = list.elements(list.valueForKey(list.root(), "$objects"));
    Tampering tampering(list);
    for (const auto map : objects) {
      if (list.kind(map) != PropertyList::Kind::map) continue;
      for (std::uint32_t entry = 0; entry < list.count(map); ++entry) {
        const auto key = list.string(list.keys(map)[entry]);
        if (std::find(keys.begin(), keys.end(), key) == keys.end()) continue;
        for (std::uint32_t object = 0; object < objects.size(); ++object) {
          SCOPED_TRACE(fmt::format("{} to {}", key, object));
          use(tampering.pointedAt(map, entry, object));
        }
      }
    }
  }
};

TEST_F(HostileDocumentTest, AnyValueMayBeOfAnyTypeUnderAnyKey) {
  for (const std::int32_t codingType : {0, 3}) {
    document = make<HXDocument>();
    const auto bytes = documentWithEverything(codingType);
    const auto read = PropertyListReader::read(bytes);
    ASSERT_TRUE(read);
    const PropertyList& list = *read;
    ASSERT_TRUE(openAndUse(bytes, codingType));
    Recorder quiet;
    Tampering tampering(list);
    const auto alive = Object::liveObjectCount();
    int opened = 0;
    int tried = 0;
    for (Index map = 0; map < list.count(); ++map) {
      if (list.kind(map) != PropertyList::Kind::map) continue;
      for (std::uint32_t entry = 0; entry < list.count(map); ++entry) {
        opened += openAndUse(tampering.without(map, entry), codingType);
        for (int i = codingType; i < Tampering::kReplacements; i += 1 + codingType, ++tried) {
          opened += openAndUse(tampering.replaced(map, entry, i), codingType);
        }
      }
    }
    EXPECT_GT(opened, tried / 20);
    EXPECT_LT(opened, tried);
    // The first round also makes what the process shares from then on.
    if (codingType == 3) {
      EXPECT_EQ(Object::liveObjectCount(), alive) << "what did not open must not stay";
    }
  }
}

TEST_F(HostileDocumentTest, TruncatedAndFlippedFilesEndInASentence) {
  const auto bytes = documentWithEverything(0);
  Recorder quiet;
  for (std::size_t size = 0; size < bytes.size(); size += 97) {
    const std::vector<std::uint8_t> cut(bytes.begin(),
                                        bytes.begin() + static_cast<std::ptrdiff_t>(size));
    const auto opened = HXDocumentFile::document(cut, 0);
    EXPECT_EQ(opened.status().code(), StatusCode::damaged);
    EXPECT_FALSE(opened.status().sentence().empty());
  }
  std::mt19937 random(11);
  for (int i = 0; i < 500; ++i) {
    auto flipped = bytes;
    flipped[random() % flipped.size()] ^= static_cast<std::uint8_t>(1U << random() % 8);
    openAndUse(flipped, 0);
  }
}

TEST_F(HostileDocumentTest, PublishedPortsThatPublishEachOtherInACircleComeApart) {
  const auto outer = add("");
  const auto inner = add("", outer.get());
  auto& value = port(*add("HXRClampNode", inner.get()), "Tarn.valueInput");
  const auto first = inner->subnodeGroup()->addSymbolicPortForPort(value);
  const auto second = outer->subnodeGroup()->addSymbolicPortForPort(*first);
  document->subnodeGroup()->addSymbolicPortForPort(*second);
  const auto bytes = savedBytes(*document, 0);
  const auto read = PropertyListReader::read(bytes);
  ASSERT_TRUE(read);
  const PropertyList& list = *read;
  const auto objects = list.elements(list.valueForKey(list.root(), "$objects"));
  // Of the two published ports in the file that are published again, and say by which, the second
  // is the one that the first names.
  struct Published {
    std::uint32_t object;
    Index map;
    std::uint32_t entry;
  };
  std::vector<Published> published;
  for (std::uint32_t object = 0; object < objects.size(); ++object) {
    const Index map = objects[object];
    if (list.kind(map) != PropertyList::Kind::map || list.count(map) == 0) continue;
    const std::vector<Index> keys(list.keys(map).begin(), list.keys(map).end());
    const auto entryOf = [&](std::string_view key) {
      const auto found = std::find_if(keys.begin(), keys.end(),
                                      [&](const Index at) { return list.string(at) == key; });
      return static_cast<std::uint32_t>(found - keys.begin());
    };
    if (entryOf("HXSymbolicPort.name") == keys.size()) continue;
    const std::uint32_t entry = entryOf("HXPort.symbolicPort");
    if (entry != keys.size()) published.push_back({object, map, entry});
  }
  ASSERT_EQ(published.size(), 2U);
  const bool isInOrder =
      list.uid(list.values(published[0].map)[published[0].entry]) == published[1].object;
  const Published& bent = published[isInOrder ? 1 : 0];
  Tampering tampering(list);
  for (const Published& next : published) {
    const auto file = tampering.pointedAt(bent.map, bent.entry, next.object);
    const auto opened = openedDocument(file, 0);
    ASSERT_TRUE(opened);
    const auto group = opened->subnodeGroup()->subnodes()[0];
    ASSERT_EQ(group->symbolicInputPortsInForce().count(), 1U);
    const auto subgroup = group->subnodeGroup()->subnodes()[0];
    subgroup->subnodeGroup()->removeNode(subgroup->subnodeGroup()->subnodes()[0].get());
    EXPECT_TRUE(group->symbolicInputPortsInForce().isEmpty());
    EXPECT_TRUE(subgroup->symbolicInputPortsInForce().isEmpty());
  }
}

// Whatever the inner port of a publication may be said to be: of the same group, of one further in,
// of one further out. Only a circle is broken.
TEST_F(HostileDocumentTest, PublicationsThatLeadAroundInACircleAreBrokenOnce) {
  auto replicator = make<HXReplicatorNode>();
  replicator->setPatch(HXRReplicatorNode.makeDefinition());
  document->subnodeGroup()->addNode(*replicator);
  const auto inner = add("", replicator.get());
  const auto clamp = add("HXRClampNode", inner.get());
  Ref<HXPort> published(&port(*clamp, "Tarn.resultOutput"));
  for (HXNode* node : {inner.get(), static_cast<HXNode*>(replicator.get())}) {
    published = node->subnodeGroup()->addSymbolicPortForPort(*published);
  }
  document->subnodeGroup()->addSymbolicPortForPort(
      *replicator->portForKey(replicator->replicatorArrayOutputPortKeyForPort().begin()->value));
  document->subnodeGroup()->addSymbolicPortForPort(*published);
  for (const std::int32_t codingType : {0, 3}) {
    int circles = 0;
    pointEverywhere({"HXSymbolicPort.port", "HXPort.symbolicPort"}, codingType,
                    [&](const std::vector<std::uint8_t>& bent) {
                      Recorder recorder;
                      openAndUse(bent, codingType);
                      for (const auto& line : recorder.takeLog()) {
                        circles += line.find("that stands for itself") != std::string::npos;
                      }
                    });
    // Each of the four publications may be led to itself and to those that stand for it; the log
    // line appears once a circle, and again for none: what was opened and saved has no circle.
    EXPECT_GE(circles, 4);
    EXPECT_LE(circles, 10);
  }
}

// Whatever a node says that it is in, and a group that it is of: who lists the other counts.
TEST_F(HostileDocumentTest, LinksUpwardAreThoseOfWhoHolds) {
  const auto group = add("");
  const auto clamp = add("HXRClampNode", group.get());
  group->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.valueInput"));
  for (const std::int32_t codingType : {0, 3}) {
    int straightened = 0;
    pointEverywhere({"HXNode.parentGroup", "HXGroup.node"}, codingType,
                    [&](const std::vector<std::uint8_t>& bent) {
                      const auto opened = HXDocumentFile::document(bent, codingType);
                      if (!opened) return;
                      EXPECT_THAT(faultsOf(**opened), ::testing::IsEmpty());
                      straightened += (*opened)->subnodeGroup()->subnodes().size() == 1;
                    });
    EXPECT_GE(straightened, 8);
  }
}

TEST_F(HostileDocumentTest, WhatTwoNodesClaimIsRefused) {
  for (int i = 0; i < 2; ++i) add("HXRMultiplexerNode", add("").get());
  const std::pair<const char*, const char*> claims[] = {
      {"HXNode.subnodeGroup", "HXNode.subnodeGroup: a group that belongs to two nodes"},
      {"HXNode.portsByUniqueKey", "HXNode.portsByUniqueKey: a port that belongs to two nodes"},
      {"HXNode.parametersByUniqueKey",
       "HXNode.parametersByUniqueKey: a parameter that belongs to another node"}};
  Recorder quiet;
  for (const auto& claim : claims) {
    const auto* const key = claim.first;
    const auto* const sentence = claim.second;
    int refused = 0;
    pointEverywhere({key}, 3, [&](const std::vector<std::uint8_t>& bent) {
      const auto opened = HXDocumentFile::document(bent, 3);
      if (opened) {
        EXPECT_THAT(faultsOf(**opened), ::testing::IsEmpty());
      } else {
        refused += opened.status().sentence() == sentence;
      }
    });
    EXPECT_GE(refused, 2) << key;
  }
}

// Each of two would take the other's nodes for strays and come out empty; of thousands, each would
// look at all the others.
TEST_F(HostileDocumentTest, ASecondDocumentIsRefused) {
  const auto both = make<Array>();
  both->add(document);
  both->add(make<HXDocument>());
  const auto data = StandardKeyedArchiver::archivedData(both.get(), 0);
  ASSERT_TRUE(data);
  Recorder quiet;
  EXPECT_EQ(HXDocumentFile::document(data->bytes(), 0).status().sentence(),
            "a second document stands in the archive");
}

namespace {

// Stands for an object of the model in an archive that no model writes.
class Fake : public Object {
  TARNKIT_CLASS
 public:
  std::function<void(Encoder&)> script;
  void encodeWithCoder(Encoder& coder) const override { script(coder); }
};
class FakeGroup final : public Fake {
  TARNKIT_CLASS
};
const Class Fake::kClass{"Fake", &Object::kClass};
const Class FakeGroup::kClass{"FakeGroup", &Fake::kClass};

const Symbol kNodeClass{"HXNode"}, kGroupClass{"HXGroup"}, kSubnodeGroup{"HXNode.subnodeGroup"},
    kSubnodes{"HXGroup.subnodes"}, kNodeOfGroup{"HXGroup.node"},
    kForceAllowsSubnodes{"HXNode.forceAllowsSubnodes"};

// Nodes, each of which holds the next, and the last of which holds the first.
std::vector<Ref<Fake>> circleOf(int nodes) {
  std::vector<Ref<Fake>> circle;
  for (int i = 0; i < nodes; ++i) circle.push_back(make<Fake>());
  for (std::size_t i = 0; i < circle.size(); ++i) {
    const auto group = make<FakeGroup>();
    Fake* const inner = circle[(i + 1) % circle.size()].get();
    Fake* const outer = circle[i].get();
    group->script = [inner, outer](Encoder& coder) {
      coder.encodeConditionalObject(static_cast<const Object*>(outer), kNodeOfGroup);
      coder.encodeList(std::vector<Ref<Fake>>{Ref<Fake>(inner)}, kSubnodes);
    };
    circle[i]->script = [group](Encoder& coder) {
      coder.encodeObject(group, kSubnodeGroup);
      coder.encodeBool(true, kForceAllowsSubnodes);
    };
  }
  return circle;
}

}  // namespace

// A document takes such nodes apart; any other root, as a paste is, cannot do without them.
TEST_F(HostileDocumentTest, NoRootHoldsANodeThatStandsInsideItself) {
  const auto sound = StandardKeyedArchiver::archivedData(add("").get(), 0);
  EXPECT_TRUE(
      StandardKeyedUnarchiver::unarchive(sound->bytes(), 0));  // a first use makes what stays
  for (const int nodes : {1, 2, 3}) {
    for (const bool asList : {false, true}) {
      const auto circle = circleOf(nodes);
      const auto list = make<Array>();
      list->add(circle[0]);
      StandardKeyedArchiver archiver;
      archiver.setClassName(kNodeClass, Fake::kClass);
      archiver.setClassName(kGroupClass, FakeGroup::kClass);
      archiver.encodeRootObject(asList ? static_cast<const Object*>(list.get()) : circle[0].get());
      const auto bytes = *archiver.finishEncoding();
      const auto alive = Object::liveObjectCount();
      EXPECT_EQ(StandardKeyedUnarchiver::unarchive(bytes, 0).status().sentence(),
                "HXNode.subnodeGroup: a node that stands inside itself");
      EXPECT_EQ(Object::liveObjectCount(), alive);
    }
  }
  // And nothing else is taken for it.
  const auto outer = add("");
  add("HXRClampNode", add("", outer.get()).get());
  const auto list = make<Array>();
  list->add(outer);
  list->add(add("HXRClampNode"));
  for (const Object* root :
       {static_cast<const Object*>(outer.get()), static_cast<const Object*>(list.get())}) {
    const auto data = StandardKeyedArchiver::archivedData(root, 0);
    const auto opened = StandardKeyedUnarchiver::unarchive(data->bytes(), 0);
    EXPECT_TRUE(opened) << opened.status().message();
  }
}

TEST_F(HostileDocumentTest, AConnectionOfAStrangerIsDropped) {
  const auto from = add("HXRClampNode");
  const auto to = add("HXRClampNode");
  const auto stranger = add("HXRClampNode");
  const auto connection = connect(*from, "Tarn.resultOutput", *to, "Tarn.valueInput");
  port(*stranger, "Tarn.minimumInput").connectConnection(*connection);
  stranger->setName("Stranger");
  const auto bytes = savedBytes(*document, 0);
  Recorder recorder;
  const auto opened = openedDocument(bytes, 0);
  ASSERT_TRUE(opened);
  EXPECT_THAT(recorder.takeLog(),
              ::testing::ElementsAre("WARNING: [HXPatchPort] Dropping 1 connections of a port that "
                                     "is none of their ends"));
  std::size_t ends = 0;
  for (const auto& node : opened->subnodeGroup()->subnodes()) {
    for (const auto& entry : node->portsInForce()) {
      ends += entry.value->connections().count();
      EXPECT_TRUE(node->name() != "Stranger" || entry.value->connections().isEmpty());
    }
  }
  EXPECT_EQ(ends, 2U);
}

// An image without pixels has no file, and so could be saved and not opened.
TEST_F(HostileDocumentTest, AnEmptyImageDoesNotMakeADocumentUnreadable) {
  const auto empty = make<HXImageStoreEntry>(make<Image>(), "key");
  Recorder recorder;
  document->imageStore()->addImageEntry(empty);
  EXPECT_THAT(
      recorder.takeLog(),
      ::testing::ElementsAre("WARNING: [HXImageStore] Attempting to add an entry whose image "
                             "is empty."));
  EXPECT_TRUE(document->imageStore()->imageEntriesInForce().empty());
  const auto shown = add("HXRImageNode");
  for (const auto& entry : shown->parameters()) {
    if (auto* image = as<HXImageParameter>(entry.value.get())) image->setImageEntry(empty);
  }
  EXPECT_TRUE(openAndUse(savedBytes(*document, 0), 0));
}

// One name of a quarter of a megabyte, of ports on many nodes: each would keep the part before the
// colon for itself.
TEST_F(HostileDocumentTest, ALongNameThatManyPortsShareIsNotCopiedForEach) {
  constexpr int kGroups = 20;
  const std::string key(1U << 18, 'k');
  const String name(key + ": x");
  for (int i = 0; i < kGroups; ++i) {
    const auto group = add("");
    const auto clamp = add("HXRClampNode", group.get());
    for (const char* inner : {"Tarn.valueInput", "Tarn.minimumInput"}) {
      group->subnodeGroup()->addSymbolicPortForPort(port(*clamp, inner))->setName(name);
    }
  }
  const auto bytes = savedBytes(*document, 0);
  const auto opened = openedDocument(bytes, 0);
  ASSERT_TRUE(opened);
  const Object* shared = nullptr;
  for (const auto& node : opened->subnodeGroup()->subnodes()) {
    ASSERT_EQ(node->subnodeGroup()->symbolicInputPortsInForce().count(), 2U);
    for (const auto& member : node->subnodeGroup()->symbolicInputPortsInForce()) {
      const String& groupKey = static_cast<const HXSymbolicPort&>(*member).groupKey();
      EXPECT_TRUE(groupKey == key);
      if (!shared) shared = groupKey.object().get();
      EXPECT_EQ(groupKey.object().get(), shared);
    }
    auto* const first = as<HXSymbolicPort>(
        node->subnodeGroup()->symbolicInputPortsInForce().objectAtIndex(0).get());
    first->setName("Other: x");
    EXPECT_EQ(first->groupKey(), "Other");
    first->setName(String(key));
    EXPECT_EQ(first->groupKey(), "Published");
  }
}

}  // namespace tarnkit::test
