#include <fmt/format.h>

#include <bit>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/text/HXTextFile.h"
#include "tests/model/ModelFixture.h"

namespace tarnkit::test {

namespace {

using ::testing::HasSubstr;

std::string textOf(const HXDocument& document) {
  auto text = HXTextFile::textWithDocument(document);
  EXPECT_TRUE(text) << text.status().message();
  return text ? *text : std::string();
}

Ref<HXDocument> read(const std::string& text) {
  auto document = HXTextFile::document(text);
  EXPECT_TRUE(document) << document.status().message() << "\n" << text;
  return document ? *document : make<HXDocument>();
}

std::string failureOf(const std::string& text) {
  const auto document = HXTextFile::document(text);
  return document ? "none" : document.status().sentence();
}

std::string withNodes(const std::string& nodes) {
  return "{\"tarnkit\": 1, \"id\": \"doc\", \"nodes\": [\n" + nodes + "\n]}";
}

std::string withImageAt(const std::string& path) {
  return R"({"tarnkit": 1, "images": [{"key": "k", "file": ")" + path + R"("}]})";
}
constexpr const char* kDownward = "leads from the text's folder downward";

// The lines of either text that the other has not.
std::size_t differentLines(const std::string& a, const std::string& b) {
  std::map<std::string, int> lines;
  const auto count = [&](const std::string& text, int step) {
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
      // A comma is no change of the line.
      if (!line.empty() && line.back() == ',') line.pop_back();
      lines[line] += step;
    }
  };
  count(a, 1);
  count(b, -1);
  std::size_t different = 0;
  for (const auto& entry : lines) different += static_cast<std::size_t>(std::abs(entry.second));
  return different;
}

class TextFileTest : public ModelTest {
 protected:
  // The text says all that a file says; the document as the file has it.
  std::string checkedText(const HXDocument& checked) {
    const auto opened = openedDocument(savedBytes(checked, 3), 3);
    const std::string text = textOf(checked);
    const auto reread = read(text);
    EXPECT_EQ(savedBytes(*reread, 3), savedBytes(*opened, 3)) << text;
    EXPECT_EQ(textOf(*reread), textOf(*opened));
    return text;
  }
};

constexpr const char* kToggle = R"({
  "tarnkit": 1,
  "comment": "A touch toggles a switch.",
  "nodes": [
    {"id": "layer", "in": "card", "patch": "Color View", "values": {"Width": 12, "Color": [1, 0, 0, 1]}},
    {"id": "card", "comment": "holds a layer"},
    {"id": "toggle", "patch": "Switch", "connections": {"Toggle": "touch/Down"}},
    {"id": "touch", "patch": "Touch Interaction"}
  ]
})";

}  // namespace

TEST_F(TextFileTest, TenLinesMakeADocument) {
  const auto made = read(kToggle);
  EXPECT_EQ(made->comment(), "A touch toggles a switch.");
  const auto* card = made->subnodeGroup()->subnodeForKey("card");
  ASSERT_TRUE(card);
  EXPECT_EQ(card->comment(), "holds a layer");
  EXPECT_TRUE(as<HXSubviewGroup>(card->subnodeGroup().get()));
  const auto* layer = card->subnodeGroup()->subnodeForKey("layer");
  ASSERT_TRUE(layer);
  EXPECT_EQ(layer->portForKey("Tarn.widthInput") ? 12.0F : 0,
            layer->portsInForce().get("Tarn.widthInput")->staticValue()->numberValue());
  const auto* toggle = made->subnodeGroup()->subnodeForKey("toggle");
  ASSERT_TRUE(toggle);
  EXPECT_EQ(toggle->portForKey("Tarn.toggleInput")->connections().count(), 1U);
  const std::string text = checkedText(*made);
  EXPECT_EQ(textOf(*read(text)), text);
  EXPECT_THAT(text, HasSubstr("\"Tarn.toggleInput\": \"touch/Tarn.downOutput\""));
}

