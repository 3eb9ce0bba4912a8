#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tests/platform/BinaryList.h"

namespace tarnkit {
namespace {

using Kind = PropertyList::Kind;
using test::BinaryList;
using namespace std::string_literals;

Status reading(const std::string& file) { return PropertyListReader::read(bytesOf(file)).status(); }
bool reads(const std::string& file) { return reading(file).isOK(); }

TEST(BinaryPropertyList, RefusesWhatIsMalformed) {
  const std::string text =
      "\x51"
      "a";
  const struct {
    const char* what;
    std::string file;
  } cases[] = {
      {"nothing", ""},
      {"only a header", "bplist00"},
      {"another version", BinaryList{.objects = {text}, .header = "bplist17"}.bytes()},
      {"no objects", BinaryList{.objects = {text}, .offsets = {}, .countError = -1}.bytes()},
      {"a count that is too large", BinaryList{.objects = {text}, .countError = 1}.bytes()},
      {"an absurd count",
       BinaryList{.objects = {text}, .countError = std::int64_t{1} << 62}.bytes()},
      {"a count that wraps round",
       BinaryList{.objects = {text}, .offsetWidth = 8, .countError = std::int64_t{1} << 61}
           .bytes()},
      {"a table beyond the file", BinaryList{.objects = {text}, .tableError = 1000}.bytes()},
      {"a table in the header", BinaryList{.objects = {text}, .tableError = -4}.bytes()},
      {"bytes after the table", BinaryList{.objects = {text}, .afterTable = "xx"}.bytes()},
      {"offsets of no width", BinaryList{.objects = {text}, .writtenOffsetWidth = 9}.bytes()},
      {"references of no width", BinaryList{.objects = {text}, .writtenReferenceWidth = 9}.bytes()},
      {"a root beyond the objects", BinaryList{.objects = {text}, .root = 1}.bytes()},
      {"an offset in the header", BinaryList{.objects = {text}, .offsets = {3}}.bytes()},
      {"an offset in the table", BinaryList{.objects = {text}, .offsets = {10}}.bytes()},
      {"a huge offset",
       BinaryList{.objects = {text}, .offsetWidth = 8, .offsets = {~0ULL}}.bytes()},
      {"a string that is too long", BinaryList{.objects = {"\x5E"
                                                           "a"}}
                                        .bytes()},
      {"a string of 2^63 bytes",
       BinaryList{.objects = {"\x5F\x13\x80"s + std::string(7, '\0')}}.bytes()},
      {"UTF-16 that is too long", BinaryList{.objects = {"\x6F\x13\x80\0\0\0\0\0\0\1"s}}.bytes()},
      {"a count that is no integer", BinaryList{.objects = {"\x5F\x51"
                                                            "a"}}
                                         .bytes()},
      {"a count of 16 bytes", BinaryList{.objects = {"\x5F\x14" + std::string(16, '\0')}}.bytes()},
      {"a count without its integer", BinaryList{.objects = {"\x5F"}}.bytes()},
      {"a high bit in ASCII", BinaryList{.objects = {"\x51\xE9"}}.bytes()},
      {"a lone high surrogate", BinaryList{.objects = {"\x61\xD8\x00"s}}.bytes()},
      {"a lone low surrogate", BinaryList{.objects = {"\x61\xDC\x00"s}}.bytes()},
      {"a high surrogate before a letter", BinaryList{.objects = {"\x62\xD8\x00\x00"
                                                                  "a"s}}
                                               .bytes()},
      {"an integer cut short", BinaryList{.objects = {"\x13\0\0"s}}.bytes()},
      {"an integer of 32 bytes", BinaryList{.objects = {"\x15" + std::string(32, '\0')}}.bytes()},
      {"a real of 2 bytes", BinaryList{.objects = {"\x21\0\0"s}}.bytes()},
      {"a date of 4 bytes", BinaryList{.objects = {"\x32\0\0\0\0"s}}.bytes()},
      {"a UID of 16 bytes", BinaryList{.objects = {"\x8F" + std::string(16, '\0')}}.bytes()},
      {"an unknown kind", BinaryList{.objects = {"\x70"}}.bytes()},
      {"an unknown single byte", BinaryList{.objects = {"\x0F"}}.bytes()},
      {"a reference beyond the objects", BinaryList{.objects = {"\xA1\x01"}}.bytes()},
      {"a reference beyond all numbers of objects",
       BinaryList{.objects = {"\xA2" + BinaryList::number(1, 8) +
                                  BinaryList::number((std::uint64_t{1} << 32) + 1, 8),
                              "\x09"},
                  .referenceWidth = 8}
           .bytes()},
      {"a reference of 8 bytes that wraps round",
       BinaryList{.objects = {"\xA1\0\0\0\1\0\0\0\1"s, text}, .referenceWidth = 8}.bytes()},
      {"a list that is too long", BinaryList{.objects = {"\xAE\0"s}}.bytes()},
      {"a map that is too long", BinaryList{.objects = {"\xD2\0\0\0"s}}.bytes()},
      {"a key that is no string", BinaryList{.objects = {"\xD1\1\1"s, "\x10\1"}}.bytes()},
      {"a key twice", BinaryList{.objects = {"\xD2\1\1\1\1"s, text}}.bytes()},
      {"two equal keys", BinaryList{.objects = {"\xD2\1\2\1\1"s, text, text}}.bytes()},
      {"two equal keys in two encodings", BinaryList{.objects = {"\xD2\1\2\1\1"s, text,
                                                                 "\x61\0"
                                                                 "a"s}}
                                              .bytes()},
      {"a list in itself", BinaryList{.objects = {"\xA1\0"s}}.bytes()},
      {"a list in itself through a map",
       BinaryList{.objects = {"\xA1\1"s, "\xD1\2\0"s, text}}.bytes()},
      {"a cycle that the root does not reach",
       BinaryList{.objects = {text, "\xA1\2"s, "\xA1\1"s}}.bytes()},
      {"a malformed object that nothing refers to", BinaryList{.objects = {text, "\x7F"}}.bytes()},
  };
  for (const auto& item : cases) {
    const auto status = reading(item.file);
    EXPECT_EQ(nameOf(status.code()), "damaged") << item.what;
    EXPECT_EQ(status.message().rfind("not a readable property list: ", 0), 0U)
        << item.what << ": " << status.message();
  }
}

TEST(BinaryPropertyList, ReadsWhatIsOddButValid) {
  const std::string text =
      "\x51"
      "a";
  const struct {
    const char* what;
    std::string file;
  } cases[] = {
      {"offsets of 3 bytes", BinaryList{.objects = {text}, .offsetWidth = 3}.bytes()},
      {"offsets of 8 bytes", BinaryList{.objects = {text}, .offsetWidth = 8}.bytes()},
      {"references of 3 bytes",
       BinaryList{.objects = {"\xA1\0\0\1"s, text}, .referenceWidth = 3}.bytes()},
      {"references of 8 bytes",
       BinaryList{.objects = {"\xA1\0\0\0\0\0\0\0\1"s, text}, .referenceWidth = 8}.bytes()},
      {"a root that is not the first", BinaryList{.objects = {text, "\xA1\0"s}, .root = 1}.bytes()},
      {"two objects in one place", BinaryList{.objects = {text}, .offsets = {8, 8}}.bytes()},
      {"a long count for a short string", BinaryList{.objects = {"\x5F\x10\1"
                                                                 "a"}}
                                              .bytes()},
      {"a count of 8 bytes", BinaryList{.objects = {"\x5F\x13\0\0\0\0\0\0\0\1"
                                                    "a"s}}
                                 .bytes()},
      {"ASCII written as UTF-16", BinaryList{.objects = {"\x61\0"
                                                         "a"s}}
                                      .bytes()},
      {"an object that nothing refers to", BinaryList{.objects = {text, text}}.bytes()},
      {"a list shared by two", BinaryList{.objects = {"\xA2\1\1"s, "\xA1\2"s, text}}.bytes()},
      {"a shared list before its users",
       BinaryList{.objects = {"\xA0"s, "\xA2\0\0"s, "\xA2\0\1"s}, .root = 2}.bytes()},
      {"an empty key", BinaryList{.objects = {"\xD1\1\1"s, "\x50"}}.bytes()},
      {"a null", BinaryList{.objects = {"\0"s}}.bytes()},
      {"a UID of 3 bytes", BinaryList{.objects = {"\x82\0\0\1"s}}.bytes()},
  };
  for (const auto& item : cases) {
    const auto status = reading(item.file);
    EXPECT_TRUE(status) << item.what << ": " << status.message();
  }
}

TEST(BinaryPropertyList, ReadsIntegersOfSixteenBytes) {
  const auto integer = [](const std::string& high, const std::string& low) {
    return BinaryList{.objects = {"\x14" + high + low}}.bytes();
  };
  const std::string zeros(8, '\0');
  const std::string ones(8, '\xFF');
  const std::string five = integer(zeros, "\0\0\0\0\0\0\0\5"s);
  auto list = PropertyListReader::read(bytesOf(five));
  ASSERT_TRUE(list);
  EXPECT_EQ(list->kind(0), Kind::integer);
  EXPECT_EQ(list->integer(0), 5);
  const std::string minusOne = integer(ones, ones);
  list = PropertyListReader::read(bytesOf(minusOne));
  ASSERT_TRUE(list);
  EXPECT_EQ(list->integer(0), -1);
  const std::string unsignedMost = integer(zeros, ones);
  list = PropertyListReader::read(bytesOf(unsignedMost));
  ASSERT_TRUE(list);
  EXPECT_EQ(list->kind(0), Kind::unsignedInteger);
  const std::string wide = integer("\0\0\0\0\0\0\0\1"s, zeros);
  list = PropertyListReader::read(bytesOf(wide));
  ASSERT_TRUE(list);
  EXPECT_EQ(list->kind(0), Kind::wideInteger);
  EXPECT_EQ(list->real(0), 0x1p64);
}

// Every prefix of a good file, and the file with any one bit turned, ends in a list or an error.
TEST(BinaryPropertyList, SurvivesTruncationAndFlippedBits) {
  const std::string file = BinaryList{
      .objects = {"\xD2\1\2\3\4"s,
                  "\x51"
                  "a",
                  "\x62\xD8\x3D\xDE\0"s, "\xA2\5\6"s,
                  "\x44"
                  "data",
                  "\x23" + std::string(8, '\1'),
                  "\x81\1\2"s}}.bytes();
  ASSERT_TRUE(reads(file));
  for (std::size_t size = 0; size < file.size(); ++size) EXPECT_FALSE(reads(file.substr(0, size)));
  for (std::size_t bit = 0; bit < file.size() * 8; ++bit) {
    std::string flipped = file;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << (bit % 8)));
    reads(flipped);
  }
}

