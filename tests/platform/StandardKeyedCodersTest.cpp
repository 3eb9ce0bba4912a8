#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>

#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"
#include "tarnkit/platform/collections/Array.h"
#include "tarnkit/platform/collections/Dictionary.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/objects/Null.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/system/File.h"
#include "tests/ProcessorTime.h"
#include "tests/platform/ArchivedThing.h"

namespace tarnkit {
namespace {

using test::ArchivedThing;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class StandardKeyedCoders : public ::testing::Test {
 protected:
  StandardKeyedCoders() {
    ClassRegistry::add(ArchivedThing::kClass);
    ArchivedThing::events.clear();
  }

  static Ref<ArchivedThing> roundTrip(const Object& root) {
    const auto data = StandardKeyedArchiver::archivedData(&root, 0);
    const auto read = StandardKeyedUnarchiver::unarchive(data->bytes(), 0);
    EXPECT_TRUE(read) << read.status().message();
    return read ? as<ArchivedThing>(*read) : nullptr;
  }
};

TEST_F(StandardKeyedCoders, KeepsEveryKindOfValue) {
  auto thing = make<ArchivedThing>("gr\xC3\xBC\xC3\x9F");
  thing->flag = true;
  thing->number = -7;
  thing->longNumber = std::int64_t{1} << 40;
  thing->single = 0.1F;
  thing->real = 0.1;
  thing->bytes = {1, 2, 255};
  thing->table.set("b", make<Data>(bytesOf("data")));
  thing->table.set("a", Number::withFloat(2.5F));
  thing->table.set("nothing", Null::null());
  auto list = make<Array>();
  auto set = make<OrderedSet>();
  set->add(String("x").object());
  set->add(String("y").object());
  auto map = make<Dictionary>();
  map->setObject(set, "set");
  map->setObject(String("$null").object(), "text");
  list->add(map);
  list->add(Number::withBool(true));
  thing->payload = list;

  const auto read = roundTrip(*thing);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->name, "gr\xC3\xBC\xC3\x9F");
  EXPECT_TRUE(read->flag);
  EXPECT_EQ(read->number, -7);
  EXPECT_EQ(read->longNumber, std::int64_t{1} << 40);
  EXPECT_EQ(read->single, 0.1F);
  EXPECT_EQ(read->real, 0.1);
  EXPECT_THAT(read->bytes, ElementsAre(1, 2, 255));
  ASSERT_EQ(read->table.size(), 3U);
  EXPECT_EQ(read->table.begin()->key, "b");
  EXPECT_TRUE(read->table.get("b")->isEqual(*thing->table.get("b")));
  EXPECT_EQ(as<Number>(read->table.get("a"))->kind(), Number::Kind::float32);
  EXPECT_EQ(read->table.get("nothing"), Null::null().get());
  const auto readList = as<Array>(read->payload);
  ASSERT_TRUE(readList && readList->count() == 2);
  const auto readMap = as<Dictionary>((*readList)[0]);
  ASSERT_TRUE(readMap);
  EXPECT_TRUE(readMap->objectForKey("set")->isEqual(*set));
  EXPECT_EQ(String::from(readMap->objectForKey("text").get()), "$null");
}

TEST_F(StandardKeyedCoders, KeepsIdentityAndResolvesConditionalReferences) {
  auto root = make<ArchivedThing>("root");
  auto first = root->addPart("first");
  auto second = root->addPart("second");
  auto outsider = make<ArchivedThing>("outsider");
  first->whole = second;     // written later: a forward reference
  second->whole = outsider;  // written by nobody
  first->payload = second;   // twice the same object
  const auto read = roundTrip(*root);
  ASSERT_TRUE(read && read->parts.size() == 2);
  EXPECT_EQ(read->parts[0]->whole.get(), read->parts[1].get());
  EXPECT_EQ(read->parts[0]->payload, read->parts[1].get());
  EXPECT_EQ(read->parts[1]->whole.get(), nullptr);
}

TEST_F(StandardKeyedCoders, InitialisesInPreOrderAndAwakesInPostOrder) {
  auto root = make<ArchivedThing>("root");
  auto a = root->addPart("a");
  auto b = root->addPart("b");
  a->addPart("a1");
  a->parts[0]->whole = b;  // met below `a` before its own turn
  b->addPart("b1");
  roundTrip(*root);
  EXPECT_THAT(ArchivedThing::events,
              ElementsAre("init root", "init a", "init a1", "init b", "init b1", "awake b1",
                          "awake b", "awake a1", "awake a", "awake root"));
}

TEST_F(StandardKeyedCoders, FollowsGraphsOfAnyDepth) {
  constexpr int kDepth = 100000;
  auto root = make<ArchivedThing>("root");
  ArchivedThing* deepest = root.get();
  for (int i = 0; i < kDepth; ++i) deepest = deepest->addPart("part").get();
  auto list = make<Array>();
  for (int i = 0; i < kDepth; ++i) {
    auto outer = make<Array>();
    outer->add(list);
    list = outer;
  }
  root->payload = list;
  auto read = roundTrip(*root);
  ASSERT_TRUE(read);
  int depth = 0;
  for (const ArchivedThing* at = read.get(); !at->parts.empty(); at = at->parts[0].get()) ++depth;
  EXPECT_EQ(depth, kDepth);
  EXPECT_EQ(ArchivedThing::events.back(), "awake root");
}

TEST_F(StandardKeyedCoders, WritesTheSameBytesForTheSameGraph) {
  const auto archive = [] {
    auto root = make<ArchivedThing>("root");
    for (int i = 0; i < 300; ++i) root->addPart("part")->number = i;
    return *StandardKeyedArchiver::archivedData(root.get(), 0);
  };
  const auto first = archive();
  const auto padding = make<ArchivedThing>("moves the addresses");
  EXPECT_TRUE(first->isEqual(*archive()));
}

TEST_F(StandardKeyedCoders, AnArchiverMayBeUsedAgain) {
  static const Symbol device{"PMThing"};
  auto thing = make<ArchivedThing>("thing");
  StandardKeyedArchiver archiver;
  archiver.setClassName(device, ArchivedThing::kClass);
  archiver.encodeRootObject(thing.get());
  const auto first = *archiver.finishEncoding();
  archiver.encodeRootObject(thing.get());
  EXPECT_EQ(*archiver.finishEncoding(), first);
  const auto foreign = StandardKeyedUnarchiver::unarchive(first, 0);
  EXPECT_EQ(nameOf(foreign.status().code()), "unsupported");
  EXPECT_EQ(foreign.status().message(), "the class \"PMThing\" is unknown");

  struct Unarchivable final : Object {
    const Class& isa() const noexcept override { return Object::kClass; }
  };
  thing->payload = make<Unarchivable>();
  EXPECT_THROW(archiver.encodeRootObject(thing.get()), std::logic_error);
  thing->payload = nullptr;
  archiver.encodeRootObject(thing.get());
  EXPECT_EQ(*archiver.finishEncoding(), first);
}

TEST_F(StandardKeyedCoders, WhatAFilterRefusesStandsNowhere) {
  auto root = make<ArchivedThing>("root");
  const auto kept = root->addPart("kept");
  const auto refused = root->addPart("refused");
  refused->addPart("below");
  kept->whole = refused;
  root->payload = refused;
  root->table.set("entry", refused);
  root->table.set("other", kept);
  StandardKeyedArchiver archiver;
  archiver.setFilter([&](const Object& object) { return &object != refused.get(); });
  archiver.encodeRootObject(root.get());
  const auto bytes = *archiver.finishEncoding();
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  EXPECT_EQ(text.find("refused"), std::string_view::npos);
  EXPECT_EQ(text.find("below"), std::string_view::npos);
  const auto unarchived = StandardKeyedUnarchiver::unarchive(bytes, 0);
  ASSERT_TRUE(unarchived) << unarchived.status().message();
  const auto read = as<ArchivedThing>(*unarchived);
  ASSERT_EQ(read->parts.size(), 1U);
  EXPECT_EQ(read->parts[0]->name, "kept");
  EXPECT_FALSE(read->parts[0]->whole);
  EXPECT_FALSE(read->payload);
  EXPECT_EQ(read->table.size(), 1U);

  archiver.setFilter(nullptr);
  archiver.encodeRootObject(root.get());
  EXPECT_EQ(*archiver.finishEncoding(),
            (*StandardKeyedArchiver::archivedData(root.get(), 0))->mutableBytes());
}

// The layout is checked, and the values read, by a reader that shares no code with the library.
TEST_F(StandardKeyedCoders, AnIndependentReaderOpensTheArchive) {
  auto root = make<ArchivedThing>("root");
  auto first = root->addPart("first");
  auto second = root->addPart("first");  // an equal string
  first->number = 128;
  first->longNumber = -1;
  first->single = 0.5F;
  first->flag = true;
  first->bytes = {0xAB};
  first->whole = make<ArchivedThing>("gone");
  second->payload = make<Data>(bytesOf("\x01"));
  auto set = make<OrderedSet>();
  set->add(first);
  set->add(String("t\xC3\xA4xt").object());
  root->payload = set;
  root->table.set("one", Number::withInt(1));
  root->table.set("true", Number::withBool(true));
  root->table.set("null text", String("$null").object());

  std::string pattern = (std::filesystem::temp_directory_path() / "tarnkit-XXXXXX").string();
  const std::filesystem::path folder = ::mkdtemp(pattern.data());
  const std::string file = (folder / "archive.plist").string();
  ASSERT_TRUE(File::write(file, StandardKeyedArchiver::archivedData(root.get(), 0)->bytes()));
  const std::string command =
      "python3 -B " TARNKIT_SOURCE_DIR "/tests/process/keyed_archive.py " + file + " 2>&1";
  std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), &::pclose);
  ASSERT_TRUE(pipe);
  std::string output;
  std::array<char, 4096> piece{};
  while (const auto size = std::fread(piece.data(), 1, piece.size(), pipe.get())) {
    output.append(piece.data(), size);
  }
  std::filesystem::remove_all(folder);
  EXPECT_EQ(output,
            "{\"class\": \"Thing\", \"Thing.name\": \"root\", \"Thing.parts\": ["
            "{\"class\": \"Thing\", \"Thing.name\": \"first\", \"Thing.parts\": [], "
            "\"Thing.flag\": true, \"Thing.number\": 128, \"Thing.longNumber\": -1, "
            "\"Thing.single\": 0.5, \"Thing.bytes\": {\"bytes\": \"ab\"}}, "
            "{\"class\": \"Thing\", \"Thing.name\": \"first\", \"Thing.parts\": [], "
            "\"Thing.whole\": {\"again\": 1}, \"Thing.payload\": {\"data\": \"01\"}}], "
            "\"Thing.payload\": {\"ordered\": [{\"again\": 4}, \"t\\u00e4xt\"]}, "
            "\"Thing.table\": {\"one\": 1, \"true\": true, \"null text\": \"$null\"}}\n");
}