// Each member of every object, none with its default or with the value of another.
TEST_F(TextFileTest, EveryMemberIsReadAndWrittenInOneWay) {
  std::ifstream stream(TARNKIT_SOURCE_DIR "/tests/text/every-member.json");
  const std::string text((std::istreambuf_iterator<char>(stream)), {});
  EXPECT_EQ(checkedText(*read(text)), text);
}

TEST_F(TextFileTest, CommentsStayInFilesToo) {
  auto node = add("HXRClampNode");
  const auto bare = savedBytes(*document, 3);
  node->setComment("why");
  EXPECT_NE(savedBytes(*document, 3), bare);
  EXPECT_EQ(reopened(*document, 0)->subnodeGroup()->subnodes().front()->comment(), "why");
  node->setComment(nullptr);
  EXPECT_EQ(savedBytes(*document, 3), bare);
}

TEST_F(TextFileTest, FailuresSayWhereAndWhatWouldBeRight) {
  const struct {
    std::string text;
    const char* sentence;
  } kCases[] = {
      {withNodes(R"({"id": "a", "patch": "HXRClampNode", "values": {"Tarn.valuInput": 1}})"),
       R"(line 2: nodes[0].values: Clamp has no input "Tarn.valuInput"; "Tarn.valueInput"?)"},
      {withNodes(R"({"id": "a", "patch": "Clmp"})"),
       R"(line 2: nodes[0].patch: there is no patch "Clmp"; "Clamp"?)"},
      {withNodes(R"({"id": "a", "positon": [1, 2]})"),
       R"(line 2: nodes[0]: there is no member "positon"; "position"?)"},
      {withNodes("{\"id\": \"a\"},\n{\"id\": \"a\"}"),
       R"(line 3: nodes[1].id: the id "a" stands twice)"},
      {withNodes(R"({"id": "a", "in": "b"}, {"id": "b", "in": "a"})"), "a node stands in itself"},
      {withNodes(R"({"id": "a", "in": "aa"})"), R"(there is no node "aa")"},
      {withNodes(R"({"id": "a", "position": [1]})"),
       "line 2: nodes[0].position: 2 numbers are expected"},
      {withNodes(R"({"id": "a", "selected": 1})"), "a number where a boolean is expected"},
      {withNodes(R"({"id": "a", "position": [1e39, 0]})"), R"("1e39" is too large)"},
      {withNodes(R"({"id": "a", "patch": "Clamp", "connections": {"Value": "b"}})"),
       R"("b" is no port; one is written "NODE/PORT")"},
      {withNodes(R"({"id": "a", "patch": "Clamp", "connections": {"Value": "a/Value"}})"),
       R"(nodes[0].connections.Value: Clamp has no output "Value")"},
      {withNodes(R"({"id": "a", "patch": "Math", "parameters": {"Tarn.operatr": 1}})"),
       "has no parameter \"Tarn.operatr\""},
      {withNodes(R"({"id": "a", "after": "doc"})"), "does not stand beside this one"},
      {withNodes(R"({"id": "a", "after": "a"})"), "the node stands behind itself"},
      {withNodes(R"({"id": "a", "patch": "Clamp", "publishedInputs": ["a/Value"]})"),
       "Clamp holds no nodes"},
      {withNodes(R"({"id": "a", "patch": "CLAMPS"})"), R"(there is no patch "CLAMPS"; "Clamp"?)"},
      {withNodes(R"({"id": "a", "patch": "Plexer"})"), R"(no patch "Plexer"; "Multiplexer"?)"},
      {withNodes(R"({"id": "a", "patch": "Zzzz"})"), R"(there is no patch "Zzzz")"},
      {withNodes(R"({"id": "a", "view": true})"), "the node stands in no group of views"},
      {withNodes(R"({"id": "a", "patch": "Color View"}, {"id": "b", "above": "a"})"),
       "the node is no view"},
      {withNodes(R"({"id": "a", "subnodes": "none"}, {"id": "b", "in": "a"})"),
       "line 2: nodes[0].subnodes: there are nodes in the group"},
      {withNodes(R"({"id": "a"}, {"id": "b", "in": "a", "key": "k"},
                    {"id": "c", "in": "a", "key": "k"})"),
       "line 3: nodes[2]: another node of the group has the key \"k\""},
      {withNodes(R"({"id": "a", "patch": "Clamp", "ports": [{"key": "k"}]})"),
       "a port needs a \"key\" and an \"orientation\""},
      {withNodes(R"({"id": "a", "parameters": {"Own": {"kind": "index"}}})"),
       "a \"kind\" and a \"value\" are expected"},
      {withNodes(R"({"id": "a", "parameters": {"Own": {"kind": "index", "value": 1}},
                     "parameterOrder": []})"),
       "line 3: nodes[0].parameterOrder: the parameter \"Own\" is left out"},
      {withNodes(R"({"id": "a", "parameterOrder": ["Own"]})"),
       "there is no parameter \"Own\", or it stands twice"},
      {withNodes(R"({"id": "a", "patch": "Image", "parameters": {"Image": "k"}})"),
       "there is no image \"k\""},
      {R"({"tarnkit": 1, "looseImages": [{}], "nodes": [
           {"patch": "Image", "parameters": {"Image": {"loose": 1}}}]})",
       "line 2: nodes[0].parameters.Image.loose: there is no loose image 1"},
      {R"({"tarnkit": 1, "images": [{"key": "k", "pictureOf": 0}]})",
       "no image 0 stands before this one"},
      {withNodes(R"({"id": "a", "patch": "Clamp", "values": {"Value": 1, "Tarn.valueInput": 1}})"),
       "the port has a value already"},
      {withNodes(R"({"id": "a", "patch": "Clamp", "values": {"Value": {"sameAs": "a/Maximum"}}})"),
       "that port has no value of its own"},
      {withNodes(R"({"id": "a", "patch": "Clamp", "values": {
                     "Value": {"kind": "degree", "value": 1}}})"),
       R"(there is no kind "degree"; "degrees"?)"},
      {withNodes(R"({"id": "a", "subnodes": "group", "publishedInputs": ["a#in0"]})"),
       "a port publishes itself"},
      {withNodes(R"({"id": "a", "publishedInputs": ["b/Value"], "values": {"#in0": 1}},
                    {"id": "b", "in": "a", "patch": "Clamp"})"),
       "a published port has no value"},
      {withNodes(
           R"({"id": "a", "subnodes": "group", "publishedInputs": [{"port": null}], "connections": {
                     "#in1": "b/Result"}}, {"id": "b", "patch": "Clamp"})"),
       "there is no published port \"in1\""},
      {withNodes(
           R"({"id": "a", "subnodes": "group", "publishedInputs": [{"port": null}], "connections": {
                     "#in0": "b/Result"}}, {"id": "b", "patch": "Clamp"})"),
       "a published port that stands for none cannot be connected"},
      {withNodes(R"({"id": "a", "patch": "Clamp", "connections": {
                     "Value": "a/Tarn.minimumInput"}})"),
       "a connection comes from an output, and this is an input"},
      {withNodes(R"({"id": "a", "patch": "Clamp", "connections": {
                     "Tarn.resultOutput": "a/Result"}})"),
       "connections stand at their inputs, and this is an output"},
      {withNodes(R"({"id": "a", "patch": "Clamp", "connections": {
                     "Value": {"from": "a/Result", "inputPlace": -1}}})"),
       "inputPlace: a place is not below 0"},
      {withNodes(R"({"id": "a", "patch": "Clamp", "inputGroups": [{"key": "k"}, {"key": "k"}]})"),
       "the group \"k\" stands twice"},
      {withNodes(R"({"id": "a", "patch": "Clamp", "arrayOutputs": []})"),
       "only a replicator has array outputs"},
      {R"({"tarnkit": 1, "otherConnections": [
           {"output": null, "input": null, "shownOutput": null, "shownInput": null, "heldBy": ""}]})",
       "none of \"both\", \"input\", \"output\""},
      {R"({"tarnkit": 2})", "a document of form 2; this library reads form 1"},
      {R"({"nodes": []})", "this is no document"},
      {R"({"tarnkit": 1, "tarnkit": 1})", "the key \"tarnkit\" stands twice"},
      {"{\"tarnkit\": 1,\n \"images\": [{\"key\": \"k\", \"file\": \"../x.png\"}]}", "line 2: "},
      {withImageAt("a/../x.png"), kDownward},
      {withImageAt(".."), kDownward},
      {withImageAt("./x.png"), kDownward},
      {withImageAt("a//x.png"), kDownward},
      {withImageAt("/x.png"), kDownward},
      {R"({"tarnkit": 1, "images": [{"key": "k", "png": "AAAA"}]})", "NSImage.png"},
  };
  for (const auto& each : kCases) {
    EXPECT_THAT(failureOf(each.text), HasSubstr(each.sentence)) << each.text;
  }
}