TEST(BinaryPropertyList, DoesNotExpandSharedContainers) {
  // Forty lists, each holding the next one ten times: 10^40 leaves.
  BinaryList list;
  for (int i = 1; i <= 40; ++i)
    list.objects.push_back("\xAA" + std::string(10, static_cast<char>(i)));
  list.objects.push_back(
      "\x51"
      "a");
  EXPECT_TRUE(reads(list.bytes()));
}

TEST(BinaryPropertyList, BoundsWhatOverlappingObjectsCost) {
  // Each of 65,536 offsets points to one list of 65,536 elements: 4 * 10^9 references.
  BinaryList list;
  list.offsetWidth = 1;
  list.objects = {"\xAF\x12\0\1\0\0"s + std::string(65536, '\0')};
  list.offsets.assign(65536, 8);
  EXPECT_NE(reading(list.bytes()).message().find("overlap"), std::string::npos);
}

TEST(BinaryPropertyList, TakesAnyDepth) {
  constexpr std::uint32_t kDepth = 200000;
  BinaryList down;
  down.offsetWidth = 4;
  down.referenceWidth = 4;
  BinaryList up = down;
  for (std::uint32_t i = 0; i < kDepth; ++i) {
    down.objects.push_back("\xA1" + BinaryList::number(i + 1, 4));
    up.objects.push_back(i == 0 ? "\xA0"s : "\xA1" + BinaryList::number(i - 1, 4));
  }
  down.objects.push_back("\xA0");
  up.root = kDepth - 1;
  EXPECT_TRUE(reads(down.bytes()));
  EXPECT_TRUE(reads(up.bytes()));
  down.objects.back() = "\xA1" + BinaryList::number(0, 4);
  EXPECT_FALSE(reads(down.bytes()));
}