// An archive in the XML form: the objects from number 1 on, and the number of the root.
std::string archive(const std::string& objects, int root = 1) {
  return "<plist><dict><key>$archiver</key><string>NSKeyedArchiver</string>"
         "<key>$version</key><integer>100000</integer>"
         "<key>$top</key><dict><key>root</key><dict><key>CF$UID</key><integer>" +
         std::to_string(root) +
         "</integer></dict></dict>"
         "<key>$objects</key><array><string>$null</string>" +
         objects + "</array></dict></plist>";
}
std::string uid(int number) {
  return "<dict><key>CF$UID</key><integer>" + std::to_string(number) + "</integer></dict>";
}
std::string record(int classNumber, const std::string& entries) {
  return "<dict><key>$class</key>" + uid(classNumber) + entries + "</dict>";
}
std::string classRecord(const std::string& name) {
  return "<dict><key>$classname</key><string>" + name + "</string></dict>";
}
std::string entry(const std::string& key, const std::string& value) {
  return "<key>" + key + "</key>" + value;
}
std::string list(const std::string& elements) { return "<array>" + elements + "</array>"; }
// A thing as object 1, its class as object 2, then `more`.
std::string thing(const std::string& entries, const std::string& more = "") {
  return archive(record(2, entries) + classRecord("Thing") + more);
}

