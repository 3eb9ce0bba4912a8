#include "tarnkit/archive/HXArchiveWalk.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>

#include "tarnkit/archive/HXKeyedArchiver.h"
#include "tarnkit/archive/HXVersion.h"
#include "tarnkit/platform/collections/Array.h"
#include "tarnkit/platform/collections/Dictionary.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/objects/Null.h"

namespace tarnkit::detail {

namespace {

const Symbol kClassKey{"$class"};
const Symbol kReferenceKey{"$reference"};
const Symbol kObjectsKey{"$objects"};
const Symbol kRootKey{"$root"};
const Symbol kMembersKey{"NS.objects"};

/// Gives the coder back the coding type that it had, whatever the objects set.
class CodingTypeKeeper {
 public:
  explicit CodingTypeKeeper(Encoder& coder) noexcept
      : coder_(coder), codingType_(coder.codingType()) {}
  CodingTypeKeeper(const CodingTypeKeeper&) = delete;
  CodingTypeKeeper& operator=(const CodingTypeKeeper&) = delete;
  ~CodingTypeKeeper() { coder_.setCodingType(codingType_); }

 private:
  Encoder& coder_;
  std::int32_t codingType_;
};

bool standsInline(CodingKind kind) noexcept {
  return kind == CodingKind::string || kind == CodingKind::number;
}

}  // namespace

HXArchiveWalk::SymbolEntry& HXArchiveWalk::symbol(const Symbol& key) {
  const auto number = key.number();
  if (number >= symbols_.size()) {
    symbols_.resize(std::max<std::size_t>(Symbol::count(), number + std::size_t{1}));
  }
  SymbolEntry& entry = symbols_[number];
  if (entry.key == kNone) entry.key = writer_.addSymbol(key);
  return entry;
}

// --- Recording
// ------------------------------------------------------------------------------------

void HXArchiveWalk::put(const Symbol& key, Index value) {
  if (!isEncoding()) {
    putTop(key, value);
    return;
  }
  Entry entry;
  entry.value = value;
  record(key, std::move(entry));
}

void HXArchiveWalk::putObject(const Symbol& key, const Object& object, bool isUnconditional,
                              Encoder& coder) {
  if (standsInline(object.codingKind())) {
    put(key, inlineValue(object));
    return;
  }
  recordCodingType(coder);
  Entry entry;
  entry.object = Ref<const Object>(&object);
  entry.kind = isUnconditional ? Entry::Kind::object : Entry::Kind::conditional;
  record(key, std::move(entry));
  if (!isEncoding()) encodeForTop(key, coder);
}

void HXArchiveWalk::putCollection(const Symbol& key, CodingKind kind, std::size_t count,
                                  FunctionRef<const Object*(std::size_t)> at, Encoder& coder) {
  recordCodingType(coder);
  const std::size_t position = entries_.size();
  Entry entry;
  entry.kind = Entry::Kind::collection;
  entry.form = kind == CodingKind::set          ? Form::set
               : kind == CodingKind::orderedSet ? Form::orderedSet
                                                : Form::list;
  record(key, std::move(entry));
  for (std::size_t i = 0; i < count; ++i) {
    if (const Object* const element = at(i)) appendElement(*element, kNone);
  }
  entries_[position].count = static_cast<std::uint32_t>(entries_.size() - position - 1);
  if (!isEncoding()) encodeForTop(key, coder);
}

bool HXArchiveWalk::putMap(const Symbol& key, std::size_t count,
                           FunctionRef<Encoder::MapEntry(std::size_t)> at, Encoder& coder) {
  sorted_.clear();
  for (std::size_t i = 0; i < count; ++i) {
    const Encoder::MapEntry entry = at(i);
    if (entry.key.isNil()) return false;
    if (entry.value) sorted_.emplace_back(entry.key, entry.value);
  }
  recordCodingType(coder);
  const std::size_t position = entries_.size();
  Entry entry;
  entry.kind = Entry::Kind::collection;
  entry.form = Form::map;
  record(key, std::move(entry));
  appendSorted();
  entries_[position].count = static_cast<std::uint32_t>(entries_.size() - position - 1);
  if (!isEncoding()) encodeForTop(key, coder);
  return true;
}

void HXArchiveWalk::record(const Symbol& key, Entry entry) {
  SymbolEntry& known = symbol(key);
  entry.key = known.key;
  if (isEncoding()) {
    const std::uint32_t serial = frames_.back().serial;
    if (known.serial == serial && known.position == kNone) {
      entry.isReplaced = true;
    } else {
      if (known.serial == serial) entries_[known.position].isReplaced = true;
      known.serial = serial;
      known.position = static_cast<std::uint32_t>(entries_.size());
    }
  }
  entries_.push_back(std::move(entry));
}

// The objects are walked only when the one that refers to them has returned, so what it set for
// them is noted among its values.
void HXArchiveWalk::recordCodingType(const Encoder& coder) {
  if (!isEncoding() || coder.codingType() == recordedType_) return;
  recordedType_ = coder.codingType();
  Entry entry;
  entry.kind = Entry::Kind::codingType;
  entry.isReplaced = true;
  entry.value = static_cast<Index>(recordedType_);
  entries_.push_back(std::move(entry));
}

// The top container holds the few keys that the host writes itself, so they are searched.
void HXArchiveWalk::putTop(const Symbol& key, Index value) {
  const Index name = symbol(key).key;
  for (auto& [known, present] : top_) {
    if (known != name) continue;
    present = value;
    return;
  }
  top_.emplace_back(name, value);
}

// The one value just recorded, with what belongs to it, is all there is on the stack.
void HXArchiveWalk::encodeForTop(const Symbol& key, Encoder& coder) {
  const CodingTypeKeeper keeper(coder);
  pushFrame(kNone, 0, entries_.size(), Form::top, false, coder.codingType());
  run(coder);
  putTop(key, entries_.front().value);
  entries_.clear();
}

HXArchiveWalk::Index HXArchiveWalk::inlineValue(const Object& object) {
  if (object.codingKind() == CodingKind::string) {
    return writer_.addString(static_cast<const StringObject&>(object));
  }
  const auto& number = static_cast<const Number&>(object);
  switch (number.kind()) {
    case Number::Kind::boolean:
      return writer_.addBool(number.boolValue());
    case Number::Kind::float32:
      return writer_.addReal32(number.floatValue());
    case Number::Kind::float64:
      return writer_.addReal64(number.doubleValue());
    default:
      return writer_.addInt(number.int64Value());
  }
}

void HXArchiveWalk::appendElement(const Object& object, Index key) {
  Entry entry;
  entry.key = key;
  if (standsInline(object.codingKind())) {
    entry.value = inlineValue(object);
  } else {
    entry.object = Ref<const Object>(&object);
    entry.kind = Entry::Kind::object;
  }
  entries_.push_back(std::move(entry));
}

// Ascending keys make the hand-out of IDs, and so the output, the same for equal graphs.
void HXArchiveWalk::appendSorted() {
  std::sort(sorted_.begin(), sorted_.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  for (const auto& [key, object] : sorted_) {
    appendElement(*object, key.isNil() ? writer_.addString("") : writer_.addString(*key.object()));
  }
  sorted_.clear();
}

// --- Class names
// ----------------------------------------------------------------------------------

HXArchiveWalk::KnownClass& HXArchiveWalk::knownClass(const Class& record) {
  auto number = classIDs_.find(&record);
  if (number == IdentityTable::kNone) {
    number = static_cast<std::uint32_t>(classes_.size());
    KnownClass fresh{&record, String(), kNone};
    for (const KnownClass& other : classes_) {
      if (other.record->name() == record.name()) fresh.substitute = other.substitute;
    }
    classes_.push_back(std::move(fresh));
    classIDs_.set(&record, number);
  }
  return classes_[number];
}

void HXArchiveWalk::setClassName(const String& name, const Class& forClass) {
  if (!isEncoding()) {
    substitute(forClass, name);
    return;
  }
  // It takes effect where it stands among the values: objects written before it keep their names,
  // and may set another one for this class. Only before the first value is known what is in force.
  const KnownClass& known = knownClass(forClass);
  if (entries_.size() == frames_.back().begin && known.substitute == name) return;
  Entry entry;
  entry.kind = Entry::Kind::substitution;
  entry.isReplaced = true;
  entry.object = Ref<const Object>(name.object());
  entry.value = static_cast<Index>(&known - classes_.data());
  entries_.push_back(std::move(entry));
}

void HXArchiveWalk::substitute(const Class& record, const String& name) {
  knownClass(record);
  for (KnownClass& known : classes_) {
    if (known.record->name() != record.name()) continue;
    known.substitute = name;
    known.name = kNone;
  }
}

String HXArchiveWalk::classNameForClass(const Class& forClass) const {
  if (isEncoding()) {
    // What the object at hand has substituted itself.
    for (std::size_t i = entries_.size(); i > frames_.back().begin; --i) {
      const Entry& entry = entries_[i - 1];
      if (entry.kind == Entry::Kind::substitution &&
          classes_[entry.value].record->name() == forClass.name()) {
        return String::from(entry.object.get());
      }
    }
  }
  for (const KnownClass& known : classes_) {
    if (known.record->name() == forClass.name()) return known.substitute;
  }
  return String();
}

HXArchiveWalk::Index HXArchiveWalk::classNameOf(const Frame& frame) {
  const Object* const object = identified_[frame.id].object.get();
  const Class& record = object                    ? object->isa()
                        : frame.form == Form::set ? Set::kClass
                                                  : OrderedSet::kClass;
  KnownClass& known = knownClass(record);
  if (known.name == kNone) {
    known.name =
        writer_.addString(known.substitute.isNil() ? record.name() : known.substitute.view());
  }
  return known.name;
}

// --- The walk
// -------------------------------------------------------------------------------------

std::uint32_t HXArchiveWalk::newID(Ref<const Object> object) {
  const auto id = static_cast<std::uint32_t>(identified_.size());
  char text[32] = "$object-";
  constexpr std::size_t kPrefix = 8;
  const char* const end = std::to_chars(text + kPrefix, std::end(text), id).ptr;
  const Index idString = writer_.addDistinctString({text, static_cast<std::size_t>(end - text)});
  identified_.push_back({std::move(object), idString, kNone, kNone, false});
  return id;
}

HXArchiveWalk::Index HXArchiveWalk::referenceTo(std::uint32_t id) {
  Identified& identified = identified_[id];
  if (identified.reference == kNone) {
    const Index key = symbol(kReferenceKey).key;
    identified.reference = writer_.addMap({&key, 1}, {&identified.idString, 1});
  }
  return identified.reference;
}

std::uint32_t HXArchiveWalk::find(const Object& object) const noexcept {
  return ids_.find(&object);
}

void HXArchiveWalk::encodeRoot(const Object& root, Encoder& coder) {
  const std::uint32_t id = newID(Ref<const Object>(&root));
  ids_.set(&root, id);
  if (standsInline(root.codingKind())) {
    identified_[id].body = inlineValue(root);
  } else {
    const CodingTypeKeeper keeper(coder);
    writeObject(id, coder);
    run(coder);
  }
  top_.clear();
  putTop(kReferenceKey, identified_[id].idString);
}

void HXArchiveWalk::run(Encoder& coder) {
  while (!frames_.empty()) {
    const std::size_t depth = frames_.size();
    Frame& frame = frames_.back();
    while (frames_.size() == depth && frame.next < frame.end) encodeEntry(frame, coder);
    if (frames_.size() == depth) finishFrame();
  }
}

void HXArchiveWalk::encodeEntry(Frame& frame, Encoder& coder) {
  Entry& entry = entries_[frame.next++];
  switch (entry.kind) {
    case Entry::Kind::value:
      return;
    case Entry::Kind::codingType:
      frame.codingType = static_cast<std::int32_t>(entry.value);
      return;
    case Entry::Kind::substitution:
      substitute(*classes_[entry.value].record, String::from(entry.object.get()));
      return;
    case Entry::Kind::collection: {
      const std::uint32_t id = newID(nullptr);
      entry.value = referenceTo(id);
      identified_[id].body = writer_.reserve();
      const std::size_t begin = frame.next;
      frame.next += entry.count;
      pushFrame(id, begin, frame.next, entry.form, false, frame.codingType);
      return;
    }
    default:
      break;
  }
  std::uint32_t id = find(*entry.object);
  if (id == IdentityTable::kNone) {
    id = newID(entry.object);
    ids_.set(entry.object.get(), id);
  }
  entry.value = referenceTo(id);
  if (entry.kind == Entry::Kind::conditional) return;
  if (identified_[id].isInProgress) {
    throw HXArchiveRecursionError(
        fmt::format("a {} is written unconditionally from inside its own encoding",
                    entry.object->isa().name()));
  }
  if (identified_[id].body == kNone) writeObject(id, coder);
}

void HXArchiveWalk::writeObject(std::uint32_t id, Encoder& coder) {
  const Object& object = *identified_[id].object;
  const CodingKind kind = object.codingKind();
  if (kind == CodingKind::data) {
    identified_[id].body = writer_.addData(static_cast<const Data&>(object).bytes());
    return;
  }
  identified_[id].body = writer_.reserve();
  identified_[id].isInProgress = true;
  switch (kind) {
    case CodingKind::list:
      return openMembers(id, static_cast<const Array&>(object), Form::list, coder);
    case CodingKind::set:
      return openMembers(id, static_cast<const Set&>(object), Form::set, coder);
    case CodingKind::orderedSet:
      return openMembers(id, static_cast<const OrderedSet&>(object), Form::orderedSet, coder);
    case CodingKind::map: {
      sorted_.clear();
      for (const auto& entry : static_cast<const Dictionary&>(object).entries()) {
        if (entry.value) sorted_.emplace_back(entry.key, entry.value.get());
      }
      const std::size_t begin = entries_.size();
      appendSorted();
      return pushFrame(id, begin, entries_.size(), Form::map, true, typeOfNext(coder));
    }
    default:
      openObject(id, object, coder);
  }
}

// What the object writes is only recorded here, whatever it refers to; the walk follows later.
void HXArchiveWalk::openObject(std::uint32_t id, const Object& object, Encoder& coder) {
  const std::int32_t codingType = typeOfNext(coder);
  coder.setCodingType(codingType);
  recordedType_ = codingType;
  pushFrame(id, entries_.size(), entries_.size(), Form::object, true, codingType);
  SymbolEntry& classEntry = symbol(kClassKey);
  classEntry.serial = frames_.back().serial;
  classEntry.position = kNone;
  if (&object.isa() != &Null::kClass) object.encodeWithCoder(coder);
  frames_.back().end = static_cast<std::uint32_t>(entries_.size());
}

template <class Members>
void HXArchiveWalk::openMembers(std::uint32_t id, const Members& members, Form form,
                                const Encoder& coder) {
  const std::size_t begin = entries_.size();
  for (const auto& member : members) {
    if (member) appendElement(*member, kNone);
  }
  pushFrame(id, begin, entries_.size(), form, true, typeOfNext(coder));
}

// The root is written under the coder's own type, everything else under that of its place.
std::int32_t HXArchiveWalk::typeOfNext(const Encoder& coder) const noexcept {
  return frames_.empty() ? coder.codingType() : frames_.back().codingType;
}

void HXArchiveWalk::pushFrame(std::uint32_t id, std::size_t begin, std::size_t end, Form form,
                              bool ownsEntries, std::int32_t codingType) {
  const auto first = static_cast<std::uint32_t>(begin);
  frames_.push_back({id, first, first, static_cast<std::uint32_t>(end), ++serials_, codingType,
                     form, ownsEntries});
}

void HXArchiveWalk::finishFrame() {
  const Frame frame = frames_.back();
  switch (frame.form) {
    case Form::object:
      fillMap(frame, true);
      break;
    case Form::map:
      fillMap(frame, false);
      break;
    case Form::list:
      fillList(identified_[frame.id].body, frame);
      break;
    case Form::set:
      fillSet(frame);
      break;
    case Form::orderedSet:
      fillOrderedSet(frame);
      break;
    case Form::top:
      break;
  }
  if (frame.id != kNone) identified_[frame.id].isInProgress = false;
  if (frame.ownsEntries) entries_.resize(frame.begin);
  frames_.pop_back();
}

void HXArchiveWalk::fillMap(const Frame& frame, bool withClass) {
  std::size_t count = withClass ? 1 : 0;
  for (std::uint32_t i = frame.begin; i < frame.end; i += 1 + entries_[i].count) {
    if (!entries_[i].isReplaced) ++count;
  }
  // Looked up only now: a class may substitute its own name while it encodes itself.
  const Index className = withClass ? classNameOf(frame) : kNone;
  const Index classKey = withClass ? symbol(kClassKey).key : kNone;
  const auto into = writer_.fillMap(identified_[frame.id].body, count);
  std::size_t at = 0;
  if (withClass) {
    into[at] = classKey;
    into[count + at++] = className;
  }
  for (std::uint32_t i = frame.begin; i < frame.end; i += 1 + entries_[i].count) {
    const Entry& entry = entries_[i];
    if (entry.isReplaced) continue;
    into[at] = entry.key;
    into[count + at++] = entry.value;
  }
}

void HXArchiveWalk::fillList(Index list, const Frame& frame) {
  const auto into = writer_.fillArray(list, frame.end - frame.begin);
  for (std::uint32_t i = frame.begin; i < frame.end; ++i) {
    into[i - frame.begin] = entries_[i].value;
  }
}

void HXArchiveWalk::fillSet(const Frame& frame) {
  const Index list = writer_.reserve();
  fillList(list, frame);
  const Index keys[] = {symbol(kClassKey).key, symbol(kMembersKey).key};
  const Index className = classNameOf(frame);
  const auto into = writer_.fillMap(identified_[frame.id].body, 2);
  into[0] = keys[0];
  into[1] = keys[1];
  into[2] = className;
  into[3] = list;
}

void HXArchiveWalk::fillOrderedSet(const Frame& frame) {
  const std::size_t members = frame.end - frame.begin;
  if (members > 0) memberKey(members - 1);
  const Index classKey = symbol(kClassKey).key;
  const Index className = classNameOf(frame);
  const auto into = writer_.fillMap(identified_[frame.id].body, members + 1);
  into[0] = classKey;
  into[members + 1] = className;
  for (std::size_t i = 0; i < members; ++i) {
    into[i + 1] = memberKeys_[i];
    into[members + 2 + i] = entries_[frame.begin + i].value;
  }
}

HXArchiveWalk::Index HXArchiveWalk::memberKey(std::size_t number) {
  while (memberKeys_.size() <= number) {
    memberKeys_.push_back(writer_.addString(fmt::format("NS.object.{}", memberKeys_.size())));
  }
  return memberKeys_[number];
}

// --- The result
// -----------------------------------------------------------------------------------

std::vector<std::uint8_t> HXArchiveWalk::finish(const Symbol& versionKey) {
  const auto isWritten = [](const Identified& identified) { return identified.body != kNone; };
  const Index objects = writer_.reserve();
  // Objects that were only referred to have an ID and nothing else.
  const auto count =
      static_cast<std::size_t>(std::count_if(identified_.begin(), identified_.end(), isWritten));
  const auto into = writer_.fillMap(objects, count);
  std::size_t at = 0;
  for (const Identified& identified : identified_) {
    if (!isWritten(identified)) continue;
    into[at] = identified.idString;
    into[count + at++] = identified.body;
  }
  const Index root = writer_.reserve();
  const auto rootInto = writer_.fillMap(root, top_.size());
  for (std::size_t i = 0; i < top_.size(); ++i) {
    rootInto[i] = top_[i].first;
    rootInto[top_.size() + i] = top_[i].second;
  }
  const Index keys[] = {writer_.addSymbol(kObjectsKey), writer_.addSymbol(kRootKey),
                        writer_.addSymbol(versionKey)};
  const Index values[] = {objects, root,
                          writer_.addString(HXStringFromVersion(HXCurrentVersion()))};
  const auto listInto = writer_.fillMap(list_, std::size(keys));
  std::copy_n(values, std::size(values), std::copy_n(keys, std::size(keys), listInto.begin()));
  // Given back before the output is made.
  identified_ = std::vector<Identified>();
  ids_.clear();
  entries_ = std::vector<Entry>();
  return writer_.finish(list_);
}

void HXArchiveWalk::clear() {
  writer_.clear();
  list_ = writer_.reserve();
  frames_.clear();
  entries_ = std::vector<Entry>();
  identified_ = std::vector<Identified>();
  ids_.clear();
  symbols_.clear();
  recordedType_ = 0;
  memberKeys_.clear();
  top_.clear();
  serials_ = 0;
  for (KnownClass& known : classes_) known.name = kNone;
}

}  // namespace tarnkit::detail
