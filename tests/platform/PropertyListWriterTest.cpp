#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>

#include "tarnkit/platform/propertylist/PropertyList.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/propertylist/PropertyListWriter.h"
#include "tests/ProcessorTime.h"

namespace tarnkit {
namespace {

using Kind = PropertyList::Kind;

// The bytes of the only object of a list.
std::string encoded(PropertyListWriter& writer) {
  const auto file = writer.finish(0);
  std::size_t table = 0;  // its place stands in the last 8 bytes
  for (std::size_t i = file.size() - 8; i < file.size(); ++i) table = table * 256 + file[i];
  return std::string(file.begin() + 8, file.begin() + static_cast<std::ptrdiff_t>(table));
}

std::string bytes(std::initializer_list<int> values) {
  std::string text;
  for (const int value : values) text += static_cast<char>(value);
  return text;
}

TEST(PropertyListWriter, WritesIntegersInTheFewestBytesThatReadersTake) {
  const struct {
    std::int64_t value;
    std::string expected;
  } cases[] = {
      {0, bytes({0x10, 0})},
      {128, bytes({0x10, 0x80})},
      {255, bytes({0x10, 0xFF})},
      {256, bytes({0x11, 1, 0})},
      {65535, bytes({0x11, 0xFF, 0xFF})},
      {65536, bytes({0x12, 0, 1, 0, 0})},
      {0xFFFFFFFFLL, bytes({0x12, 0xFF, 0xFF, 0xFF, 0xFF})},
      {0x100000000LL, bytes({0x13, 0, 0, 0, 1, 0, 0, 0, 0})},
      {-1, bytes({0x13, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF})},
      {std::numeric_limits<std::int64_t>::min(), bytes({0x13, 0x80, 0, 0, 0, 0, 0, 0, 0})},
  };
  for (const auto& item : cases) {
    PropertyListWriter writer;
    writer.addInt(item.value);
    EXPECT_EQ(encoded(writer), item.expected) << item.value;
  }
}

TEST(PropertyListWriter, WritesTextAsASCIIOrUTF16) {
  const struct {
    std::string text;
    std::string expected;
  } cases[] = {
      {"", bytes({0x50})},
      {"abc",
       "\x53"
       "abc"},
      {std::string(14, 'x'), "\x5E" + std::string(14, 'x')},
      {std::string(15, 'x'), bytes({0x5F, 0x10, 15}) + std::string(15, 'x')},
      {std::string(256, 'x'), bytes({0x5F, 0x11, 1, 0}) + std::string(256, 'x')},
      {"\xC3\xA9", bytes({0x61, 0, 0xE9})},
      {"\xF0\x9F\x98\x80", bytes({0x62, 0xD8, 0x3D, 0xDE, 0x00})},
      // Bytes that begin no character, an overlong form and half a pair each become U+FFFD.
      {"a\xFF", bytes({0x62, 0, 'a', 0xFF, 0xFD})},
      {"\xC0\x80", bytes({0x62, 0xFF, 0xFD, 0xFF, 0xFD})},
      {"\xED\xA0\x80", bytes({0x63, 0xFF, 0xFD, 0xFF, 0xFD, 0xFF, 0xFD})},
      {"\xE2\x82", bytes({0x62, 0xFF, 0xFD, 0xFF, 0xFD})},
  };
  for (const auto& item : cases) {
    PropertyListWriter writer;
    writer.addString(item.text);
    EXPECT_EQ(encoded(writer), item.expected) << item.text;
  }
}

TEST(PropertyListWriter, SharesScalarsWhoseKindWidthAndBytesAgree) {
  static const Symbol name{"name"};
  PropertyListWriter writer;
  EXPECT_EQ(writer.addInt(1), writer.addInt(1));
  EXPECT_NE(writer.addInt(1), writer.addReal32(1));
  EXPECT_NE(writer.addReal32(1), writer.addReal64(1));
  EXPECT_NE(writer.addInt(1), writer.addBool(true));
  EXPECT_NE(writer.addReal64(0.0), writer.addReal64(-0.0));
  EXPECT_EQ(writer.addBool(false), writer.addBool(false));
  EXPECT_EQ(writer.addString("name"), writer.addSymbol(name));
  EXPECT_NE(writer.addString("\x10"), writer.addInt(0x10));
  EXPECT_EQ(writer.addUID(7), writer.addUID(7));
  EXPECT_NE(writer.addUID(7), writer.addInt(7));
  EXPECT_NE(writer.addDistinctString("name"), writer.addString("name"));
  const std::uint8_t data[] = {1};
  EXPECT_NE(writer.addData(data), writer.addData(data));
}

// A name of megabytes that thousands of objects share is not to be read through for each of them.
TEST(PropertyListWriter, KnowsALongStringAgainByItsObject) {
  PropertyListWriter writer;
  const String longText(std::string(std::size_t{4} << 20, 'x'));
  const auto first = writer.addString(*longText.object());
  const auto start = test::ProcessorTime::now();
  for (int i = 0; i < 10000; ++i) ASSERT_EQ(writer.addString(*longText.object()), first);
  EXPECT_LT(test::ProcessorTime::now() - start, std::chrono::seconds(1));
  EXPECT_EQ(writer.addString(*String(longText.view()).object()), first) << "an equal one";
  const String shortText("short");
  EXPECT_EQ(writer.addString(*shortText.object()), writer.addString("short"));
  EXPECT_EQ(writer.count(), 2U);
  writer.clear();
  EXPECT_EQ(writer.addString("other"), 0U);
  EXPECT_EQ(writer.addString(*longText.object()), 1U) << "nothing is known after clearing";
}

TEST(PropertyListWriter, RefersToObjectsThatAreFilledLater) {
  // Enough objects for references of 1, 2 and 4 bytes.
  for (const std::uint32_t count : {3U, 300U, 70000U}) {
    PropertyListWriter writer;
    const auto root = writer.reserve();
    const auto list = writer.reserve();
    std::vector<PropertyListWriter::Index> numbers;
    for (std::uint32_t i = 0; i < count; ++i) numbers.push_back(writer.addInt(i * 3));
    const auto elements = writer.fillArray(list, count);
    std::copy(numbers.begin(), numbers.end(), elements.begin());
    const auto key = writer.addString("numbers");
    const auto entry = writer.fillMap(root, 1);
    entry.keys[0] = key;
    entry.values[0] = list;
    const auto file = writer.finish(root);

    const auto whole = PropertyListReader::read(file);
    ASSERT_TRUE(whole) << whole.status().message();
    const PropertyList& read = *whole;
    EXPECT_EQ(read.root(), 0U);
    const auto array = read.valueForKey(read.root(), "numbers");
    ASSERT_NE(array, PropertyList::kNone);
    ASSERT_EQ(read.count(array), count);
    for (std::uint32_t i = 0; i < count; ++i) {
      ASSERT_EQ(read.integer(read.elements(array)[i]), i * 3);
    }
  }
}

// Maps share their keys where they are the same; those that begin, end and count alike are the ones
// that could be taken for each other.
TEST(PropertyListWriter, GivesEveryMapItsOwnKeys) {
  std::mt19937 random(7);
  PropertyListWriter writer;
  const auto root = writer.reserve();
  std::vector<std::vector<std::string>> expected;
  std::vector<PropertyListWriter::Index> maps;
  for (int i = 0; i < 3000; ++i) {
    std::vector<std::string> texts;
    for (int key = 0; key < 6; ++key) {
      if (key == 0 || key == 5 || random() % 4 != 0) texts.push_back("key" + std::to_string(key));
    }
    if (texts.size() > 3 && random() % 2 == 0) std::swap(texts[1], texts[2]);
    if (random() % 50 == 0) texts.clear();
    std::vector<PropertyListWriter::Index> keys;
    std::vector<PropertyListWriter::Index> values;
    for (const auto& text : texts) {
      keys.push_back(writer.addString(text));
      values.push_back(writer.addString(std::to_string(i) + text));
    }
    maps.push_back(writer.addMap(keys, values));
    expected.push_back(std::move(texts));
  }
  const auto into = writer.fillArray(root, maps.size());
  std::copy(maps.begin(), maps.end(), into.begin());

  const auto file = writer.finish(root);
  const auto whole = PropertyListReader::read(file);
  ASSERT_TRUE(whole) << whole.status().message();
  const PropertyList& read = *whole;
  for (std::uint32_t i = 0; i < expected.size(); ++i) {
    const auto map = read.elements(read.root())[i];
    ASSERT_EQ(read.count(map), expected[i].size()) << i;
    for (std::uint32_t entry = 0; entry < expected[i].size(); ++entry) {
      ASSERT_EQ(read.string(read.keys(map)[entry]), expected[i][entry]) << i;
      ASSERT_EQ(read.string(read.values(map)[entry]), std::to_string(i) + expected[i][entry]);
    }
  }
}

// What is written is kept in segments; what is longer than one has a piece of its own, and may come
// first, last and in between.
TEST(PropertyListWriter, KeepsValuesOfAnyLengthApart) {
  constexpr std::uint32_t kCount = 400000;
  PropertyListWriter writer;
  const auto root = writer.reserve();
  const std::vector<std::uint8_t> large(5000000, 7);
  std::vector<PropertyListWriter::Index> elements{writer.addData(large)};
  std::vector<PropertyListWriter::Index> texts;
  for (std::uint32_t i = 0; i < kCount; ++i) {
    const std::string text(1 + i % 23, 'x');
    texts.push_back(writer.addString(std::to_string(i) + text));
    if (i % 100000 == 0) elements.push_back(writer.addData(large));
    if (i % 3 == 0) elements.push_back(writer.addMap({&texts.back(), 1}, {&elements.front(), 1}));
  }
  const auto list = writer.addArray(texts);
  elements.push_back(list);
  elements.push_back(writer.addMap(texts, texts));
  std::copy(elements.begin(), elements.end(), writer.fillArray(root, elements.size()).begin());
  const auto file = writer.finish(root);
  std::vector<std::uint8_t> inPieces;
  std::size_t longest = 0;
  EXPECT_TRUE(writer.finish(root, [&](ByteSpan piece) {
    inPieces.insert(inPieces.end(), piece.begin(), piece.end());
    longest = std::max(longest, piece.size());
    return true;
  }));
  EXPECT_EQ(inPieces, file);
  EXPECT_EQ(longest, large.size() + 6) << "only what stands in one piece already is handed over so";
  for (std::size_t most : {std::size_t{0}, std::size_t{1}, std::size_t{6}, std::size_t{30}}) {
    std::size_t taken = 0;
    EXPECT_FALSE(writer.finish(root, [&](ByteSpan) { return taken++ < most; }));
    EXPECT_EQ(taken, most + 1) << "nothing is handed over after a piece that was refused";
  }

  const auto whole = PropertyListReader::read(file);
  ASSERT_TRUE(whole) << whole.status().message();
  const PropertyList& read = *whole;
  const auto all = read.elements(read.root());
  ASSERT_EQ(all.size(), elements.size());
  EXPECT_EQ(read.data(all[1]).size(), large.size());
  EXPECT_EQ(read.data(all[1]).back(), 7);
  const auto strings = read.elements(all[all.size() - 2]);
  const auto map = all[all.size() - 1];
  ASSERT_EQ(strings.size(), kCount);
  ASSERT_EQ(read.count(map), kCount);
  for (std::uint32_t i = 0; i < kCount; ++i) {
    ASSERT_EQ(read.string(strings[i]), std::to_string(i) + std::string(1 + i % 23, 'x'));
    ASSERT_EQ(read.keys(map)[i], strings[i]);
    ASSERT_EQ(read.values(map)[i], strings[i]);
  }
  for (std::uint32_t i = 0, at = 1; i < kCount; i += 3) {
    while (read.kind(all[at]) != PropertyList::Kind::map) ++at;
    ASSERT_EQ(read.keys(all[at])[0], strings[i]);
    ASSERT_EQ(read.values(all[at++])[0], all[0]);
  }
}

TEST(PropertyListWriter, RefusesToFinishWithAnObjectThatWasNeverFilled) {
  PropertyListWriter writer;
  writer.reserve();
  EXPECT_THROW(writer.finish(0), std::logic_error);
}

TEST(PropertyListWriter, KeepsEveryValueAsItWasWritten) {
  PropertyListWriter writer;
  const auto root = writer.reserve();
  const std::vector<PropertyListWriter::Index> values{
      writer.addReal32(0.1F),
      writer.addReal64(0.1),
      writer.addReal64(std::numeric_limits<double>::infinity()),
      writer.addBool(true),
      writer.addData(bytesOf("\xFF\x01")),
      writer.addUID(70000),
      writer.addString("gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80"),
  };
  const auto into = writer.fillArray(root, values.size());
  std::copy(values.begin(), values.end(), into.begin());
  const auto file = writer.finish(root);
  const auto whole = PropertyListReader::read(file);
  ASSERT_TRUE(whole);
  const PropertyList& list = *whole;
  const auto read = list.elements(list.root());
  EXPECT_EQ(list.kind(read[0]), Kind::real32);
  EXPECT_EQ(static_cast<float>(list.real(read[0])), 0.1F);
  EXPECT_EQ(list.kind(read[1]), Kind::real64);
  EXPECT_EQ(list.real(read[1]), 0.1);
  EXPECT_EQ(list.real(read[2]), std::numeric_limits<double>::infinity());
  EXPECT_EQ(list.kind(read[3]), Kind::boolean);
  EXPECT_TRUE(list.boolean(read[3]));
  EXPECT_EQ(list.data(read[4]).size(), 2U);
  EXPECT_EQ(list.uid(read[5]), 70000U);
  EXPECT_EQ(list.string(read[6]), "gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80");
}

}  // namespace
}  // namespace tarnkit