Result<Ref<Object>> unarchive(const std::string& file) {
  return StandardKeyedUnarchiver::unarchive(bytesOf(file), 0);
}

TEST_F(StandardKeyedCoders, ReadsWhatOtherArchiversWrite) {
  const auto payload = [&](const std::string& objects) -> Ref<Object> {
    const auto read = unarchive(thing(entry("Thing.payload", uid(3)), objects));
    EXPECT_TRUE(read) << read.status().message() << objects;
    return read ? as<ArchivedThing>(*read)->payload : nullptr;
  };
  const auto string = payload(record(4, entry("NS.string", "<string>text</string>")) +
                              classRecord("NSMutableString"));
  EXPECT_EQ(String::from(string.get()), "text");
  for (const char* name : {"NSData", "NSMutableData"}) {
    const auto data =
        as<Data>(payload(record(4, entry("NS.data", "<data>AQ==</data>")) + classRecord(name)));
    ASSERT_TRUE(data);
    EXPECT_EQ(data->size(), 1U);
  }
  const std::string two = "<string>a</string><string>b</string>";
  for (const char* name : {"NSArray", "NSMutableArray"}) {
    const auto array = as<Array>(
        payload(record(4, entry("NS.objects", list(uid(5) + uid(6)))) + classRecord(name) + two));
    ASSERT_TRUE(array);
    EXPECT_EQ(array->count(), 2U);
  }
  for (const char* name : {"NSOrderedSet", "NSMutableOrderedSet"}) {
    for (const std::string& members :
         {entry("NS.objects", list(uid(5) + uid(6))),
          entry("NS.object.1", uid(6)) + entry("NS.object.0", uid(5))}) {
      const auto set = as<OrderedSet>(payload(record(4, members) + classRecord(name) + two));
      ASSERT_TRUE(set && set->count() == 2);
      EXPECT_EQ(String::from(set->objectAtIndex(0).get()), "a");
    }
  }
  const auto map = as<Dictionary>(
      payload(record(4, entry("NS.keys", list(uid(5))) + entry("NS.objects", list(uid(6)))) +
              classRecord("NSMutableDictionary") + two));
  ASSERT_TRUE(map);
  EXPECT_EQ(String::from(map->objectForKey("a").get()), "b");
  EXPECT_TRUE(as<Set>(
      payload(record(4, entry("NS.objects", list(uid(5)))) + classRecord("NSMutableSet") + two)));
}

