#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "tarnkit/archive/HXArchiveReader.h"
#include "tarnkit/archive/HXArchiveText.h"
#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/archive/HXKeyedArchiver.h"
#include "tarnkit/platform/collections/Array.h"
#include "tarnkit/platform/collections/Dictionary.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/objects/Null.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/propertylist/PropertyListWriter.h"
#include "tarnkit/platform/system/Bundle.h"
#include "tarnkit/platform/system/File.h"
#include "tarnkit/platform/system/Log.h"
#include "tests/ProcessorTime.h"

namespace tarnkit {
namespace {

using ::testing::HasSubstr;

const Symbol kA{"a"};
const Symbol kB{"b"};
const Symbol kC{"c"};
const Symbol kPMThing{"PMThing"};
const Symbol kPMOther{"PMOther"};

// An object whose encoding is given by the test.
class Scripted : public Object {
  TARNKIT_CLASS
 public:
  explicit Scripted(std::function<void(Encoder&)> script = {}) : script_(std::move(script)) {}
  void setScript(std::function<void(Encoder&)> script) { script_ = std::move(script); }
  void encodeWithCoder(Encoder& coder) const override {
    if (script_) script_(coder);
  }

 private:
  std::function<void(Encoder&)> script_;
};
class ScriptedKind final : public Scripted {
  TARNKIT_CLASS
 public:
  using Scripted::Scripted;
};
const Class Scripted::kClass{"Scripted", &Object::kClass};
const Class ScriptedKind::kClass{"ScriptedKind", &Scripted::kClass};

// The archive in its readable form without the first line.
std::string shown(const Data& data) {
  HXArchiveReader reader;
  if (const auto status = reader.open(data.bytes()); !status) return "ERROR: " + status.message();
  const std::string text = HXArchiveText::indented(reader);
  return text.substr(text.find('\n') + 1);
}
std::string shown(const Object& root) {
  return shown(*HXKeyedArchiver::archivedDataWithRootObject(&root));
}

// More than stand in the first of the segments in which it keeps what it knows of each.
TEST(HXKeyedArchiver, TellsManyObjectsApart) {
  constexpr std::uint32_t kCount = 300000;
  const auto all = make<Array>();
  for (std::uint32_t i = 0; i < kCount; ++i) {
    const auto object = make<Array>();
    object->add(Number::withInt(static_cast<std::int32_t>(i)));
    all->add(object);
    all->add(object);
  }
  const auto data = HXKeyedArchiver::archivedDataWithRootObject(all.get());
  const auto read = PropertyListReader::read(data->bytes());
  ASSERT_TRUE(read) << read.status().message();
  const PropertyList& list = *read;
  const auto objects = list.valueForKey(list.root(), "$objects");
  ASSERT_EQ(list.count(objects), kCount + 1);
  const auto references = list.elements(list.valueForKey(objects, "$object-0"));
  ASSERT_EQ(references.size(), 2 * kCount);
  for (std::uint32_t i = 0; i < kCount; ++i) {
    ASSERT_EQ(references[2 * i], references[2 * i + 1]);
    const auto id = list.valueForKey(references[2 * i], "$reference");
    ASSERT_EQ(list.string(id), "$object-" + std::to_string(i + 1));
    ASSERT_EQ(list.string(list.keys(objects)[i + 1]), list.string(id));
    ASSERT_EQ(list.integer(list.elements(list.values(objects)[i + 1])[0]), i);
  }
}

TEST(HXKeyedArchiver, NumbersObjectsInPreOrder) {
  const auto leaf = make<Scripted>();
  const auto child = make<Scripted>([&](Encoder& coder) { coder.encodeObject(leaf, kA); });
  const auto root = make<Scripted>([&](Encoder& coder) {
    coder.encodeObject(child, kA);
    coder.encodeBool(true, kB);
    coder.encodeObject(leaf, kC);  // a second time
  });
  EXPECT_EQ(shown(*root),
            "$object-0 Scripted\n"
            "  a: $object-1 Scripted\n"
            "    a: $object-2 Scripted\n"
            "  b: true\n"
            "  c: $object-2 Scripted (above)\n");
}

TEST(HXKeyedArchiver, WritesEveryKindOfValueInItsForm) {
  const auto root = make<Scripted>([](Encoder& coder) {
    static const Symbol keys[] = {Symbol("k0"), Symbol("k1"), Symbol("k2"), Symbol("k3"),
                                  Symbol("k4"), Symbol("k5"), Symbol("k6"), Symbol("k7"),
                                  Symbol("k8"), Symbol("k9")};
    coder.encodeInt(-1, keys[0]);
    coder.encodeInt64(std::int64_t{1} << 40, keys[1]);
    coder.encodeFloat(0.1F, keys[2]);
    coder.encodeDouble(0.1, keys[3]);
    coder.encodeBytes(bytesOf("xyz"), keys[4]);
    coder.encodeObject(make<Data>(bytesOf("xy")), keys[5]);
    coder.encodeString("text", keys[6]);
    coder.encodeObject(Number::withFloat(2.5F), keys[7]);
    coder.encodeString(String(), keys[8]);  // nil: the key stays absent
    coder.encodeObject(Null::null(), keys[9]);
  });
  EXPECT_EQ(shown(*root),
            "$object-0 Scripted\n"
            "  k0: -1\n  k1: 1099511627776\n  k2: 0.1\n  k3: 0.1\n  k4: <3 bytes>\n"
            "  k5: $object-1 <2 bytes>\n  k6: \"text\"\n  k7: 2.5\n"
            "  k9: $object-2 NSNull\n");
}

TEST(HXKeyedArchiver, ValuesOfTheTopAreWrittenUnderTheTypeOfTheArchiver) {
  const auto asks = make<Scripted>([](Encoder& coder) { coder.encodeInt(coder.codingType(), kA); });
  const auto data = make<Data>();
  HXKeyedArchiver archiver(data);
  archiver.setCodingType(2);
  archiver.encodeObject(asks, kA);
  archiver.encodeList(std::vector<Ref<Scripted>>{make<Scripted>()}, kB);
  archiver.encodeMembers(*make<OrderedSet>(), kC);
  ASSERT_TRUE(archiver.endEncoding());
  EXPECT_EQ(shown(*data),
            "{…}\n"
            "  a: $object-0 Scripted\n"
            "    a: 2\n"
            "  b: $object-1 list of 1\n"
            "    - $object-2 Scripted\n"
            "  c: $object-3 NSOrderedSet\n");
}

TEST(HXKeyedArchiver, ASubstitutionThatStandsBehindAnObjectIsNotSeenByIt) {
  const auto data = make<Data>();
  HXKeyedArchiver archiver(data);
  String seen("not asked");
  const auto child =
      make<Scripted>([&](Encoder&) { seen = archiver.classNameForClass(ScriptedKind::kClass); });
  const auto root = make<Scripted>([&](Encoder& coder) {
    coder.encodeObject(child, kA);
    coder.setClassName(kPMThing, ScriptedKind::kClass);
  });
  archiver.encodeRootObject(root.get());
  EXPECT_TRUE(seen.isNil());
  EXPECT_EQ(archiver.classNameForClass(ScriptedKind::kClass), "PMThing");
}

TEST(HXArchiveText, TextsAreShortenedBeyondALengthOnly) {
  const std::string whole(HXArchiveText::kLongText, 'x');
  const auto root = make<Scripted>([&](Encoder& coder) {
    for (const auto* key : {&kA, &kB}) coder.encodeString(String(whole), *key);
    coder.encodeBool(false, kC);
  });
  EXPECT_EQ(shown(*root),
            "$object-0 Scripted\n  a: \"" + whole + "\"\n  b: \"" + whole + "\"\n  c: false\n");
  EXPECT_EQ(HXArchiveReader::sniff(PropertyList()), HXArchiveKind::none);
}

TEST(HXKeyedArchiver, GivesContainersIDsOfTheirOwn) {
  const auto leaf = make<Scripted>();
  auto list = make<Array>();
  list->add(leaf);
  list->add(String("text").object());
  auto map = make<Dictionary>();
  map->setObject(make<Scripted>(), "b");
  map->setObject(make<Scripted>(), "a");  // the lower ID, though added later
  auto ordered = make<OrderedSet>();
  ordered->add(leaf);
  ordered->add(Number::withInt(1));
  auto set = make<Set>();
  set->add(leaf);
  const std::vector<Ref<Scripted>> vector{leaf, make<Scripted>()};
  OrderedMap<Ref<Scripted>> table;
  table.set("z", leaf);
  table.set("y", make<Scripted>());
  const auto root = make<Scripted>([&](Encoder& coder) {
    static const Symbol keys[] = {Symbol("k0"), Symbol("k1"), Symbol("k2"), Symbol("k3"),
                                  Symbol("k4"), Symbol("k5"), Symbol("k6"), Symbol("k7")};
    coder.encodeObject(list, keys[0]);
    coder.encodeObject(map, keys[1]);
    coder.encodeObject(ordered, keys[2]);
    coder.encodeObject(set, keys[3]);
    coder.encodeList(vector, keys[4]);
    coder.encodeMap(table, keys[5]);
    coder.encodeMembers(*ordered, keys[6]);
    coder.encodeList(vector, keys[7]);
  });
  EXPECT_EQ(shown(*root),
            "$object-0 Scripted\n"
            "  k0: $object-1 list of 2\n"
            "    - $object-2 Scripted\n"
            "    - \"text\"\n"
            "  k1: $object-3 map\n"
            "    a: $object-4 Scripted\n"
            "    b: $object-5 Scripted\n"
            "  k2: $object-6 NSOrderedSet\n"
            "    NS.object.0: $object-2 Scripted (above)\n"
            "    NS.object.1: 1\n"
            "  k3: $object-7 NSSet\n"
            "    NS.objects: list of 1\n"
            "      - $object-2 Scripted (above)\n"
            "  k4: $object-8 list of 2\n"
            "    - $object-2 Scripted (above)\n"
            "    - $object-9 Scripted\n"
            "  k5: $object-10 map\n"
            "    y: $object-11 Scripted\n"
            "    z: $object-2 Scripted (above)\n"
            "  k6: $object-12 NSOrderedSet\n"
            "    NS.object.0: $object-2 Scripted (above)\n"
            "    NS.object.1: 1\n"
            "  k7: $object-13 list of 2\n"
            "    - $object-2 Scripted (above)\n"
            "    - $object-9 Scripted (above)\n");
}

TEST(HXKeyedArchiver, ConditionalReferencesKeepTheirNumber) {
  const auto absent = make<Scripted>();
  const auto promoted = make<Scripted>();
  const auto root = make<Scripted>();
  const auto child = make<Scripted>([&](Encoder& coder) {
    coder.encodeConditionalObject(static_cast<const Object*>(root.get()), kA);  // on the way
  });
  root->setScript([&](Encoder& coder) {
    static const Symbol keys[] = {Symbol("k0"), Symbol("k1"), Symbol("k2"), Symbol("k3")};
    coder.encodeConditionalObject(static_cast<const Object*>(absent.get()), keys[0]);
    coder.encodeConditionalObject(static_cast<const Object*>(promoted.get()), keys[1]);
    coder.encodeObject(child, keys[2]);
    coder.encodeObject(promoted, keys[3]);
  });
  EXPECT_EQ(shown(*root),
            "$object-0 Scripted\n"
            "  k0: nil\n"
            "  k1: $object-2 Scripted\n"
            "  k2: $object-3 Scripted\n"
            "    a: $object-0 Scripted (above)\n"
            "  k3: $object-2 Scripted (above)\n");
  HXArchiveReader reader;
  const auto data = HXKeyedArchiver::archivedDataWithRootObject(root.get());
  ASSERT_TRUE(reader.open(data->bytes()));
  EXPECT_EQ(reader.objectCount(), 3U);
  EXPECT_EQ(reader.objectNamed("$object-1"), HXArchiveReader::kNoObject);
}

TEST(HXKeyedArchiver, SubstitutesClassNamesAfterTheObjectWasWritten) {
  // A substitution is looked up when everything below the object is written, and counts for exactly
  // that class: objects of it that were complete before keep their name.
  const auto early = make<Scripted>();
  const auto late = make<Scripted>();
  const auto kind = make<ScriptedKind>();
  const auto middle = make<Scripted>([&](Encoder& coder) {
    coder.setClassName(kPMThing, Scripted::kClass);
    coder.encodeObject(late, kA);
  });
  const auto root = make<ScriptedKind>([&](Encoder& coder) {
    static const Symbol keys[] = {Symbol("k0"), Symbol("k1"), Symbol("k2")};
    coder.encodeObject(early, keys[0]);
    coder.encodeObject(middle, keys[1]);
    coder.encodeObject(kind, keys[2]);
    coder.setClassName(kPMOther, ScriptedKind::kClass);
  });
  EXPECT_EQ(shown(*root),
            "$object-0 PMOther\n"
            "  k0: $object-1 Scripted\n"
            "  k1: $object-2 PMThing\n"
            "    a: $object-3 PMThing\n"
            "  k2: $object-4 ScriptedKind\n");
}

TEST(HXKeyedArchiver, AnswersTheSubstitutionInEffect) {
  HXKeyedArchiver archiver(make<Data>());
  EXPECT_TRUE(archiver.classNameForClass(Scripted::kClass).isNil());
  String inside;
  const auto root = make<Scripted>([&](Encoder& coder) {
    coder.setClassName(kPMThing, Scripted::kClass);
    inside = archiver.classNameForClass(Scripted::kClass);
    EXPECT_EQ(archiver.stackDepth(), 2U);
    coder.setClassName(kPMOther, Scripted::kClass);  // replaces the first
  });
  archiver.encodeRootObject(root.get());
  EXPECT_EQ(inside, "PMThing");
  EXPECT_EQ(archiver.classNameForClass(Scripted::kClass), "PMOther");
  EXPECT_EQ(archiver.stackDepth(), 1U);
}

TEST(HXKeyedArchiver, StartsAgainAfterFinishing) {
  const auto data = make<Data>();
  HXKeyedArchiver archiver(data);
  archiver.setClassName(kPMThing, Scripted::kClass);
  for (int i = 0; i < 2; ++i) {
    const auto root =
        make<Scripted>([](Encoder& coder) { coder.encodeObject(make<Scripted>(), kA); });
    archiver.encodeRootObject(root.get());
    archiver.finishEncoding();
    EXPECT_EQ(shown(*data), "$object-0 PMThing\n  a: $object-1 PMThing\n") << i;
  }
  const auto before = Object::liveObjectCount();
  archiver.encodeRootObject(make<Scripted>().get());
  EXPECT_GT(Object::liveObjectCount(), before);  // owned until it is finished
  archiver.finishEncoding();
  EXPECT_EQ(Object::liveObjectCount(), before);
}

TEST(HXKeyedArchiver, TakesValuesWithoutARoot) {
  const auto data = make<Data>();
  HXKeyedArchiver archiver(data);
  archiver.encodeInt(1, kA);
  archiver.encodeObject(make<Scripted>([](Encoder& coder) { coder.encodeInt(5, kA); }), kB);
  archiver.encodeInt(2, kA);
  archiver.finishEncoding();
  EXPECT_EQ(shown(*data), "{…}\n  a: 2\n  b: $object-0 Scripted\n    a: 5\n");
  archiver.encodeRootObject(nullptr);
  archiver.finishEncoding();
  EXPECT_EQ(shown(*data), "{}\n");
  archiver.encodeInt(1, kA);
  archiver.encodeRootObject(make<Scripted>().get());
  archiver.finishEncoding();
  EXPECT_EQ(shown(*data), "$object-0 Scripted\n");
  archiver.encodeRootObject(String("root").object().get());
  archiver.finishEncoding();
  EXPECT_EQ(shown(*data), "$object-0 \"root\"\n");
}

TEST(HXKeyedArchiver, LaterValuesReplaceEarlierOnes) {
  static const Symbol classKey{"$class"};
  const auto root = make<Scripted>([](Encoder& coder) {
    coder.encodeObject(make<Scripted>(), kA);
    coder.encodeInt(1, classKey);  // the archiver's own
    coder.encodeInt(2, kA);
    coder.encodeObject(make<Scripted>(), kB);
  });
  EXPECT_EQ(shown(*root), "$object-0 Scripted\n  a: 2\n  b: $object-2 Scripted\n");
}

TEST(HXKeyedArchiver, RefusesAnObjectThatHoldsItself) {
  const auto data = make<Data>();
  HXKeyedArchiver archiver(data);
  const auto root = make<Scripted>();
  const auto child = make<Scripted>([&](Encoder& coder) { coder.encodeObject(root, kA); });
  root->setScript([&](Encoder& coder) { coder.encodeObject(child, kA); });
  try {
    archiver.encodeRootObject(root.get());
    FAIL() << "it was written";
  } catch (const HXArchiveRecursionError& error) {
    EXPECT_STREQ(error.what(),
                 "a Scripted is written unconditionally from inside its own encoding");
  }
  auto list = make<Array>();
  list->add(make<Scripted>([&](Encoder& coder) { coder.encodeObject(list, kA); }));
  EXPECT_THROW(archiver.encodeObject(list, kB), std::logic_error);
  // The archiver is empty and goes on.
  root->setScript({});
  archiver.encodeRootObject(root.get());
  archiver.finishEncoding();
  EXPECT_EQ(shown(*data), "$object-0 Scripted\n");
}

TEST(HXKeyedArchiver, LogsWhatCannotBeSerialized) {
  std::string log;
  const auto sink = Log::setSink([&](std::string_view line) { log = line; });
  const auto data = make<Data>(bytesOf("old"));
  HXKeyedArchiver archiver(data);
  archiver.encodeMap(
      1,
      [](std::size_t) {
        static const String nil;
        return Encoder::MapEntry{nil, Null::null().get()};
      },
      kA);
  archiver.finishEncoding();
  EXPECT_EQ(log, "WARNING: [HXKeyedArchiver] a key of a map is not a string");
  EXPECT_EQ(data->size(), 0U);
  log.clear();
  archiver.finishEncoding();
  Log::setSink(sink);
  EXPECT_EQ(log, "");
  EXPECT_GT(data->size(), 0U);
}

TEST(HXKeyedArchiver, FollowsGraphsOfAnyDepth) {
  Ref<Object> inner = make<Scripted>();
  for (int i = 0; i < 100000; ++i) {
    auto outer = make<Scripted>([inner](Encoder& coder) { coder.encodeObject(inner, kA); });
    inner = outer;
  }
  const auto data = HXKeyedArchiver::archivedDataWithRootObject(inner.get());
  HXArchiveReader reader;
  ASSERT_TRUE(reader.open(data->bytes()));
  EXPECT_EQ(reader.objectCount(), 100001U);
  EXPECT_LT(HXArchiveText::indented(reader).size(), 20000000U);
}

// What an object sets for those that it refers to holds from where it stands among the values,
// though they are written only when it returned.
TEST(HXKeyedArchiver, KeepsTheOrderOfSettingsAndValues) {
  const auto child = make<Scripted>([](Encoder& coder) {
    coder.setClassName(kPMOther, ScriptedKind::kClass);  // undone by its parent
  });
  const auto parent = make<Scripted>([&](Encoder& coder) {
    coder.encodeObject(child, kA);
    coder.setClassName(kPMThing, ScriptedKind::kClass);  // what it was before the child
    coder.encodeObject(make<ScriptedKind>(), kB);
  });
  const auto root = make<Scripted>([&](Encoder& coder) {
    coder.setClassName(kPMThing, ScriptedKind::kClass);
    coder.encodeObject(parent, kA);
  });
  EXPECT_EQ(shown(*root),
            "$object-0 Scripted\n"
            "  a: $object-1 Scripted\n"
            "    a: $object-2 Scripted\n"
            "    b: $object-3 PMThing\n");
}

TEST(HXKeyedArchiver, WritesObjectsUnderTheCodingTypeOfTheirPlace) {
  const auto told = [](int codingType) {
    return make<Scripted>([codingType](Encoder& coder) {
      coder.encodeInt(coder.codingType(), kA);
      coder.setCodingType(codingType);  // ends with this object
    });
  };
  const auto shared = told(0);
  const auto root = make<Scripted>([&](Encoder& coder) {
    coder.encodeObject(told(8), kA);
    coder.encodeConditionalObject(static_cast<const Object*>(shared.get()), kC);
    coder.setCodingType(3);
    coder.encodeList(std::vector<Ref<Scripted>>{told(9), shared}, kB);
    coder.setCodingType(2);
    coder.encodeObject(make<Scripted>([&](Encoder& inner) { inner.encodeObject(told(7), kA); }),
                       kC);
  });
  const auto data = make<Data>();
  HXKeyedArchiver archiver(data);
  archiver.setCodingType(1);
  archiver.encodeRootObject(root.get());
  EXPECT_EQ(archiver.codingType(), 1);
  archiver.finishEncoding();
  EXPECT_EQ(shown(*data),
            "$object-0 Scripted\n"
            "  a: $object-1 Scripted\n"
            "    a: 1\n"
            "  b: $object-3 list of 2\n"
            "    - $object-4 Scripted\n"
            "      a: 3\n"
            "    - $object-2 Scripted\n"
            "      a: 3\n"
            "  c: $object-5 Scripted\n"
            "    a: $object-6 Scripted\n"
            "      a: 2\n");
}

TEST(HXKeyedArchiver, ArchivesToAFile) {
  const auto unserializable = make<Scripted>([](Encoder& coder) {
    static const String nil;
    const auto at = [](std::size_t) { return Encoder::MapEntry{nil, Null::null().get()}; };
    coder.encodeMap(1, at, kA);
  });
  const auto sound = make<Scripted>();
  const std::string file = ::testing::TempDir() + "/archived";
  ASSERT_TRUE(HXKeyedArchiver::archiveRootObject(sound.get(), file));
  const auto refused = HXKeyedArchiver::writeRootObject(unserializable.get(), file);
  EXPECT_EQ(nameOf(refused.code()), "refused");
  EXPECT_EQ(refused.message(), file + ": a key of a map is not a string");
  EXPECT_EQ(HXKeyedArchiver::writeRootObject(nullptr, file).message(),
            file + ": there is no object to be written");
  const auto kept = File::read(file);
  ASSERT_TRUE(kept);
  EXPECT_EQ(HXArchiveReader::sniff(*kept), HXArchiveKind::deviceGraph);

  const auto full = HXKeyedArchiver::writeRootObject(sound.get(), "/dev/full");
  EXPECT_EQ(nameOf(full.code()), "noSpace");
  EXPECT_EQ(full.message(), "/dev/full: No space left on device");
  EXPECT_TRUE(HXKeyedArchiver::archiveRootObject(sound.get(), "/dev/null"));

  // Who asks only whether it was done finds the reason in the log.
  std::vector<std::string> log;
  const auto sink = Log::setSink([&](std::string_view line) { log.emplace_back(line); });
  EXPECT_FALSE(HXKeyedArchiver::archiveRootObject(unserializable.get(), file));
  EXPECT_EQ(HXKeyedArchiver::archivedDataWithRootObject(unserializable.get())->size(), 0U);
  EXPECT_FALSE(HXKeyedArchiver::dataWithRootObject(unserializable.get()));
  Log::setSink(sink);
  EXPECT_EQ(log, std::vector<std::string>(
                     2, "WARNING: [HXKeyedArchiver] a key of a map is not a string"));
}

// A body of many keys that is the body of many objects, and a long string that many places name an
// absent object by: searched, or hashed, for each of them they would take minutes.
TEST(HXArchiveReader, LooksAtSharedPartsOnce) {
  using Index = PropertyListWriter::Index;
  constexpr std::size_t kCount = 100000;
  PropertyListWriter writer;
  const Index top = writer.reserve();
  const Index value = writer.addInt(5);
  std::vector<Index> keys;
  std::vector<Index> ids;
  for (std::size_t i = 0; i < kCount; ++i) {
    keys.push_back(writer.addString("k" + std::to_string(i)));
    ids.push_back(writer.addString("$object-" + std::to_string(i)));
  }
  const Index referenceKey = writer.addString("$reference");
  const Index absent = writer.addString(std::string(std::size_t{1} << 20, 'x'));
  const Index toAbsent = writer.addMap({&referenceKey, 1}, {&absent, 1});
  std::vector<Index> bodies(kCount, writer.addMap(keys, std::vector<Index>(kCount, value)));
  bodies[0] = writer.addArray(std::vector<Index>(kCount, toAbsent));
  const Index topKeys[] = {writer.addString("$objects"), writer.addString("$root"),
                           writer.addString("$version")};
  const Index topValues[] = {writer.addMap(ids, bodies),
                             writer.addMap({&referenceKey, 1}, {ids.data(), 1}),
                             writer.addString("1.0.0")};
  std::copy_n(topValues, 3, writer.fillMap(top, topKeys).begin());
  const auto bytes = writer.finish(top);

  const auto start = test::ProcessorTime::now();
  HXArchiveReader reader;
  ASSERT_TRUE(reader.open(bytes));
  EXPECT_EQ(reader.objectCount(), kCount);
  EXPECT_THAT(HXArchiveText::indented(reader), HasSubstr("list of 100000"));
  EXPECT_LT(test::ProcessorTime::now() - start, std::chrono::seconds(4));
}

TEST(HXArchiveReader, TellsFilesApart) {
  static const Symbol entry{"PMImageStoreEntry"};
  const auto data = make<Data>();
  HXKeyedArchiver archiver(data);
  archiver.encodeRootObject(make<Scripted>().get());
  archiver.finishEncoding();
  EXPECT_EQ(HXArchiveReader::sniff(data->bytes()), HXArchiveKind::deviceGraph);
  archiver.setClassName(entry, Scripted::kClass);
  archiver.encodeRootObject(make<Scripted>().get());
  archiver.finishEncoding();
  EXPECT_EQ(HXArchiveReader::sniff(data->bytes()), HXArchiveKind::imageArchive);
  const std::string document =
      "<plist><dict><key>$archiver</key><string>NSKeyedArchiver</string>"
      "<key>$objects</key><array/></dict></plist>";
  EXPECT_EQ(HXArchiveReader::sniff(bytesOf(document)), HXArchiveKind::editorDocument);
  for (const char* other :
       {"", "text", "<plist><dict/></plist>", "<plist><string>a</string></plist>"}) {
    EXPECT_EQ(HXArchiveReader::sniff(bytesOf(other)), HXArchiveKind::none) << other;
    HXArchiveReader reader;
    const auto status = reader.open(bytesOf(other));
    const bool isList = PropertyListReader::read(bytesOf(other)).isOK();
    EXPECT_EQ(nameOf(status.code()), isList ? "unsupported" : "damaged") << other;
    EXPECT_FALSE(status.sentence().empty());
  }
}

// Whatever the file says, a terminal that shows it gets no command.
TEST(HXArchiveText, EscapesEveryTextOfTheFile) {
  const std::string evil = "\x1B]0;\x07\n\xC2\x9B\x7F\u202E\u2029";
  const std::string escaped = "\\u001b]0;\\u0007\\n\\u009b\\u007f\\u202e\\u2029";
  PropertyListWriter writer;
  const auto text = [&](const std::string& prefix) { return writer.addString(prefix + evil); };
  using Index = PropertyListWriter::Index;
  const Index top = writer.reserve();
  const Index ids[] = {text("id"), text("list")};
  const Index referenceKey = writer.addString("$reference");
  const Index toRoot = writer.addMap({&referenceKey, 1}, {&ids[0], 1});
  const Index toList = writer.addMap({&referenceKey, 1}, {&ids[1], 1});
  const Index keys[] = {writer.addString("$class"), text("key"), text("again"), text("elements")};
  const Index values[] = {text("class"), text("value"), toRoot, toList};
  const Index bodies[] = {writer.addMap(keys, values), writer.addArray({})};
  const Index topKeys[] = {writer.addString("$objects"), writer.addString("$root"),
                           writer.addString("$version")};
  const Index topValues[] = {writer.addMap(ids, bodies), toRoot, text("1.0")};
  std::copy_n(topValues, 3, writer.fillMap(top, topKeys).begin());
  const auto bytes = writer.finish(top);
  HXArchiveReader reader;
  ASSERT_TRUE(reader.open(bytes));
  const auto with = [&](const char* prefix) { return prefix + escaped; };
  EXPECT_EQ(HXArchiveText::indented(reader),
            "device graph, version " + with("1.0") + ", 2 objects\n" + with("id") + " " +
                with("class") + "\n  " + with("key") + ": \"" + with("value") + "\"\n  " +
                with("again") + ": " + with("id") + " " + with("class") + " (above)\n  " +
                with("elements") + ": " + with("list") + " empty list\n");
  for (const char c : HXArchiveText::json(reader)) {
    EXPECT_TRUE(static_cast<unsigned char>(c) >= 0x20 || c == '\n');
  }
}

TEST(HXArchiveReader, WritesJSON) {
  const auto absent = make<Scripted>();
  const auto child = make<Scripted>();
  auto list = make<Array>();
  list->add(child);
  list->add(child);
  const auto root = make<Scripted>([&](Encoder& coder) {
    static const Symbol keys[] = {Symbol("k0"), Symbol("k1"), Symbol("k2"),
                                  Symbol("k3"), Symbol("k4"), Symbol("k5")};
    coder.encodeObject(list, keys[0]);
    coder.encodeString("a \"quoted\"\n\x01", keys[1]);
    coder.encodeFloat(0.1F, keys[2]);
    coder.encodeDouble(-1.0 / 0.0, keys[3]);
    coder.encodeBytes(bytesOf("xyz"), keys[4]);
    coder.encodeConditionalObject(static_cast<const Object*>(absent.get()), keys[5]);
  });
  HXArchiveReader reader;
  const auto data = HXKeyedArchiver::archivedDataWithRootObject(root.get());
  ASSERT_TRUE(reader.open(data->bytes()));
  const std::string version(reader.version());
  EXPECT_EQ(HXArchiveText::json(reader),
            R"({"kind":"deviceGraph","version":")" + version +
                R"(","objects":3,"root":)"
                R"({"id":"$object-0","class":"Scripted","values":{)"
                R"("k0":{"id":"$object-1","elements":[)"
                R"({"id":"$object-2","class":"Scripted","values":{}},{"reference":"$object-2"}]},)"
                R"("k1":"a \"quoted\"\n\u0001","k2":0.1,"k3":"-inf","k4":{"data":3},"k5":null}}})"
                "\n");
}