// Lists put together at random, small enough that cycles, equal keys in every order and encoding
// and keys after their maps are all common: what is accepted, and how keys are told apart, must be
// what a plain look at the objects says.
class RandomList {
 public:
  explicit RandomList(std::uint32_t seed) : random_(seed) {
    const std::size_t strings = 1 + pick(12);
    const std::size_t containers = 1 + pick(90);
    std::vector<bool> isContainer(strings + containers);
    std::fill_n(isContainer.begin(), containers, true);
    std::shuffle(isContainer.begin(), isContainer.end(), random_);
    objects_.resize(isContainer.size());
    std::uint64_t number = pick(12);
    for (std::size_t i = 0; i < objects_.size(); ++i) {
      if (!isContainer[i]) {
        objects_[i].text = nextText(number);
        objects_[i].isWide = pick(6) == 0;
        strings_.push_back(i);
      }
    }
    for (std::size_t i = 0; i < objects_.size(); ++i) {
      if (isContainer[i]) fill(i);
    }
  }

  std::string bytes() const {
    BinaryList list;
    for (const Object& object : objects_) list.objects.push_back(encoded(object));
    return list.bytes();
  }
  bool isSound() const {
    for (const Object& object : objects_) {
      std::set<std::string> names;
      for (const auto key : object.keys) {
        if (!names.insert(objects_[key].text).second) return false;
      }
    }
    std::vector<int> state(objects_.size());
    for (std::size_t i = 0; i < objects_.size(); ++i) {
      if (!endsFrom(i, state)) return false;
    }
    return true;
  }
  void check(const PropertyList& list) const {
    for (std::uint32_t i = 0; i < objects_.size(); ++i) {
      const Object& map = objects_[i];
      for (std::size_t k = 0; k < map.keys.size(); ++k) {
        const auto key = static_cast<std::uint32_t>(map.keys[k]);
        const std::string& text = objects_[key].text;
        EXPECT_EQ(list.string(key), text);
        EXPECT_EQ(list.keyOf(key), list.keyNamed(text)) << text;
        EXPECT_EQ(list.valueForKey(i, text), map.values[k]) << text;
        for (const auto other : strings_) {
          const auto otherKey = list.keyOf(static_cast<std::uint32_t>(other));
          if (otherKey == PropertyList::kNoKey) continue;
          EXPECT_EQ(otherKey == list.keyOf(key), objects_[other].text == text) << text;
        }
      }
    }
  }