TEST_F(StandardKeyedCoders, ToleratesOtherWidths) {
  const auto whole = unarchive(thing(
      entry("Thing.flag", "<integer>2</integer>") + entry("Thing.number", "<real>3</real>") +
          entry("Thing.longNumber", "<true/>") + entry("Thing.single", "<integer>4</integer>") +
          entry("Thing.real", "<integer>18446744073709551615</integer>") +
          entry("Thing.whole", uid(0)) + entry("Thing.payload", uid(3)),
      "<string>$null</string>"));
  ASSERT_TRUE(whole) << whole.status().message();
  const auto read = as<ArchivedThing>(*whole);
  EXPECT_TRUE(read->flag);
  EXPECT_EQ(read->number, 3);
  EXPECT_EQ(read->longNumber, 1);
  EXPECT_EQ(read->single, 4);
  EXPECT_EQ(read->real, 0x1p64);
  EXPECT_FALSE(read->payload);
}

// More than stand in the first of the segments in which archivers keep what they know of each.
TEST_F(StandardKeyedCoders, TellManyObjectsApart) {
  constexpr std::uint32_t kCount = 300000;
  const auto all = make<Array>();
  for (std::uint32_t i = 0; i < kCount; ++i) {
    const auto object = make<Array>();
    object->add(Number::withInt(static_cast<std::int32_t>(i)));
    all->add(object);
    all->add(object);
  }
  const auto read = StandardKeyedUnarchiver::unarchive(
      StandardKeyedArchiver::archivedData(all.get(), 0)->bytes(), 0);
  ASSERT_TRUE(read) << read.status().message();
  const auto again = as<Array>(*read);
  ASSERT_EQ(again->count(), 2 * kCount);
  for (std::uint32_t i = 0; i < kCount; ++i) {
    const Ref<Object>& object = *(again->begin() + 2 * i);
    ASSERT_EQ(object, *(again->begin() + 2 * i + 1));
    const auto number = Number::withInt(static_cast<std::int32_t>(i));
    ASSERT_TRUE((*as<Array>(object)->begin())->isEqual(*number));
  }
}