TEST_F(TextFileTest, NumbersAreKeptToTheBit) {
  using Limits = std::numeric_limits<float>;
  const float values[] = {-0.0F,
                          0.1F,
                          Limits::denorm_min(),
                          Limits::max(),
                          Limits::infinity(),
                          -Limits::infinity(),
                          std::bit_cast<float>(0x7FC00000U),
                          std::bit_cast<float>(0xFFC12345U),
                          16777217.0F,
                          1.17549435e-38F};
  for (const float value : values) {
    auto node = add("HXRClampNode");
    node->setPosition({value, 3});
    port(*node, "Tarn.valueInput").setStaticValue(PMRPrimitive::primitiveWithNumberValue(value));
    port(*node, "Tarn.minimumInput").setStaticValue(PMRPrimitive::primitiveWithRadiansValue(value));
    port(*node, "Tarn.maximumInput")
        .setStaticValue(PMRPrimitive::primitiveWithColorValue({value, 0, 1, 1}));
  }
  auto odd = add("HXRClampNode");
  odd->setName(String(std::string_view("a\0b\n\x7F\"\\\xE2\x80\xAE$null", 15)));
  port(*odd, "Tarn.valueInput").setStaticValue(PMRPrimitive::primitiveWithStringValue("$null"));
  port(*odd, "Tarn.minimumInput").setStaticValue(PMRPrimitive::primitiveWithNilValue());
  const auto shared = PMRPrimitive::primitiveWithIndexValue(7);
  port(*add("HXRClampNode"), "Tarn.valueInput").setStaticValue(shared);
  port(*add("HXRClampNode"), "Tarn.valueInput").setStaticValue(shared);
  checkedText(*document);
}