 private:
  struct Object {
    std::string text;  // of a string
    bool isWide = false;
    bool isMap = false;
    std::vector<std::size_t> keys{};
    std::vector<std::size_t> values{};
  };

  std::size_t pick(std::size_t count) { return random_() % count; }

  // As a rule ascending, as archives have them.
  std::string nextText(std::uint64_t& number) {
    switch (pick(8)) {
      case 0:
        return "$object-" + std::to_string(pick(16));
      case 1:
        return "$othersObject-" + std::to_string(pick(3));
      case 2:
        return "name" + std::to_string(pick(3));
      default:
        return "$object-" + std::to_string(number += pick(4) == 0 ? 0 : 1);
    }
  }
  void fill(std::size_t index) {
    Object& object = objects_[index];
    object.isMap = pick(2) == 0;
    for (std::size_t count = pick(4); count > 0; --count) {
      if (object.isMap) object.keys.push_back(strings_[pick(strings_.size())]);
      // Forward as a rule, so that cycles are not everywhere.
      const bool goesBack = pick(40) == 0;
      const std::size_t ahead = objects_.size() - index - 1;
      const bool toString = ahead == 0 || pick(3) == 0;
      object.values.push_back(toString   ? strings_[pick(strings_.size())]
                              : goesBack ? pick(objects_.size())
                                         : index + 1 + pick(ahead));
    }
  }
  static std::string encoded(const Object& object) {
    std::string text;
    if (!object.text.empty()) {
      for (const char letter : object.text) (text += object.isWide ? "\0"s : ""s) += letter;
      return std::string(1, object.isWide ? '\x6F' : '\x5F') + "\x10" +
             static_cast<char>(object.text.size()) + text;
    }
    text = static_cast<char>((object.isMap ? 0xD0 : 0xA0) | object.values.size());
    for (const auto key : object.keys) text += static_cast<char>(key);
    for (const auto value : object.values) text += static_cast<char>(value);
    return text;
  }
  bool endsFrom(std::size_t index, std::vector<int>& state) const {
    if (state[index] != 0) return state[index] == 2;
    state[index] = 1;
    for (const auto value : objects_[index].values) {
      if (!endsFrom(value, state)) return false;
    }
    state[index] = 2;
    return true;
  }