// An ordered set of objects, each with a class record of its own, which stand from number 3 on.
std::string eachOfItsOwnClass(int count, const std::function<std::string(int)>& className) {
  std::string members;
  std::string records;
  for (int i = 0; i < count; ++i) {
    members += uid(3 + 2 * i);
    records += record(4 + 2 * i, entry("NS.string", "<string>text</string>"));
    records += classRecord(className(i));
  }
  return archive(record(2, entry("NS.objects", list(members))) + classRecord("NSArray") + records);
}

TEST_F(StandardKeyedCoders, CountsTheClassesAndNotTheirRecords) {
  const auto records = unarchive(eachOfItsOwnClass(5000, [](int) { return "NSMutableString"; }));
  ASSERT_TRUE(records) << records.status().message();
  EXPECT_EQ(as<Array>(*records)->count(), 5000U);

  // Class records live for ever.
  static std::deque<std::string> names;
  static std::deque<Class> classes;
  for (int i = 0; i < 4095; ++i) {
    classes.emplace_back(names.emplace_back("Numbered" + std::to_string(i)).c_str(),
                         &Object::kClass, &detail::makeByDefault<ArchivedThing>);
    ClassRegistry::add(classes.back());
  }
  const auto name = [](int i) { return names[static_cast<std::size_t>(i)]; };
  const auto many = unarchive(eachOfItsOwnClass(4094, name));
  EXPECT_TRUE(many) << many.status().message();
  EXPECT_THAT(unarchive(eachOfItsOwnClass(4095, name)).status().message(),
              HasSubstr("too many classes"));
}