TEST_F(TextFileTest, ImagesStandWithinOrBeside) {
  const auto image = [](std::uint8_t shade) {
    return *Image::imageWithPixels(2, 1, std::vector<std::uint8_t>(8, shade));
  };
  const auto first = *HXImageStore::entryWithImage(image(10));
  const auto loose = *HXImageStore::entryWithImage(image(20));
  const auto odd = make<HXImageStoreEntry>(first->image(), "~ odd/key");
  document->imageStore()->addImageEntry(odd);
  document->imageStore()->addImageEntry(first);
  for (const auto& entry : {odd, first, loose, loose}) {
    const auto node = add("HXRImageNode");
    for (const auto& parameter : node->parametersInForce()) {
      if (auto* held = as<HXImageParameter>(parameter.value.get())) held->setImageEntry(entry);
    }
  }
  const std::string text = checkedText(*document);
  EXPECT_THAT(text, HasSubstr("\"pictureOf\": 0"));
  EXPECT_THAT(text, HasSubstr("{\"loose\": 0}"));
  const auto folder = std::filesystem::temp_directory_path() /
                      fmt::format("tarnkit-text-{}", static_cast<const void*>(document.get()));
  std::filesystem::create_directories(folder);
  const std::string path = folder / "document.json";
  ASSERT_TRUE(HXTextFile::save(*document, path, folder / "pictures"));
  const auto opened = HXTextFile::open(path);
  ASSERT_TRUE(opened) << opened.status().message();
  EXPECT_EQ(savedBytes(**opened, 3), savedBytes(*openedDocument(savedBytes(*document, 3), 3), 3));
  EXPECT_FALSE(HXTextFile::save(*document, path, std::filesystem::temp_directory_path() / "no"));
  std::filesystem::remove_all(folder);
}