// Lists that stand inline in many places, and a long text in many: neither may be written out
// every time.
TEST(HXArchiveReader, DoesNotExpandWhatIsShared) {
  PropertyListWriter writer;
  const auto top = writer.reserve();
  const auto root = writer.reserve();
  const auto text = writer.addString(std::string(100000, 'x'));
  auto shared = writer.addArray(std::vector<PropertyListWriter::Index>(1000, text));
  for (int i = 0; i < 50; ++i) {
    shared = writer.addArray(std::vector<PropertyListWriter::Index>(10, shared));
  }
  const auto key = writer.addString("key");
  const auto rootEntry = writer.fillMap(root, 1);
  rootEntry.keys[0] = key;
  rootEntry.values[0] = shared;
  const PropertyListWriter::Index values[] = {root, writer.addMap({}, {}), writer.addString("1")};
  const PropertyListWriter::Index keys[] = {writer.addString("$root"), writer.addString("$objects"),
                                            writer.addString("$version")};
  std::copy_n(values, 3, writer.fillMap(top, keys).begin());
  const auto file = writer.finish(top);
  HXArchiveReader reader;
  ASSERT_TRUE(reader.open(file));
  EXPECT_LT(HXArchiveText::indented(reader).size(), 1000000U);
  EXPECT_LT(HXArchiveText::json(reader).size(), 1000000U);
}

TEST(HXCoding, KnowsTheEditorsTypes) {
  for (const int type : {0, 1, 3}) EXPECT_TRUE(isEditorCodingType(type));
  for (const int type : {-1, 2, 4}) EXPECT_FALSE(isEditorCodingType(type));
}

}  // namespace
}  // namespace tarnkit