  std::mt19937 random_;
  std::vector<Object> objects_;
  std::vector<std::size_t> strings_;
};

TEST(BinaryPropertyList, TellsKeysApartAndFindsCyclesWhateverTheOrder) {
  int sound = 0;
  for (std::uint32_t seed = 0; seed < 4000; ++seed) {
    const RandomList random(seed);
    const std::string file = random.bytes();
    const auto list = PropertyListReader::read(bytesOf(file));
    ASSERT_EQ(list.isOK(), random.isSound()) << "seed " << seed << ": " << list.status().message();
    if (!random.isSound()) continue;
    ++sound;
    random.check(*list);
    if (testing::Test::HasFailure()) FAIL() << "seed " << seed;
  }
  EXPECT_GT(sound, 400);
  EXPECT_LT(sound, 3600);
}

std::string plist(const std::string& body) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
         "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
         "<plist version=\"1.0\">" +
         body + "</plist>\n";
}

TEST(XMLPropertyList, ReadsEveryKindOfValue) {
  const std::string file = plist(
      "<dict><key>text</key><string>a &lt;b&gt; &#233;</string>"
      "<key>integer</key><integer> -42 </integer><key>hex</key><integer>0x1F</integer>"
      "<key>large</key><integer>18446744073709551615</integer>"
      "<key>real</key><real>1.5e3</real><key>infinite</key><real>-Infinity</real>"
      "<key>huge</key><real>1e999</real><key>tiny</key><real>1e-999</real>"
      "<key>yes</key><true/><key>no</key><false/>"
      "<key>data</key><data>\n  aGVs\n  bG8=\n</data>"
      "<key>date</key><date>2001-01-02T03:04:05Z</date>"
      "<key>list</key><array><string/><dict/></array>"
      "<key>uid</key><dict><key>CF$UID</key><integer>3</integer></dict></dict>");
  const auto read = PropertyListReader::read(bytesOf(file));
  ASSERT_TRUE(read) << read.status().message();
  const PropertyList& list = *read;
  const auto value = [&](const char* key) { return list.valueForKey(list.root(), key); };
  EXPECT_EQ(list.string(value("text")), "a <b> \xC3\xA9");
  EXPECT_EQ(list.integer(value("integer")), -42);
  EXPECT_EQ(list.integer(value("hex")), 31);
  EXPECT_EQ(list.kind(value("large")), Kind::unsignedInteger);
  EXPECT_EQ(list.real(value("real")), 1500);
  EXPECT_TRUE(std::isinf(list.real(value("infinite"))) && list.real(value("infinite")) < 0);
  EXPECT_TRUE(std::isinf(list.real(value("huge"))));
  EXPECT_EQ(list.real(value("tiny")), 0);
  EXPECT_TRUE(list.boolean(value("yes")));
  EXPECT_FALSE(list.boolean(value("no")));
  const auto data = list.data(value("data"));
  EXPECT_EQ(std::string(data.begin(), data.end()), "hello");
  EXPECT_EQ(list.kind(value("date")), Kind::date);
  EXPECT_EQ(list.real(value("date")), 86400 + 3 * 3600 + 4 * 60 + 5);
  ASSERT_EQ(list.count(value("list")), 2U);
  EXPECT_EQ(list.string(list.elements(value("list"))[0]), "");
  EXPECT_EQ(list.kind(value("uid")), Kind::uid);
  EXPECT_EQ(list.uid(value("uid")), 3U);
}