TEST_F(TextFileTest, WhatNobodyKnowsIsKept) {
  auto clamp = add("HXRClampNode");
  auto other = add("HXRClampNode");
  connect(*clamp, "Tarn.resultOutput", *other, "Tarn.valueInput");
  std::string text = textOf(*document);
  const auto at = text.find("HXRClampNode");
  ASSERT_NE(at, text.npos);
  text.replace(at, 12, "HXRNobodysNode");
  EXPECT_THAT(failureOf(text), HasSubstr("there is no patch \"HXRNobodysNode\""));
  const auto told = text.find('\n', at);
  text.insert(told, R"(,
      "ports": [{"key": "Tarn.resultOutput", "orientation": "output"}])");
  const auto unknown = read(text);
  const auto written = checkedText(*unknown);
  EXPECT_THAT(written, HasSubstr("\"patch\": \"HXRNobodysNode\""));
  EXPECT_THAT(written, HasSubstr("/Tarn.resultOutput\""));
}

TEST_F(TextFileTest, AnEditChangesTheLinesAboutIt) {
  std::vector<Ref<HXNode>> nodes;
  for (int i = 0; i < 30; ++i) nodes.push_back(add("HXRClampNode"));
  auto holder = add("");
  for (int i = 1; i < 30; ++i) {
    connect(*nodes[static_cast<std::size_t>(i - 1)], "Tarn.resultOutput",
            *nodes[static_cast<std::size_t>(i)], "Tarn.valueInput");
  }
  std::string before = checkedText(*document);
  const auto changed = [&] {
    const std::string now = checkedText(*document);
    return differentLines(std::exchange(before, now), now);
  };
  nodes[3]->setName("Named");
  EXPECT_EQ(changed(), 1U);
  nodes[3]->setName("Renamed");
  EXPECT_EQ(changed(), 2U);
  port(*nodes[4], "Tarn.maximumInput").setStaticValue(PMRPrimitive::primitiveWithNumberValue(3));
  EXPECT_LE(changed(), 3U);
  connect(*nodes[0], "Tarn.resultOutput", *nodes[9], "Tarn.minimumInput");
  EXPECT_EQ(changed(), 1U);
  // Joined last, told by one line; its neighbours are told nothing.
  document->subnodeGroup()->removeNode(nodes[20].get());
  EXPECT_LE(changed(), 12U);
  document->subnodeGroup()->addNode(*nodes[20]);
  EXPECT_LE(changed(), 10U);
  const auto fresh = add("HXRClampNode");
  EXPECT_LE(changed(), 6U);
  holder->subnodeGroup()->addNode(*fresh);
  EXPECT_LE(changed(), 4U);
  holder->subnodeGroup()->addSymbolicPortForPort(port(*fresh, "Tarn.valueInput"));
  EXPECT_LE(changed(), 3U);
}

TEST_F(TextFileTest, TheOrderOfTheFileCountsForNothing) {
  const auto a =
      read(withNodes(R"({"id": "x", "patch": "Clamp"}, {"id": "a", "patch": "Switch"})"));
  const auto b =
      read(withNodes(R"({"patch": "Switch", "id": "a"}, {"patch": "Clamp", "id": "x"})"));
  EXPECT_EQ(textOf(*a), textOf(*b));
}

// Documents that were made to be hard to read.
TEST_F(TextFileTest, SeedsOfTheFuzzersHoldInTexts) {
  const auto earlier = Log::setSink([](std::string_view) {});
  std::size_t opened = 0;
  const auto folder = std::filesystem::path(TARNKIT_SOURCE_DIR) / "fuzz/corpus/document";
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::ifstream stream(entry.path(), std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(stream)), {});
    const auto seed = HXDocumentFile::document(bytesOf(bytes), 3);
    if (!seed) continue;
    ++opened;
    SCOPED_TRACE(entry.path());
    checkedText(**seed);
  }
  Log::setSink(earlier);
  EXPECT_GT(opened, 3U);
}

}  // namespace tarnkit::test
