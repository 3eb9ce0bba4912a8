#include "tarnkit/platform/coding/KeyedArchiveRecords.h"

#include <fmt/format.h>

#include <charconv>
#include <limits>
#include <unordered_map>

#include "tarnkit/platform/coding/KeyedArchiveNames.h"
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"
#include "tarnkit/platform/collections/Array.h"
#include "tarnkit/platform/collections/Dictionary.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/objects/Color.h"
#include "tarnkit/platform/objects/Null.h"

namespace tarnkit::detail {

namespace {

using Kind = PropertyList::Kind;
using Index = PropertyList::Index;

constexpr Index kNone = PropertyList::kNone;

std::string shown(std::string_view text) { return std::string(text.substr(0, 200)); }

}  // namespace

void KeyedArchiveRecords::fail(Status failure) {
  if (!failed()) failure_ = std::move(failure);
}

bool KeyedArchiveRecords::open() {
  const auto refuse = [&](const char* reason) {
    fail(Status::failure(StatusCode::unsupported, reason).within("not a keyed archive"));
    return false;
  };
  const Index frame = list_.root();
  if (list_.kind(frame) != Kind::map) return refuse("its top is not a map");
  const auto of = [&](const Symbol& key, Kind kind) {
    return list_.valueOfKind(frame, key.text(), kind);
  };
  const Index archiver = of(archive::kArchiver, Kind::string);
  if (archiver == kNone || list_.string(archiver) != archive::kArchiverName) {
    return refuse("\"$archiver\" is not \"NSKeyedArchiver\"");
  }
  const Index version = of(archive::kVersion, Kind::integer);
  if (version == kNone || list_.integer(version) != archive::kFormatVersion) {
    return refuse("\"$version\" is not 100000");
  }
  const Index objects = of(archive::kObjects, Kind::array);
  if (objects == kNone) return refuse("\"$objects\" is not a list");
  archived_ = list_.elements(objects);
  if (archived_.empty() || list_.kind(archived_[0]) != Kind::string ||
      list_.string(archived_[0]) != archive::kNull) {
    return refuse("its first object is not \"$null\"");
  }
  const Index top = of(archive::kTop, Kind::map);
  if (top == kNone) return refuse("\"$top\" is not a map");
  rootReference_ = list_.valueOfKind(top, archive::kTopObject.text(), Kind::uid);
  if (rootReference_ == kNone) return refuse("\"$top\" refers to no \"root\"");
  classKey_ = list_.keyNamed(archive::kClass.text());
  classNameKey_ = list_.keyNamed(archive::kClassName.text());
  membersKey_ = list_.keyNamed(archive::kMembers.text());
  keysKey_ = list_.keyNamed(archive::kKeys.text());
  objects_.resize(list_.count());
  marks_.resize(list_.count());
  return true;
}

Ref<Object> KeyedArchiveRecords::root() {
  Ref<Object> root = referredObject(rootReference_);
  if (!root) fail("the archive's root is nil");
  return root;
}

void KeyedArchiveRecords::eachMade(FunctionRef<void(Object&)> visit) const {
  for (std::size_t i = 0; i < made_.size(); ++i) visit(*objects_[made_[i]]);
}

// Wide records, wide classes and long names may be shared by many objects, so each is looked at
// once.
std::string KeyedArchiveRecords::unreadObjects() const {
  struct UnreadClass {
    std::string_view name;
    std::size_t count = 0;
  };
  std::vector<bool> counted(list_.count());
  std::vector<UnreadClass> classes;
  std::unordered_map<Index, std::size_t> numbers;  // of the classes, by their records
  for (const Index record : archived_) {
    const bool isRead = objects_[record] || (knownClass(record) && !isClass(record));
    if (isRead || counted[record] || list_.kind(record) != Kind::map) continue;
    counted[record] = true;
    const Index reference = list_.valueOfKind(record, classKey_, Kind::uid);
    if (reference == kNone) continue;
    const std::uint64_t uid = list_.uid(reference);
    if (uid >= archived_.size()) continue;
    const Index classRecord = archived_[static_cast<std::size_t>(uid)];
    const auto [known, isNew] = numbers.emplace(classRecord, classes.size());
    if (isNew) classes.push_back({nameOfClass(classRecord)});
    ++classes[known->second].count;
  }
  constexpr std::size_t kNamed = 4;
  std::size_t all = 0;
  std::size_t named = 0;
  std::string names;
  for (const UnreadClass& unread : classes) {
    if (unread.name.empty() || platformForm(unread.name) != Form::none) continue;
    all += unread.count;
    if (named++ >= kNamed) continue;
    names += fmt::format("{}{} {}", named == 1 ? "" : ", ", unread.count, shown(unread.name));
  }
  if (all == 0) return {};
  return fmt::format("Leaving out objects that nothing in the archive asks for, {} in all ({}{})",
                     all, names, named > kNamed ? ", …" : "");
}

std::string_view KeyedArchiveRecords::nameOfClass(Index classRecord) const noexcept {
  if (list_.kind(classRecord) != Kind::map) return {};
  const Index name = list_.valueOfKind(classRecord, classNameKey_, Kind::string);
  return name == kNone ? std::string_view() : list_.string(name);
}

void KeyedArchiveRecords::abandon() {
  eachMade([](Object& object) { object.abandonDecoding(); });
  objects_.clear();
  made_.clear();
}

bool KeyedArchiveRecords::realValue(Index value, double& real) const noexcept {
  switch (list_.kind(value)) {
    case Kind::boolean:
    case Kind::integer:
      real = static_cast<double>(list_.integer(value));
      return true;
    case Kind::unsignedInteger:
      real = static_cast<double>(static_cast<std::uint64_t>(list_.integer(value)));
      return true;
    case Kind::wideInteger:
    case Kind::real32:
    case Kind::real64:
      real = list_.real(value);
      return true;
    default:
      return false;
  }
}

// UID 0, and a slot that nothing filled, are nil.
Index KeyedArchiveRecords::referredValue(Index reference) {
  const std::uint64_t uid = list_.uid(reference);
  if (uid >= archived_.size()) {
    fail(fmt::format("a reference to object {} of an archive of {}", uid, archived_.size()));
    return kNone;
  }
  const Index value = archived_[static_cast<std::size_t>(uid)];
  if (uid == 0) return kNone;
  return list_.kind(value) == Kind::string && list_.string(value) == archive::kNull ? kNone : value;
}

Ref<Object> KeyedArchiveRecords::referredObject(Index reference) {
  const Index value = referredValue(reference);
  return value == kNone ? nullptr : objectOf(value);
}

Ref<Object> KeyedArchiveRecords::objectOf(Index value) {
  Ref<Object>& object = objects_[value];
  if (!object) {
    object = makeObject(value);
    if (!object) return nullptr;
  }
  if (!isInitialised(value)) referred_.push_back(value);
  return object;
}

Ref<Object> KeyedArchiveRecords::makeObject(Index value) {
  const Kind kind = list_.kind(value);
  if (kind == Kind::map) return makeFromRecord(value);
  setInitialised(value);
  if (kind == Kind::string) return StringObject::make(list_.string(value));
  if (kind == Kind::data) return make<Data>(list_.data(value));
  if (Ref<Object> number = makeNumber(value)) return number;
  fail(fmt::format("{} stands among the objects", PropertyList::nameOf(kind)));
  return nullptr;
}

Ref<Object> KeyedArchiveRecords::makeNumber(Index value) {
  double real = 0;
  if (!realValue(value, real)) return nullptr;
  switch (list_.kind(value)) {
    case Kind::boolean:
      return Number::withBool(list_.boolean(value));
    case Kind::integer: {
      const std::int64_t integer = list_.integer(value);
      using Limits = std::numeric_limits<std::int32_t>;
      if (integer < Limits::min() || integer > Limits::max()) return Number::withInt64(integer);
      return Number::withInt(static_cast<std::int32_t>(integer));
    }
    case Kind::real32:
      return Number::withFloat(static_cast<float>(real));
    default:
      return Number::withDouble(real);
  }
}

// Looked up once a record: a record may have many keys and be referred to many times.
const KeyedArchiveRecords::ClassRecord* KeyedArchiveRecords::classOf(Index record) {
  const ClassRecord* const known = isClass(record) ? nullptr : knownClass(record);
  if (known) return known;
  const ClassRecord* const found = findClass(record);
  if (!found) return nullptr;
  if (isClass(record)) return refuseClassAsObject();
  setClassNumber(record, static_cast<std::size_t>(found - classes_.data()) + 1);
  return found;
}

const KeyedArchiveRecords::ClassRecord* KeyedArchiveRecords::refuseClassAsObject() {
  fail("an object is a class as well");
  return nullptr;
}

const KeyedArchiveRecords::ClassRecord* KeyedArchiveRecords::findClass(Index record) {
  const Index reference = list_.valueOfKind(record, classKey_, Kind::uid);
  const Index value = reference == kNone ? kNone : referredValue(reference);
  if (value == kNone) {
    fail("an object has no class");
    return nullptr;
  }
  const ClassRecord* const known = knownClass(value);
  if (!known) return readClass(value);
  return isClass(value) ? known : refuseClassAsObject();
}

KeyedArchiveRecords::Form KeyedArchiveRecords::platformForm(std::string_view className) noexcept {
  for (const auto& [name, form] : kPlatformClasses) {
    if (name == className) return form;
  }
  return Form::none;
}

void KeyedArchiveRecords::reserveClassNames() {
  for (const auto& [name, form] : kPlatformClasses) ClassRegistry::reserve(name);
  for (const Class* const record : {&Object::kClass, &Number::kClass, &Color::kClass}) {
    ClassRegistry::reserve(record->name());
  }
}

const KeyedArchiveRecords::ClassRecord* KeyedArchiveRecords::readClass(Index value) {
  const bool isRecord = list_.kind(value) == Kind::map;
  const Index name = isRecord ? list_.valueOfKind(value, classNameKey_, Kind::string) : kNone;
  if (name == kNone) {
    fail("the class of an object has no name");
    return nullptr;
  }
  const std::string_view text = list_.string(name);
  // An archive may have many records of one class.
  const auto known = classNumbers_.find(std::string(text));
  if (known != classNumbers_.end()) return numberClass(value, known->second);
  if (classes_.size() == kMaximumClasses) {
    fail(Status::failure(StatusCode::tooLarge, "the archive has objects of too many classes"));
    return nullptr;
  }
  ClassRecord found{Form::none, nullptr, shown(text)};
  found.form = platformForm(text);
  if (found.form == Form::none) {
    found.made = ClassRegistry::classNamed(text);
    if (!found.made || !found.made->canBeMade()) {
      fail(Status::failure(StatusCode::unsupported,
                           fmt::format("the class \"{}\" is unknown", found.name)));
      return nullptr;
    }
    found.form = Form::registered;
  }
  classes_.push_back(std::move(found));
  classNumbers_.emplace(text, classes_.size());
  return numberClass(value, classes_.size());
}

const KeyedArchiveRecords::ClassRecord* KeyedArchiveRecords::numberClass(Index value,
                                                                         std::size_t number) {
  marks_[value] |= kIsClass;
  setClassNumber(value, number);
  return &classes_[number - 1];
}

Ref<Object> KeyedArchiveRecords::makeFromRecord(Index record) {
  const ClassRecord* const known = classOf(record);
  if (!known) return nullptr;
  Ref<Object> object;
  switch (known->form) {
    case Form::string:
      return makeString(record);
    case Form::data:
      return makeData(record);
    case Form::null:
      setInitialised(record);
      return Null::null();
    case Form::list:
      object = make<Array>();
      break;
    case Form::set:
      object = make<Set>();
      break;
    case Form::orderedSet:
      object = make<OrderedSet>();
      break;
    case Form::map:
      object = make<Dictionary>();
      break;
    default:
      object = known->made->make();
  }
  if (!object) {
    fail(Status::failure(StatusCode::unsupported,
                         fmt::format("no object of the class \"{}\" can be made", known->name)));
    return nullptr;
  }
  made_.append(record);
  return object;
}

// The texts of mutable strings are shared with other strings of the same place in the file, so that
// many records of one long text cost no more than the file.
Ref<Object> KeyedArchiveRecords::makeString(Index record) {
  setInitialised(record);
  const Index text = list_.valueOfKind(record, archive::kText.text(), Kind::string);
  if (text != kNone) return stringOf(text);
  fail("a string without its text");
  return nullptr;
}

Ref<Object> KeyedArchiveRecords::stringOf(Index text) {
  Ref<Object>& object = objects_[text];
  if (!object) {
    object = StringObject::make(list_.string(text));
    setInitialised(text);
  }
  return object;
}

Ref<Object> KeyedArchiveRecords::makeData(Index record) {
  setInitialised(record);
  Index bytes = list_.valueForKey(record, archive::kBytes.text());
  if (bytes != kNone && list_.kind(bytes) == Kind::uid) bytes = referredValue(bytes);
  if (bytes == kNone || list_.kind(bytes) != Kind::data) {
    fail("data without its bytes");
    return nullptr;
  }
  if (!spendBytes(list_.data(bytes).size())) return nullptr;
  return make<Data>(list_.data(bytes));
}

bool KeyedArchiveRecords::spend(std::uint64_t elements) {
  visits_ += elements;
  return visits_ <= StandardKeyedUnarchiver::kSharingFactor * list_.referenceCount() +
                        StandardKeyedUnarchiver::kSharingAllowance ||
         refuseSharing();
}

bool KeyedArchiveRecords::spendBytes(std::uint64_t bytes) {
  bytes_ += bytes;
  return bytes_ <= StandardKeyedUnarchiver::kSharingFactor * list_.fileSize() +
                       StandardKeyedUnarchiver::kSharingAllowance ||
         refuseSharing();
}

bool KeyedArchiveRecords::refuseSharing() {
  fail(Status::failure(StatusCode::tooLarge, "the same contents are shared by too many objects"));
  return false;
}

bool KeyedArchiveRecords::visitElement(Index element, FunctionRef<void(const Ref<Object>&)> visit) {
  if (list_.kind(element) != Kind::uid) {
    fail(fmt::format("{} stands in a collection where a reference to an object is expected",
                     PropertyList::nameOf(list_.kind(element))));
    return false;
  }
  const Ref<Object> object = referredObject(element);
  if (!object) {
    fail("a collection holds nil");
    return false;
  }
  visit(object);
  return !failed();
}

bool KeyedArchiveRecords::visitElements(Index record, Form form,
                                        FunctionRef<void(const Ref<Object>&)> visit) {
  if (!spend(list_.count(record))) return false;  // for the search of the key
  const Index elements = list_.valueForKey(record, membersKey_);
  if (elements == kNone && form == Form::orderedSet) return visitNumberedElements(record, visit);
  if (elements == kNone || list_.kind(elements) != Kind::array) {
    fail("a collection without the list of its elements");
    return false;
  }
  if (!spend(list_.count(elements))) return false;
  for (const Index element : list_.elements(elements)) {
    if (!visitElement(element, visit)) return false;
  }
  return true;
}

// "NS.object.0", "NS.object.1", … in any order, without a gap.
bool KeyedArchiveRecords::visitNumberedElements(Index record,
                                                FunctionRef<void(const Ref<Object>&)> visit) {
  const auto keys = list_.keys(record);
  std::vector<Index> members(keys.size(), kNone);
  std::size_t count = 0;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    std::string_view key = list_.string(keys[i]);
    if (key.substr(0, archive::kNumberedMember.size()) != archive::kNumberedMember) continue;
    key.remove_prefix(archive::kNumberedMember.size());
    std::size_t number = 0;
    const auto read = std::from_chars(key.data(), key.data() + key.size(), number);
    if (read.ec != std::errc() || read.ptr != key.data() + key.size() || number >= members.size() ||
        members[number] != kNone) {
      fail("the members of an ordered set are not numbered in a row");
      return false;
    }
    members[number] = list_.values(record)[i];
    ++count;
  }
  for (std::size_t i = 0; i < count; ++i) {
    if (members[i] == kNone) {
      fail("the members of an ordered set are not numbered in a row");
      return false;
    }
    if (!visitElement(members[i], visit)) return false;
  }
  return true;
}

