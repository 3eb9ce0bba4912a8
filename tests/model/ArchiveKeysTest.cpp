#include <fmt/format.h>

#include <set>

#include "ModelFixture.h"
#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tests/model/ArchiveTexts.h"

// Every key of every class of the model: what is written under it, what is read from it, and what
// is read where an archive of an earlier day or from elsewhere has none. The texts are kept in the
// folder golden; ArchiveTexts.h tells how they are made anew.

namespace tarnkit::test {

namespace {

// Every flag, coordinate and side has a value of its own, so that no two can be taken for each
// other.
class ArchiveKeysTest : public ModelTest {
 protected:
  ArchiveKeysTest() {
    drawKeysOfOneLength();
    document = make<HXDocument>();
    setNode(*document, "Top", {-1.5F, 2.5F}, 1, false);
    addValues();
    addGroups();
    addContainers();
    addImages();
    document->subnodeGroup()->setCanvasCenter({3.25F, -4.75F});
  }

  static void setNode(HXNode& node, const char* name, HXPoint position, std::uint64_t panel,
                      bool selected) {
    node.setName(name);
    node.setPosition(position);
    node.setInspectorPanel(panel);
    node.setSelected(selected);
  }
  static void setFlags(HXPortGroup& group, bool canvas, bool sidebar, bool hidden) {
    group.setCollapsedCanvasGroup(canvas);
    group.setCollapsedSidebarGroup(sidebar);
    group.setHidden(hidden);
  }
  template <class Kind>
  static Kind& parameter(HXNode& node, const char* key) {
    return *as<Kind>(node.parameterForKey(key));
  }

  // Static values of every kind, parameters of every kind.
  void addValues() {
    const auto debug = add("HXRDebugNode");
    setNode(*debug, "Values", {10, 20}, 2, true);
    using P = PMRPrimitive;
    const auto set = [&](const char* key, Ref<P> value) {
      port(*debug, key).setStaticValue(std::move(value));
    };
    set("Tarn.booleanInput", P::primitiveWithBooleanValue(true));
    set("Tarn.indexInput", P::primitiveWithIndexValue(-7));
    set("Tarn.numberInput", P::primitiveWithNumberValue(0.1F));
    set("Tarn.angleInput", P::primitiveWithDegreesValue(30));
    set("Tarn.mappedAngleInput", P::primitiveWithRadiansValue(1.5F));
    set("Tarn.colorInput", P::primitiveWithColorValue({0.125F, 0.25F, 0.375F, 0.5F}));
    set("Tarn.stringInput", P::primitiveWithStringValue("text"));
    set("Tarn.mappedStringInput", P::primitiveWithNilValue());
    parameter<HXBooleanParameter>(*debug, "Tarn.booleanParameter").setValue(true);
    parameter<HXIndexParameter>(*debug, "Tarn.integerParameter").setValue(5);
    parameter<HXNumberParameter>(*debug, "Tarn.floatParameter").setValue(2.25F);
    parameter<HXColorParameter>(*debug, "Tarn.colorParameter")
        .setValue({0.0625F, 0.1875F, 0.3125F, 0.4375F});
    parameter<HXStringParameter>(*debug, "Tarn.singleLineStringParameter").setValue("single");
    parameter<HXStringParameter>(*debug, "Tarn.multipleLineStringParameter").setValue("a\nb");
  }

  // Publications of both sides through two levels, connections that are shown at them.
  void addGroups() {
    const auto outer = add("");
    setNode(*outer, "Outer", {30, 40}, 3, false);
    outer->subnodeGroup()->setCanvasCenter({50, 60});
    outer->subnodeGroup()->setOpaque(true);
    const auto inner = add("", outer.get());
    setNode(*inner, "Inner", {70, 80}, 4, false);
    const auto mux = add("HXRMultiplexerNode", inner.get());
    setNode(*mux, "Choice", {90, 100}, 5, true);
    parameter<HXIndexParameter>(*mux, "Tarn.numberOfSourcesParameter").setValue(3);
    setFlags(*mux->portGroupForKey("Sources", HXOrientationInput), true, false, false);
    setFlags(*mux->portGroupForKey("__Default", HXOrientationOutput), false, true, true);
    const auto publish = [&](HXNode& node, HXPort& published, const char* name) {
      const auto made = node.subnodeGroup()->addSymbolicPortForPort(published);
      made->setName(name);
      return made;
    };
    const auto source = publish(*inner, port(*mux, "Tarn.source1Input"), "Sources: Inner In");
    const auto result = publish(*inner, port(*mux, "Tarn.output"), "Results: Inner Out");
    const auto outerSource = publish(*outer, *source, "Sources: Outer In");
    const auto outerResult = publish(*outer, *result, "Results: Outer Out");
    publish(*inner, port(*mux, "Tarn.source2Input"), "Sources: Second");
    setFlags(*inner->inputPortGroups()[0], false, true, false);
    setFlags(*outer->outputPortGroups()[0], true, true, false);
    const auto clamp = add("HXRClampNode");
    setNode(*clamp, "Clamp", {110, 120}, 6, false);
    document->connectPort(port(*clamp, "Tarn.resultOutput"), *outerSource);
    document->connectPort(*outerResult, port(*clamp, "Tarn.minimumInput"));
    const auto other = add("HXRClampNode", inner.get());
    setNode(*other, "Other", {130, 140}, 7, false);
    document->connectPort(port(*other, "Tarn.resultOutput"), port(*mux, "Tarn.source0Input"));
  }