TEST_F(StandardKeyedCoders, RefusesWhatDoesNotFit) {
  const std::string text = "<string>text</string>";
  const std::string array = classRecord("NSArray");
  const struct {
    std::string file;
    const char* error;
  } cases[] = {
      {"nothing", "not a readable property list"},
      {"<plist><array/></plist>", "its top is not a map"},
      {"<plist><dict/></plist>", "\"$archiver\""},
      {archive(text, 0), "root is nil"},
      {archive(text, 9), "a reference to object 9"},
      {archive("<dict/>"), "an object has no class"},
      {archive(record(1, "")), "the class of an object has no name"},
      {archive(record(2, "") + text), "the class of an object has no name"},
      {archive(record(2, "") + classRecord("Stranger")), "the class \"Stranger\" is unknown"},
      {archive(record(2, "") + classRecord("NSObject")), "the class \"NSObject\" is unknown"},
      {archive(uid(0)), "a reference stands among the objects"},
      {archive("<array/>"), "a list stands among the objects"},
      {archive("<date>2001-01-01T00:00:00Z</date>"), "a date stands among the objects"},
      {archive(record(2, "") + classRecord("NSMutableString")), "a string without its text"},
      {archive(record(2, "") + array), "a collection without the list"},
      {archive(record(2, entry("NS.objects", list(text))) + array), "a string stands in"},
      {archive(record(2, entry("NS.objects", list(uid(0)))) + array), "a collection holds nil"},
      {archive(record(2, entry("NS.objects", list(uid(1)))) + array), "holds itself"},
      {archive(record(2, entry("NS.objects", list(uid(3)))) + array +
               record(4, entry("NS.keys", list(uid(5))) + entry("NS.objects", list(uid(1)))) +
               classRecord("NSDictionary") + text),
       "holds itself"},
      {archive(record(2, entry("NS.keys", list(uid(3))) + entry("NS.objects", list(""))) +
               classRecord("NSDictionary") + text),
       "as many keys as values"},
      {archive(record(2, entry("NS.keys", list(uid(2))) + entry("NS.objects", list(uid(3)))) +
               classRecord("NSDictionary") + text),
       "an object has no class"},
      {archive(record(2, entry("NS.keys", list(uid(3))) + entry("NS.objects", list(uid(3)))) +
               classRecord("NSDictionary") + "<true/>"),
       "a key of a map is not a string"},
      {archive(record(2, entry("NS.object.1", uid(3))) + classRecord("NSOrderedSet") + text),
       "not numbered in a row"},
      {thing(entry("Thing.name", text)), "Thing.name: a string where a reference"},
      {thing(entry("Thing.name", uid(3)), "<true/>"),
       "Thing.name: a NSNumber where a NSString is expected"},
      {thing(entry("Thing.name", uid(3)), "<data>AAAA</data>"),
       "Thing.name: a NSData where a NSString is expected"},
      {thing(entry("Thing.parts", uid(3)), text), "Thing.parts: a string where a list"},
      {thing(entry("Thing.parts", uid(1))), "Thing.parts: a Thing where a list"},
      {thing(entry("Thing.parts", uid(3)),
             record(4, entry("NS.objects", list(uid(5)))) + array + text),
       "Thing.parts: a NSString where a Thing is expected"},
      {thing(entry("Thing.table", uid(3)), record(4, entry("NS.objects", list(""))) + array),
       "Thing.table: a NSArray where a map"},
      {thing(entry("Thing.flag", text)), "Thing.flag: a string where a number"},
      {thing(entry("Thing.single", uid(1))), "Thing.single: a reference where a number"},
      {thing(entry("Thing.number", "<integer>2147483648</integer>")), "integer of 32 bits"},
      {thing(entry("Thing.number", "<real>1.5</real>")), "integer of 32 bits"},
      {thing(entry("Thing.longNumber", "<integer>9223372036854775808</integer>")),
       "integer of 64 bits"},
      {thing(entry("Thing.bytes", text)), "Thing.bytes: a string where data"},
  };
  for (const auto& item : cases) {
    EXPECT_FALSE(unarchive(item.file)) << item.file;
    // Names that stay for the process's life are made by now.
    const auto before = Object::liveObjectCount();
    EXPECT_THAT(unarchive(item.file).status().message(), HasSubstr(item.error)) << item.file;
    EXPECT_EQ(Object::liveObjectCount(), before) << item.file;
  }
}

// Things that own each other in a circle, in an archive that turns out to be unreadable.
TEST_F(StandardKeyedCoders, LeavesNothingBehindOfACircle) {
  const auto circle =
      thing(entry("Thing.payload", uid(3)),
            record(2, entry("Thing.payload", uid(1)) + entry("Thing.number", "<string/>")));
  EXPECT_FALSE(unarchive(circle));  // names that stay for the process's life are made by now
  const auto before = Object::liveObjectCount();
  EXPECT_FALSE(unarchive(circle));
  EXPECT_EQ(Object::liveObjectCount(), before);
}