bool KeyedArchiveRecords::visitEntries(Index record,
                                       FunctionRef<void(const String&, const Ref<Object>&)> visit) {
  if (!spend(2 * std::uint64_t{list_.count(record)})) return false;  // for the search of the keys
  const Index names = list_.valueOfKind(record, keysKey_, Kind::array);
  const Index values = list_.valueOfKind(record, membersKey_, Kind::array);
  if (names == kNone || values == kNone || list_.count(names) != list_.count(values)) {
    fail("a map without as many keys as values");
    return false;
  }
  if (!spend(list_.count(names))) return false;
  const auto keys = list_.elements(names);
  for (std::size_t i = 0; i < keys.size(); ++i) {
    String key;
    if (list_.kind(keys[i]) == Kind::uid) key = String::from(referredObject(keys[i]).get());
    if (key.isNil()) {
      fail("a key of a map is not a string");
      return false;
    }
    const bool goesOn = visitElement(list_.elements(values)[i],
                                     [&](const Ref<Object>& value) { visit(key, value); });
    if (!goesOn) return false;
  }
  return true;
}

bool KeyedArchiveRecords::visitCollection(Index reference, std::string_view key,
                                          FunctionRef<void(const Ref<Object>&)> visit) {
  const Index value = referredValue(reference);
  if (value == kNone) return false;
  if (list_.kind(value) == Kind::map) {
    const ClassRecord* const known = classOf(value);
    if (!known) return false;
    const Form form = known->form;
    if (form == Form::list || form == Form::set || form == Form::orderedSet) {
      return visitElements(value, form, visit);
    }
    fail(fmt::format("{}: a {} where a list is expected", key, known->name));
    return false;
  }
  fail(
      fmt::format("{}: {} where a list is expected", key, PropertyList::nameOf(list_.kind(value))));
  return false;
}

