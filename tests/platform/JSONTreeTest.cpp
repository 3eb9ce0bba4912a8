#include <gmock/gmock.h>

#include "tarnkit/platform/propertylist/JSONTree.h"
#include "tarnkit/platform/text/JSONWriter.h"

namespace tarnkit::test {

namespace {

std::string failureOf(std::string_view text) {
  const auto tree = JSONTree::read(text);
  return tree ? "none" : tree.status().sentence();
}

// What the tree holds, written again.
void write(const JSONTree& tree, JSONTree::Index value, JSONWriter& json) {
  using Kind = JSONTree::Kind;
  switch (tree.kind(value)) {
    case Kind::null:
      json.null();
      break;
    case Kind::boolean:
      json.value(tree.boolean(value));
      break;
    case Kind::number:
      json.number(tree.text(value));
      break;
    case Kind::string:
      json.value(tree.text(value));
      break;
    case Kind::array:
      json.beginArray();
      for (const auto element : tree.children(value)) write(tree, element, json);
      json.endArray();
      break;
    case Kind::object:
      json.beginObject();
      for (const auto member : tree.children(value)) {
        json.key(tree.key(member));
        write(tree, member, json);
      }
      json.endObject();
      break;
  }
}

std::string rewritten(std::string_view text) {
  const auto tree = JSONTree::read(text);
  if (!tree) return tree.status().sentence();
  std::string out;
  JSONWriter json(out);
  write(*tree, tree->root(), json);
  return out;
}

}  // namespace

TEST(JSONTreeTest, HoldsWhatTheTextSays) {
  const char* const kSame[] = {"null",
                               "true",
                               "-0.5e+10",
                               "\"\"",
                               "[]",
                               "{}",
                               "[1,[2,[]],{\"a\":{}}]",
                               "{\"a\":[true,false,null],\"b\":\"x\",\"\":\"\xC3\xA4\"}"};
  for (const char* text : kSame) EXPECT_EQ(rewritten(text), text);
  EXPECT_EQ(rewritten(" [ 1 ,\n2\t] \r\n"), "[1,2]");
  EXPECT_EQ(rewritten("\xEF\xBB\xBF{}"), "{}");
  EXPECT_EQ(rewritten(R"("\u0041\ud83d\ude00\/\"\\\b\f\n\r\t")"),
            "\"A\xF0\x9F\x98\x80/\\\"\\\\\\u0008\\u000c\\n\\u000d\\u0009\"");
  const std::string deep(JSONTree::kMaximumDepth, '[');
  EXPECT_EQ(rewritten(deep + std::string(deep.size(), ']')), deep + std::string(deep.size(), ']'));
}

TEST(JSONTreeTest, RefusesWhatIsNoJSON) {
  const struct {
    std::string text;
    const char* sentence;
  } kCases[] = {
      {"", "line 1: the text ends where a value is expected"},
      {"[1,]", "line 1: a value is expected here"},
      {"{\"a\":1,}", "a key in quotation marks is missing"},
      {"{\"a\" 1}", "\":\" is missing after a key"},
      {"[1\n2]", "line 2: \",\" or \"]\" is missing"},
      {"[1", "\",\" or \"]\" is missing at the end"},
      {"1 2", "something stands after the end"},
      {"01", "something stands after the end"},
      {"-", "a number is not well formed"},
      {"1.", "a number is not well formed"},
      {"1e", "a number is not well formed"},
      {"nul", "a value is expected here"},
      {"\"a", "a text has no end"},
      {"\"\\", "an unknown escape stands in a text"},
      {"\"\\x\"", "an unknown escape stands in a text"},
      {"\"\\u12g4\"", "an escape in a text lacks its four digits"},
      {"\"\\ud800\"", "half a character is escaped in a text"},
      {"\"\\ud800\\u0041\"", "half a character is escaped in a text"},
      {"\"\\udc00\"", "half a character is escaped in a text"},
      {"\"\xFF\"", "a text is not UTF-8"},
      {"\"\xED\xA0\x80\"", "a text is not UTF-8"},
      {"\"a\nb\"", "a control character stands in a text unescaped"},
      {"{\"a\":1,\n\"\\u0061\":2}", "line 2: the key \"a\" stands twice in one object"},
      {std::string(JSONTree::kMaximumDepth + 1, '['), "nested more than 512 levels deep"},
  };
  for (const auto& each : kCases) {
    EXPECT_THAT(failureOf(each.text), ::testing::HasSubstr(each.sentence)) << each.text;
  }
  std::string many = "{";
  for (int i = 0; i < 40; ++i) many += "\"k" + std::to_string(i) + "\":0,\n";
  EXPECT_EQ(failureOf(many + "\"z\":0}"), "none");
  EXPECT_EQ(failureOf(many + "\"k7\":0}"), "line 41: the key \"k7\" stands twice in one object");
}

TEST(JSONTreeTest, KnowsTheLines) {
  const auto tree = JSONTree::read("{\n\"a\":\n [1,\n 2]}");
  ASSERT_TRUE(tree);
  const auto list = *tree->children(tree->root()).begin();
  EXPECT_EQ(tree->line(list), 3U);
  EXPECT_EQ(tree->count(list), 2U);
  std::vector<std::size_t> lines;
  for (const auto element : tree->children(list)) lines.push_back(tree->line(element));
  EXPECT_EQ(lines, (std::vector<std::size_t>{3, 4}));
}

}  // namespace tarnkit::test