  // Views in another order than that of their adding, and the nodes of their own classes.
  void addContainers() {
    for (const char* patch : {"HXRColorViewNode", "HXRImageViewNode"}) add(patch);
    auto& views = *as<HXSubviewGroup>(document->subnodeGroup().get());
    views.moveSubviewNode(*named(*document, "Image View"), 0);
    for (const char* patch : {"HXRReplicatorNode", "HXRLoopNode", "HXRRemoteGroupNode",
                              "HXRRemoteGroupProcessorNode"}) {
      const auto* record = patchClassNamed(patch);
      const auto node = HXNode::makeOfClass(record->nodeClassName().view());
      node->setPatch(record->makeDefinition());
      document->subnodeGroup()->addNode(*node);
    }
    const auto replicator = named(*document, "Replicator");
    const auto copied = add("HXRClampNode", replicator.get());
    copied->setName("Copied");
    replicator->subnodeGroup()->addSymbolicPortForPort(port(*copied, "Tarn.resultOutput"));
  }

  void addImages() {
    const auto one = HXImageStore::createImageEntry(*Image::imageWithPixels(1, 1, {1, 2, 3, 255}));
    const auto two =
        HXImageStore::createImageEntry(*Image::imageWithPixels(2, 1, {1, 2, 3, 255, 4, 5, 6, 255}));
    document->imageStore()->addImageEntry(one);
    document->imageStore()->addImageEntry(two);
    parameter<HXImageParameter>(*named(*document, "Values"), "Tarn.imageParameter")
        .setImageEntry(two);
  }