bool KeyedArchiveRecords::visitMap(Index reference, std::string_view key,
                                   FunctionRef<void(const String&, const Ref<Object>&)> visit) {
  const Index value = referredValue(reference);
  if (value == kNone) return false;
  if (list_.kind(value) == Kind::map) {
    const ClassRecord* const known = classOf(value);
    if (!known) return false;
    if (known->form == Form::map) return visitEntries(value, visit);
    fail(fmt::format("{}: a {} where a map is expected", key, known->name));
    return false;
  }
  fail(fmt::format("{}: {} where a map is expected", key, PropertyList::nameOf(list_.kind(value))));
  return false;
}

// Searched before it is filled: a list that held itself could not be taken down.
bool KeyedArchiveRecords::fillContainer(Index value) {
  Object& object = *objects_[value];
  const CodingKind kind = object.codingKind();
  if (kind < CodingKind::list) return false;
  refuseCycles(value);
  if (failed()) return true;
  switch (kind) {
    case CodingKind::list:
      visitElements(value, Form::list,
                    [&](const Ref<Object>& element) { static_cast<Array&>(object).add(element); });
      break;
    case CodingKind::set:
      visitElements(value, Form::set,
                    [&](const Ref<Object>& element) { static_cast<Set&>(object).add(element); });
      break;
    case CodingKind::orderedSet:
      visitElements(value, Form::orderedSet, [&](const Ref<Object>& element) {
        static_cast<OrderedSet&>(object).add(element);
      });
      break;
    default:
      visitEntries(value, [&](const String& key, const Ref<Object>& element) {
        static_cast<Dictionary&>(object).setObject(element, key);
      });
  }
  return true;
}