TEST(XMLPropertyList, RefusesWhatIsMalformed) {
  const struct {
    const char* what;
    std::string file;
  } cases[] = {
      {"no XML", "hello"},
      {"nothing in it", plist("")},
      {"two values", plist("<true/><true/>")},
      {"no plist element", "<dict/>"},
      {"an unclosed element", "<plist><dict>"},
      {"an unknown element", plist("<set/>")},
      {"a value without a key", plist("<dict><string>a</string></dict>")},
      {"a key without a value", plist("<dict><key>a</key></dict>")},
      {"two keys in a row", plist("<dict><key>a</key><key>b</key></dict>")},
      {"a key twice", plist("<dict><key>a</key><true/><key>a</key><true/></dict>")},
      {"a key in a list", plist("<array><key>a</key></array>")},
      {"text between elements", plist("<array>a<true/></array>")},
      {"an element in a text", plist("<string><true/></string>")},
      {"a boolean with a text", plist("<true>no</true>")},
      {"an empty integer", plist("<integer/>")},
      {"an integer with letters", plist("<integer>12a</integer>")},
      {"an integer of 200 digits", plist("<integer>" + std::string(200, '9') + "</integer>")},
      {"a real with a comma", plist("<real>1,5</real>")},
      {"an empty real", plist("<real></real>")},
      {"a date without a time", plist("<date>2001-01-01</date>")},
      {"a date in month 13", plist("<date>2001-13-01T00:00:00Z</date>")},
      {"base64 without its padding", plist("<data>aGVsbG8</data>")},
      {"base64 with padding inside", plist("<data>aGU=bG8=</data>")},
      {"base64 with a strange sign", plist("<data>aGV*bG8=</data>")},
      {"an entity of its own",
       "<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><string>&a;</string></plist>"},
      {"entities that multiply",
       "<!DOCTYPE plist [<!ENTITY a \"xxxx\"><!ENTITY b \"&a;&a;&a;&a;\">]>"
       "<plist><string>&b;</string></plist>"},
      {"an entity of another file",
       "<!DOCTYPE plist [<!ENTITY a SYSTEM \"file:///etc/passwd\">]>"
       "<plist><string>&a;</string></plist>"},
      {"an unknown entity", "<!DOCTYPE plist SYSTEM \"x.dtd\"><plist><string>&a;</string></plist>"},
      {"bytes that are no UTF-8", plist("<string>\xFF</string>")},
  };
  for (const auto& item : cases) {
    const auto status = reading(item.file);
    EXPECT_EQ(nameOf(status.code()), "damaged") << item.what;
    EXPECT_FALSE(status.message().empty()) << item.what;
  }
}

TEST(XMLPropertyList, StatesHowDeepItMayBeNested) {
  const auto nested = [](std::size_t depth) {
    std::string text;
    for (std::size_t i = 0; i < depth; ++i) text += "<array>";
    for (std::size_t i = 0; i < depth; ++i) text += "</array>";
    return plist(text);
  };
  EXPECT_TRUE(reads(nested(100000)));
  const auto status = reading(nested(PropertyListReader::kMaximumXMLDepth));
  EXPECT_EQ(nameOf(status.code()), "tooLarge");
  EXPECT_NE(status.message().find("too deep"), std::string::npos) << status.message();
}

}  // namespace
}  // namespace tarnkit