  std::vector<std::uint8_t> archive(std::int32_t codingType) const {
    return savedBytes(*document, codingType);
  }
  static std::string deviceTextOf(const HXDocument& document) {
    return deviceText(*HXDocumentFile::deviceGraph(document));
  }
};

// The lines that only one of the texts has, in the order of both, so many of each at most.
std::string difference(const std::string& before, const std::string& after,
                       std::size_t atMost = 1000) {
  std::multiset<std::string> old, fresh;
  const auto lines = [](const std::string& text) {
    std::vector<std::string> found;
    for (std::size_t at = 0; at < text.size();) {
      const auto end = text.find('\n', at);
      found.push_back(text.substr(at, end - at));
      at = end + 1;
    }
    return found;
  };
  for (const auto& line : lines(before)) old.insert(line);
  for (const auto& line : lines(after)) fresh.insert(line);
  std::string out;
  const auto tell = [&](const std::vector<std::string>& all, auto& others, char sign) {
    std::size_t count = 0;
    for (const auto& line : all) {
      if (const auto found = others.find(line); found != others.end()) {
        others.erase(found);
      } else if (++count <= atMost) {
        out += std::string("  ") + sign + line + "\n";
      }
    }
    if (count > atMost) out += fmt::format("  {}… {} lines\n", sign, count);
  };
  tell(lines(before), fresh, '-');
  tell(lines(after), old, '+');
  return out;
}

// A key that nobody writes or reads any more, and two that changed places, show here.
TEST_F(ArchiveKeysTest, EveryKeyIsWrittenAndReadBack) {
  EXPECT_TRUE(archive(0) == archive(1));
  const std::string withKeys = editorText(archive(HXCodingTypeEditorWithKeys));
  expectGolden(withOwnKeys(withKeys), "document-with-keys.txt");
  expectGolden(withOwnKeys(difference(withKeys, editorText(archive(0)))), "document.txt");
  for (const std::int32_t codingType : {0, 3}) {
    const auto text = editorText(archive(codingType));
    Recorder recorder;
    const auto opened = reopened(*document, codingType);
    EXPECT_THAT(recorder.take(), ::testing::IsEmpty()) << "an opening document announces nothing";
    EXPECT_THAT(recorder.takeLog(), ::testing::IsEmpty());
    const auto again = editorText(savedBytes(*opened, codingType));
    const bool keepsKeys = codingType == HXCodingTypeEditorWithKeys;
    const auto compared = [&](const std::string& whole) {
      return keepsKeys ? whole : withOwnKeys(whole);
    };
    expectSameText(compared(again), compared(text), "written, read and written again");
    expectSameText(compared(propertyText(*opened)), compared(propertyText(*document)),
                   "the properties");
    expectSameText(withOwnKeys(deviceTextOf(*opened)), withOwnKeys(deviceTextOf(*document)),
                   "the device graph");
  }
  expectGolden(withOwnKeys(propertyText(*document)), "document-properties.txt");
  expectGolden(withOwnKeys(deviceTextOf(*document)), "document-device.txt");
}

// The keys that objects of the model have in the archive.
std::set<std::string> keysIn(ByteSpan archive) {
  const auto read = PropertyListReader::read(archive);
  EXPECT_TRUE(read);
  const PropertyList& list = *read;
  std::set<std::string> keys;
  for (PropertyList::Index i = 0; i < list.count(); ++i) {
    if (list.kind(i) != PropertyList::Kind::map) continue;
    for (const auto key : list.keys(i)) {
      const auto text = list.string(key);
      if (text.substr(0, 2) == "HX" || text.substr(0, 3) == "PMR") keys.emplace(text);
    }
  }
  return keys;
}

// The archive with another name in the place of the key.
std::string withoutKey(std::string archive, const std::string& key) {
  // A string stands behind its length, so no other one is taken for it.
  const auto length = static_cast<char>(key.size());
  const std::string marked = key.size() < 15
                                 ? std::string(1, static_cast<char>(0x50 | length)) + key
                                 : std::string("\x5F\x10") + length + key;
  for (auto at = archive.find(marked); at != std::string::npos; at = archive.find(marked, at)) {
    archive[at + marked.size() - 1] = '?';
  }
  return archive;
}

// Archives of earlier days and from elsewhere lack keys. Each is taken out in turn; the text tells
// what is then another than it was, what was logged, or why the archive is refused.
TEST_F(ArchiveKeysTest, AKeyThatIsAbsentReadsAsItsDefault) {
  const auto bytes = archive(HXCodingTypeEditorWithKeys);
  const std::string file(bytes.begin(), bytes.end());
  const std::string before = propertyText(*document);
  std::string out;
  for (const std::string& key : keysIn(bytes)) {
    const std::string without = withoutKey(file, key);
    Recorder recorder;
    const auto opened = HXDocumentFile::document(bytesOf(without), 3);
    out += key + "\n";
    for (const auto& line : recorder.takeLog()) out += "  log " + line + "\n";
    if (opened) {
      out += difference(before, propertyText(**opened), 8);
    } else {
      out += "  refused: " + opened.status().message() + "\n";
    }
  }
  expectGolden(withOwnKeys(out), "absent-keys.txt");
}

TEST_F(ModelTest, NodesAreSortedInDocumentsAndInNothingElse) {
  drawKeysOfOneLength();
  const auto early = nodeOf("HXRClampNode");
  early->setName("early");
  add("HXRDelayNode");
  document->subnodeGroup()->addNode(*early);
  const auto order = [](const HXDocument& of) {
    std::string names;
    for (const auto& node : of.subnodeGroup()->subnodes()) {
      names += node->name().toStdString() + " ";
    }
    return names;
  };
  EXPECT_EQ(order(*document), "Delay early ");
  EXPECT_EQ(order(*reopened(*document, 0)), "early Delay ");
  EXPECT_EQ(order(*reopened(*document, HXCodingTypeEditorWithKeys)), "Delay early ");
  const auto sent = deviceText(*HXDocumentFile::deviceGraph(*document));
  EXPECT_LT(sent.find("PMRDelayPatch"), sent.find("PMRClampPatch"));
}

// Ports that are connected, set, published or neither, of each patch there is: their defaults, what
// stands for them on the device, and in which order.
TEST_F(ModelTest, TheDeviceGraphOfTheCatalogue) {
  drawKeysOfOneLength();
  document = make<HXDocument>();
  const auto group = add("");
  HXPort* output = nullptr;
  int count = 0;
  for (const auto* record : catalogue()) {
    const auto node = HXNode::makeOfClass(record->nodeClassName().view());
    node->setPatch(record->makeDefinition());
    HXNode& parent = count % 4 == 0 ? *group : *document;
    parent.subnodeGroup()->addNode(*node);
    const auto inputs = node->inputPorts();
    const auto outputs = node->outputPorts();
    if (output && !inputs.empty()) document->connectPort(*output, *inputs.front());
    if (inputs.size() > 1) {
      const float number = static_cast<float>(count) + 0.5F;
      static_cast<HXPatchPort&>(*inputs[1])
          .setStaticValue(PMRPrimitive::primitiveWithNumberValue(number));
    }
    if (&parent == group.get()) {
      if (!inputs.empty()) group->subnodeGroup()->addSymbolicPortForPort(*inputs.back());
      if (!outputs.empty()) {
        output = group->subnodeGroup()->addSymbolicPortForPort(*outputs.front()).get();
      }
    } else if (!outputs.empty()) {
      output = outputs.back().get();
    }
    ++count;
  }
  expectGolden(withOwnKeys(deviceText(*HXDocumentFile::deviceGraph(*document))),
               "catalogue-device.txt");
}

}  // namespace

}  // namespace tarnkit::test