bool KeyedArchiveRecords::isContainer(Index value) {
  if (list_.kind(value) != Kind::map) return false;
  const ClassRecord* const known = classOf(value);
  return known && known->form >= Form::list && known->form <= Form::map;
}

// The containers that stand directly in a container.
std::vector<Index> KeyedArchiveRecords::containersIn(Index record) {
  std::vector<Index> found;
  const auto look = [&](Index reference) {
    if (list_.kind(reference) != Kind::uid) return;
    const Index value = referredValue(reference);
    if (value != kNone && isContainer(value)) found.push_back(value);
  };
  const auto keys = list_.keys(record);
  for (std::size_t i = 0; i < keys.size() && !failed(); ++i) {
    const Index value = list_.values(record)[i];
    if (list_.keyOf(keys[i]) == classKey_) continue;
    if (list_.kind(value) != Kind::array) {
      look(value);
      continue;
    }
    if (!spend(list_.count(value))) break;
    for (const Index element : list_.elements(value)) look(element);
  }
  return found;
}

// A search from the container through the containers below it. What was searched once is not
// searched again for another one.
void KeyedArchiveRecords::refuseCycles(Index container) {
  struct Step {
    Index record;
    std::vector<Index> below;
  };
  std::vector<Step> path;
  const auto enter = [&](Index record) {
    marks_[record] |= kOnPath | kSearched;
    path.push_back({record, containersIn(record)});
  };
  if ((marks_[container] & kSearched) != 0) return;
  enter(container);
  while (!path.empty() && !failed()) {
    Step& step = path.back();
    if (step.below.empty()) {
      marks_[step.record] &= static_cast<Marks>(~kOnPath);
      path.pop_back();
      continue;
    }
    const Index next = step.below.back();
    step.below.pop_back();
    if ((marks_[next] & kOnPath) != 0) {
      fail("a list or map holds itself");
    } else if ((marks_[next] & kSearched) == 0) {
      enter(next);
    }
  }
}

}  // namespace tarnkit::detail
