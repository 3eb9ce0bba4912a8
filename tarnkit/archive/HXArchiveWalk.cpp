#include "tarnkit/archive/HXArchiveWalk.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>

#include "tarnkit/archive/HXKeyedArchiver.h"
#include "tarnkit/archive/HXVersion.h"
#include "tarnkit/platform/coding/KeyedArchiveNames.h"
#include "tarnkit/platform/numbers/Number.h"

namespace tarnkit::detail {

// --- Recording
// ------------------------------------------------------------------------------------

void HXArchiveWalk::put(const Symbol& key, Index value) {
  if (!isEncoding()) {
    putTop(key, value);
    return;
  }
  record(key, Entry::Kind::value).value = value;
}

void HXArchiveWalk::putObject(const Symbol& key, const Object& object, bool isConditional) {
  if (isValue(object.codingKind())) {
    put(key, inlineValue(object));
    return;
  }
  recordCodingType();
  record(key, isConditional ? Entry::Kind::conditional : Entry::Kind::object).object =
      Ref<const Object>(&object);
  if (!isEncoding()) encodeForTop(key);
}

void HXArchiveWalk::putCollection(const Symbol& key, CodingKind kind, std::size_t count,
                                  FunctionRef<const Object*(std::size_t)> at) {
  recordCodingType();
  const std::size_t position = entries_.size();
  record(key, Entry::Kind::collection).form = formOf(kind);
  for (std::size_t i = 0; i < count; ++i) {
    if (const Object* const element = at(i)) appendElement(*element, kNone);
  }
  entries_[position].count = static_cast<std::uint32_t>(entries_.size() - position - 1);
  if (!isEncoding()) encodeForTop(key);
}

bool HXArchiveWalk::putMap(const Symbol& key, std::size_t count,
                           FunctionRef<Encoder::MapEntry(std::size_t)> at) {
  sorted_.clear();
  for (std::size_t i = 0; i < count; ++i) {
    const Encoder::MapEntry entry = at(i);
    if (entry.key.isNil()) return false;
    if (entry.value) sorted_.emplace_back(entry.key, entry.value);
  }
  recordCodingType();
  const std::size_t position = entries_.size();
  record(key, Entry::Kind::collection).form = Form::map;
  appendSorted();
  entries_[position].count = static_cast<std::uint32_t>(entries_.size() - position - 1);
  if (!isEncoding()) encodeForTop(key);
  return true;
}

HXArchiveWalk::Entry& HXArchiveWalk::record(const Symbol& key, Entry::Kind kind) {
  SymbolEntry& known = symbol(key);
  Entry& entry = entries_.emplace_back();
  entry.key = known.key;
  entry.kind = kind;
  if (!isEncoding()) return entry;
  const std::uint32_t serial = frames_.back().serial;
  if (known.serial == serial && known.position == kNone) {
    entry.isReplaced = true;
  } else {
    if (known.serial == serial) entries_[known.position].isReplaced = true;
    known.serial = serial;
    known.position = static_cast<std::uint32_t>(entries_.size() - 1);
  }
  return entry;
}

HXArchiveWalk::Entry& HXArchiveWalk::recordAside(Entry::Kind kind) {
  Entry& entry = entries_.emplace_back();
  entry.kind = kind;
  entry.isReplaced = true;
  return entry;
}

// The objects are walked only when the one that refers to them has returned, so what it set for
// them is noted among its values.
void HXArchiveWalk::recordCodingType() {
  if (!isEncoding() || coder().codingType() == recordedType_) return;
  recordedType_ = coder().codingType();
  recordAside(Entry::Kind::codingType).value = static_cast<Index>(recordedType_);
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
void HXArchiveWalk::encodeForTop(const Symbol& key) {
  const CodingTypeKeeper keeper(coder());
  pushFrame(kNone, 0, entries_.size(), Form::top, false, coder().codingType());
  run();
  putTop(key, entries_.front().value);
  entries_.clear();
}

HXArchiveWalk::Index HXArchiveWalk::inlineValue(const Object& object) {
  if (object.codingKind() == CodingKind::number) return scalar(static_cast<const Number&>(object));
  return writer().addString(static_cast<const StringObject&>(object));
}

HXArchiveWalk::Form HXArchiveWalk::formOf(CodingKind kind) noexcept {
  if (kind == CodingKind::set) return Form::set;
  return kind == CodingKind::orderedSet ? Form::orderedSet : Form::list;
}

void HXArchiveWalk::appendElement(const Object& object, Index key) {
  Entry& entry = entries_.emplace_back();
  entry.key = key;
  if (isValue(object.codingKind())) {
    entry.value = inlineValue(object);
  } else {
    entry.object = Ref<const Object>(&object);
    entry.kind = Entry::Kind::object;
  }
}

// Ascending keys make the hand-out of IDs, and so the output, the same for equal graphs.
void HXArchiveWalk::appendSorted() {
  std::sort(sorted_.begin(), sorted_.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  for (const auto& [key, object] : sorted_) {
    appendElement(*object,
                  key.isNil() ? writer().addString("") : writer().addString(*key.object()));
  }
  sorted_.clear();
}

// --- Class names
// ----------------------------------------------------------------------------------

void HXArchiveWalk::setClassName(const String& name, const Class& forClass) {
  if (!isEncoding()) {
    classes().substitute(forClass, name);
    return;
  }
  // It takes effect where it stands among the values: objects written before it keep their names,
  // and may set another one for this class. Only before the first value is known what is in force.
  const std::uint32_t number = classes().numberOf(forClass);
  if (entries_.size() == frames_.back().begin && classes()[number].substitute == name) return;
  Entry& entry = recordAside(Entry::Kind::substitution);
  entry.object = Ref<const Object>(name.object());
  entry.value = number;
}

String HXArchiveWalk::classNameForClass(const Class& forClass) const {
  if (isEncoding()) {
    // What the object at hand has substituted itself.
    for (std::size_t i = entries_.size(); i > frames_.back().begin; --i) {
      const Entry& entry = entries_[i - 1];
      if (entry.kind == Entry::Kind::substitution &&
          classes()[entry.value].record->name() == forClass.name()) {
        return String::from(entry.object.get());
      }
    }
  }
  return classes().substituteFor(forClass);
}

HXArchiveWalk::Index HXArchiveWalk::classNameOf(const Frame& frame) {
  const Object* const object = objects_[frame.id];
  const CodingKind kind = frame.form == Form::set ? CodingKind::set : CodingKind::orderedSet;
  auto& known = classes().of(object ? object->isa() : classOfCollection(kind));
  if (known.written == 0) known.written = writer().addString(known.name());
  return known.written;
}

// --- The walk
// -------------------------------------------------------------------------------------

std::uint32_t HXArchiveWalk::newID(Ref<const Object> object) {
  const auto id = static_cast<std::uint32_t>(numbers_.size());
  char text[32] = "$object-";
  constexpr std::size_t kPrefix = 8;
  const char* const end = std::to_chars(text + kPrefix, std::end(text), id).ptr;
  numbers_.append(
      {writer().addDistinctString({text, static_cast<std::size_t>(end - text)}), kNone});
  objects_.append(std::move(object));
  marks_.append(0);
  return id;
}

HXArchiveWalk::Index HXArchiveWalk::referenceTo(std::uint32_t id) {
  Index& reference = numbers_[id].reference;
  if ((marks_[id] & kReferredTo) == 0) {
    marks_[id] |= kReferredTo;
    const Index key = symbol(archive::kReference).key;
    reference = writer().addMap({&key, 1}, {&reference, 1});
  }
  return reference;
}

HXArchiveWalk::Index HXArchiveWalk::idString(std::uint32_t id) const noexcept {
  const Index known = numbers_[id].reference;
  return (marks_[id] & kReferredTo) == 0 ? known : writer().valuesOfMap(known).front();
}

void HXArchiveWalk::putRoot(const Object* root) {
  if (!root) return;
  if (isEncoding()) {
    throw std::logic_error("a root object is written from inside the encoding of another object");
  }
  const std::uint32_t id = newID(Ref<const Object>(root));
  ids_.set(root, id);
  if (isValue(root->codingKind())) {
    numbers_[id].body = inlineValue(*root);
  } else {
    const CodingTypeKeeper keeper(coder());
    writeObject(id);
    run();
  }
  top_.clear();
  putTop(archive::kReference, idString(id));
}

void HXArchiveWalk::run() {
  while (!frames_.empty()) {
    const std::size_t depth = frames_.size();
    Frame& frame = frames_.back();
    while (frames_.size() == depth && frame.next < frame.end) encodeEntry(frame);
    if (frames_.size() == depth) finishFrame();
  }
}

void HXArchiveWalk::encodeEntry(Frame& frame) {
  Entry& entry = entries_[frame.next++];
  switch (entry.kind) {
    case Entry::Kind::value:
      return;
    case Entry::Kind::codingType:
      frame.codingType = static_cast<std::int32_t>(entry.value);
      return;
    case Entry::Kind::substitution:
      classes().substitute(*classes()[entry.value].record, String::from(entry.object.get()));
      return;
    case Entry::Kind::collection: {
      const std::uint32_t id = newID(nullptr);
      entry.value = referenceTo(id);
      numbers_[id].body = writer().reserve();
      const std::size_t begin = frame.next;
      frame.next += entry.count;
      pushFrame(id, begin, frame.next, entry.form, false, frame.codingType);
      return;
    }
    default:
      break;
  }
  std::uint32_t id = ids_.find(entry.object.get());
  if (id == IdentityTable::kNone) {
    id = newID(entry.object);
    ids_.set(entry.object.get(), id);
  }
  entry.value = referenceTo(id);
  if (entry.kind == Entry::Kind::conditional) return;
  if ((marks_[id] & kInProgress) != 0) {
    throw HXArchiveRecursionError(
        fmt::format("a {} is written unconditionally from inside its own encoding",
                    entry.object->isa().name()));
  }
  if (numbers_[id].body == kNone) writeObject(id);
}

void HXArchiveWalk::writeObject(std::uint32_t id) {
  const Object& object = *objects_[id];
  const CodingKind kind = object.codingKind();
  if (kind == CodingKind::data) {
    numbers_[id].body = writer().addData(static_cast<const Data&>(object).bytes());
    return;
  }
  numbers_[id].body = writer().reserve();
  marks_[id] |= kInProgress;
  const std::size_t begin = entries_.size();
  switch (kind) {
    case CodingKind::list:
    case CodingKind::set:
    case CodingKind::orderedSet:
      eachMember(object, kind, [&](const Object& member) { appendElement(member, kNone); });
      return pushFrame(id, begin, entries_.size(), formOf(kind), true, typeOfNext());
    case CodingKind::map:
      sorted_.clear();
      eachEntry(object,
                [&](const String& key, const Object& value) { sorted_.emplace_back(key, &value); });
      appendSorted();
      return pushFrame(id, begin, entries_.size(), Form::map, true, typeOfNext());
    default:
      openObject(id, object);
  }
}

// What the object writes is only recorded here, whatever it refers to; the walk follows later.
void HXArchiveWalk::openObject(std::uint32_t id, const Object& object) {
  const std::int32_t codingType = typeOfNext();
  coder().setCodingType(codingType);
  recordedType_ = codingType;
  pushFrame(id, entries_.size(), entries_.size(), Form::object, true, codingType);
  SymbolEntry& classEntry = symbol(archive::kClass);
  classEntry.serial = frames_.back().serial;
  classEntry.position = kNone;
  encodeContents(object);
  frames_.back().end = static_cast<std::uint32_t>(entries_.size());
}

// The root is written under the coder's own type, everything else under that of its place.
std::int32_t HXArchiveWalk::typeOfNext() noexcept {
  return frames_.empty() ? coder().codingType() : frames_.back().codingType;
}

void HXArchiveWalk::pushFrame(std::uint32_t id, std::size_t begin, std::size_t end, Form form,
                              bool ownsEntries, std::int32_t codingType) {
  const auto first = static_cast<std::uint32_t>(begin);
  frames_.push_back({id, first, first, static_cast<std::uint32_t>(end), newSerial(), codingType,
                     form, ownsEntries});
  setEncoding(true);
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
      fillList(numbers_[frame.id].body, frame);
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
  if (frame.id != kNone) marks_[frame.id] &= static_cast<std::uint8_t>(~kInProgress);
  if (frame.ownsEntries) entries_.resize(frame.begin);
  frames_.pop_back();
  setEncoding(!frames_.empty());
}

void HXArchiveWalk::fillMap(const Frame& frame, bool withClass) {
  const std::size_t most = frame.end - frame.begin + 1;
  if (keys_.size() < most) {
    keys_.resize(most);
    values_.resize(most);
  }
  std::size_t count = 0;
  if (withClass) {
    // Looked up only now: a class may substitute its own name while it encodes itself.
    values_[count] = classNameOf(frame);
    keys_[count++] = symbol(archive::kClass).key;
  }
  for (std::uint32_t i = frame.begin; i < frame.end; i += 1 + entries_[i].count) {
    const Entry& entry = entries_[i];
    if (entry.isReplaced) continue;
    keys_[count] = entry.key;
    values_[count++] = entry.value;
  }
  fillBody(frame, count);
}

void HXArchiveWalk::fillBody(const Frame& frame, std::size_t count) {
  std::copy_n(values_.begin(), count,
              writer().fillMap(numbers_[frame.id].body, {keys_.data(), count}).begin());
}

void HXArchiveWalk::fillList(Index list, const Frame& frame) {
  const auto into = writer().fillArray(list, frame.end - frame.begin);
  for (std::uint32_t i = frame.begin; i < frame.end; ++i) {
    into[i - frame.begin] = entries_[i].value;
  }
}

void HXArchiveWalk::fillSet(const Frame& frame) {
  const Index list = writer().reserve();
  fillList(list, frame);
  keys_ = {symbol(archive::kClass).key, symbol(archive::kMembers).key};
  values_ = {classNameOf(frame), list};
  fillBody(frame, 2);
}

void HXArchiveWalk::fillOrderedSet(const Frame& frame) {
  const std::size_t members = frame.end - frame.begin;
  if (members > 0) memberKey(members - 1);
  keys_ = {symbol(archive::kClass).key};
  values_ = {classNameOf(frame)};
  for (std::size_t i = 0; i < members; ++i) {
    keys_.push_back(memberKey(i));
    values_.push_back(entries_[frame.begin + i].value);
  }
  fillBody(frame, members + 1);
}

// --- The result
// -----------------------------------------------------------------------------------

HXArchiveWalk::Index HXArchiveWalk::finish() {
  // Given back before the largest of the maps is made.
  ids_.clear();
  objects_.clear();
  entries_ = std::vector<Entry>();
  const Index objects = writer().reserve();
  // Objects that were only referred to have an ID and nothing else.
  const std::size_t ids = numbers_.size();
  std::size_t written = 0;
  for (std::size_t id = 0; id < ids; ++id) written += numbers_[id].body == kNone ? 0 : 1;
  const auto into = writer().fillMap(objects, written);
  std::size_t at = 0;
  for (std::uint32_t id = 0; id < ids; ++id) {
    if (numbers_[id].body == kNone) continue;
    into.keys[at] = idString(id);
    into.values[at++] = numbers_[id].body;
  }
  forgetObjects();
  const Index root = writer().reserve();
  const auto rootInto = writer().fillMap(root, top_.size());
  for (std::size_t i = 0; i < top_.size(); ++i) {
    rootInto.keys[i] = top_[i].first;
    rootInto.values[i] = top_[i].second;
  }
  const Index keys[] = {writer().addSymbol(archive::kObjects), writer().addSymbol(archive::kRoot),
                        writer().addSymbol(archive::kVersion)};
  const Index values[] = {objects, root,
                          writer().addString(HXStringFromVersion(HXCurrentVersion()))};
  std::copy_n(values, std::size(values), writer().fillMap(list_, keys).begin());
  return list_;
}

void HXArchiveWalk::forgetObjects() {
  ids_.clear();
  objects_.clear();
  numbers_.clear();
  marks_.clear();
}

void HXArchiveWalk::clear() {
  KeyedArchiveLayout::clear();
  list_ = writer().reserve();
  frames_.clear();
  entries_ = std::vector<Entry>();
  forgetObjects();
  top_.clear();
}

}  // namespace tarnkit::detail