TEST_F(StandardKeyedCoders, BoundsWhatSharedContentsCost) {
  constexpr int kThings = 2000;
  constexpr int kElements = 2000;
  std::string objects = record(2, entry("NS.objects", "@")) + classRecord("NSArray") +
                        classRecord("Thing") + record(2, entry("NS.objects", "#")) +
                        "<string>text</string>";
  std::string things;
  std::string elements;
  for (int i = 0; i < kThings; ++i) {
    things += uid(6 + i);
    objects += record(3, entry("Thing.parts", uid(4)));
  }
  for (int i = 0; i < kElements; ++i) elements += uid(6 + i);
  objects.replace(objects.find('@'), 1, list(things));
  objects.replace(objects.find('#'), 1, list(elements));
  const auto status = unarchive(archive(objects)).status();
  EXPECT_EQ(nameOf(status.code()), "tooLarge");
  EXPECT_EQ(status.message(), "the same contents are shared by too many objects");
}

// Records of many keys that many others refer to: as the parts of each thing, and as the members of
// one list. Searched anew for every reference they would cost the product of both numbers.
TEST_F(StandardKeyedCoders, SearchesAWideRecordOnce) {
  constexpr int kKeys = 60000;
  constexpr int kReferences = 60000;
  std::string wide;
  std::string members;
  for (int i = 0; i < kKeys; ++i) wide += entry("k" + std::to_string(i), "<true/>");
  for (int i = 0; i < kReferences; ++i) members += uid(4);
  const auto wideOf = [&](const std::string& last) {
    auto made = record(5, "@");
    const auto classEntry = entry("$class", uid(5));
    made.erase(made.find(classEntry), classEntry.size());
    return made.replace(made.find('@'), 1, wide + last + classEntry);
  };
  const auto read = [&](const std::string& objects, std::string& error) {
    const auto start = test::ProcessorTime::now();
    error = unarchive(objects).status().message();
    return test::ProcessorTime::now() - start;
  };
  std::string error;
  const auto inOneList = thing(entry("Thing.payload", uid(3)),
                               record(6, entry("NS.objects", list(members))) +
                                   wideOf(entry("NS.string", "<string>text</string>")) +
                                   classRecord("NSString") + classRecord("NSArray"));
  EXPECT_LT(read(inOneList, error), std::chrono::seconds(15));
  EXPECT_EQ(error, "");

  std::string things;
  std::string parts;
  for (int i = 0; i < kReferences; ++i) {
    parts += uid(7 + i);
    things += record(2, entry("Thing.parts", uid(4)));
  }
  const auto ofManyThings =
      thing(entry("Thing.parts", uid(3)),
            record(6, entry("NS.objects", list(parts))) + wideOf(entry("NS.objects", list(""))) +
                classRecord("NSArray") + classRecord("NSArray") + things);
  EXPECT_LT(read(ofManyThings, error), std::chrono::seconds(15));
  EXPECT_EQ(error, "the same contents are shared by too many objects");
}

TEST_F(StandardKeyedCoders, StartsAgainAfterAnObjectThatThrows) {
  struct Throwing final : Object {
    const Class& isa() const noexcept override { return ArchivedThing::kClass; }
    void encodeWithCoder(Encoder& coder) const override {
      static const Symbol own{"own"};
      coder.encodeInt(1, own);
      throw std::logic_error("not to be written");
    }
  };
  static const Symbol key{"objects"};
  const std::vector<Ref<Throwing>> list{make<Throwing>()};
  OrderedMap<Ref<Throwing>> map;
  map.set("a", list[0]);
  const auto thing = make<ArchivedThing>("thing");
  const auto expected = StandardKeyedArchiver::archivedData(thing.get(), 0);
  StandardKeyedArchiver archiver;
  const std::function<void()> steps[] = {[&] { archiver.encodeObject(list[0], key); },
                                         [&] { archiver.encodeList(list, key); },
                                         [&] { archiver.encodeMap(map, key); }};
  for (const auto& step : steps) {
    EXPECT_THROW(step(), std::logic_error);
    archiver.encodeRootObject(thing.get());
    EXPECT_EQ(make<Data>(*archiver.finishEncoding())->bytes().size(), expected->size());
  }
}

// An object that keeps a part of itself under another coding type than its own.
class TypedThing final : public Object {
  TARNKIT_CLASS
 public:
  void encodeWithCoder(Encoder& coder) const override {
    coder.encodeInt(coder.codingType(), kType);
    coder.encodeObject(first, kFirst);
    coder.setCodingType(coder.codingType() + 1);
    coder.encodeObject(second, kSecond);
  }
  void initWithCoder(Decoder& coder) override {
    written = coder.decodeInt(kType);
    read = coder.codingType();
    first = coder.decode<TypedThing>(kFirst);
    coder.setCodingType(coder.codingType() + 1);
    second = coder.decode<TypedThing>(kSecond);
  }
  void awakeAfterDecoding(Decoder& coder) override { awoken = coder.codingType(); }

  static const Symbol kType, kFirst, kSecond;
  Ref<TypedThing> first, second;
  std::int32_t written = -1, read = -1, awoken = -1;
};
const Class TypedThing::kClass{"TypedThing", &Object::kClass, &detail::makeByDefault<TypedThing>};
const Symbol TypedThing::kType{"type"}, TypedThing::kFirst{"first"}, TypedThing::kSecond{"second"};

TEST_F(StandardKeyedCoders, HandsObjectsTheCodingTypeOfTheirPlace) {
  ClassRegistry::add(TypedThing::kClass);
  const auto root = make<TypedThing>();
  root->first = make<TypedThing>();
  root->second = make<TypedThing>();
  root->first->second = make<TypedThing>();
  root->second->first = make<TypedThing>();
  const auto data = StandardKeyedArchiver::archivedData(root.get(), 5);
  const auto opened = as<TypedThing>(*StandardKeyedUnarchiver::unarchive(data->bytes(), 5));
  ASSERT_TRUE(opened);
  const struct {
    const TypedThing& thing;
    std::int32_t type;
  } cases[] = {{*opened, 5},
               {*opened->first, 5},
               {*opened->second, 6},
               {*opened->first->second, 6},
               {*opened->second->first, 6}};
  for (const auto& item : cases) {
    EXPECT_EQ(item.thing.written, item.type);
    EXPECT_EQ(item.thing.read, item.type);
    EXPECT_EQ(item.thing.awoken, item.type);
  }
}

TEST_F(StandardKeyedCoders, EscapesKeysThatBeginLikeTheArchivesOwn) {
  struct Escaped final : Object {
    const Class& isa() const noexcept override { return ArchivedThing::kClass; }
    void encodeWithCoder(Encoder& coder) const override {
      static const Symbol own{"$class"};
      coder.encodeInt(1, own);
      coder.encodeInt(2, own);  // replaces the first
    }
  };
  const auto data = StandardKeyedArchiver::archivedData(make<Escaped>().get(), 0);
  const auto whole = PropertyListReader::read(data->bytes());
  ASSERT_TRUE(whole);
  const PropertyList& read = *whole;
  const auto objects = read.elements(read.valueForKey(read.root(), "$objects"));
  const auto escaped = read.valueForKey(objects[1], "$$class");
  ASSERT_NE(escaped, PropertyList::kNone);
  EXPECT_EQ(read.integer(escaped), 2);
  EXPECT_EQ(read.count(objects[1]), 2U);
}

}  // namespace
}  // namespace tarnkit
