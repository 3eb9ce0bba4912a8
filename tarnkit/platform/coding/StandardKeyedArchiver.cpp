#include "tarnkit/platform/coding/StandardKeyedArchiver.h"

#include <algorithm>
#include <stdexcept>

#include "tarnkit/platform/collections/Array.h"
#include "tarnkit/platform/collections/Dictionary.h"
#include "tarnkit/platform/collections/IdentityTable.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/objects/Null.h"
#include "tarnkit/platform/propertylist/PropertyListWriter.h"

namespace tarnkit {

namespace {

using Index = PropertyListWriter::Index;
using UID = std::uint32_t;

constexpr Index kUnfilled = 0xFFFFFFFFU;
constexpr std::int64_t kArchiveVersion = 100000;

const Symbol kClassKey{"$class"};
const Symbol kRootKey{"root"};
const Symbol kObjectsKey{"NS.objects"};
const Symbol kKeysKey{"NS.keys"};
const Symbol kStringKey{"NS.string"};
const Class kMutableString{"NSMutableString", &StringObject::kClass};

// The keyed values of one container, in the order in which they were first written.
struct Fields {
  std::vector<Index> keys;
  std::vector<Index> values;
  std::uint32_t serial = 0;
};

struct SymbolEntry {
  Index key = kUnfilled;
  std::uint32_t serial = 0;  // of the fields that had the key last
  std::uint32_t position = 0;
};

struct ClassEntry {
  const Class* record;
  String substitute;
  UID uid;  // 0: no record written under the present name
};

struct PendingObject {
  UID uid;
  std::int32_t codingType;  // that of the archiver when the object was referred to
};

}  // namespace

struct StandardKeyedArchiver::State {
  const Coder& coder;
  PropertyListWriter writer;
  Index list = 0;
  Index null = 0;
  std::vector<Index> bodies;               // for each UID
  std::vector<Ref<const Object>> objects;  // for each UID; null for strings, numbers, class records
  std::vector<bool> queued;                // for each UID
  detail::IdentityTable identities;
  std::vector<UID> valueUIDs;  // UID of the string or number that is this object of the list
  UID nullTextUID = 0;
  std::vector<PendingObject> pending;  // the next to be encoded stands last
  std::vector<SymbolEntry> symbols;
  std::uint32_t serials = 0;
  Fields top;
  Fields fields;
  Fields* open = nullptr;  // the fields that receive keyed values
  std::vector<ClassEntry> classes;
  detail::IdentityTable classIdentities;

  explicit State(const Coder& owner) : coder(owner) { start(); }

  void start() {
    list = writer.reserve();
    null = writer.addString("$null");
    bodies.push_back(null);
    objects.emplace_back();
    queued.push_back(true);
    openFields(top);
  }

  void reset() {
    writer.clear();
    bodies.clear();
    objects.clear();
    queued.clear();
    identities.clear();
    valueUIDs.clear();
    nullTextUID = 0;
    pending.clear();
    symbols.clear();
    for (auto& entry : classes) entry.uid = 0;
    start();
  }

  void openFields(Fields& fresh) {
    fresh.keys.clear();
    fresh.values.clear();
    fresh.serial = ++serials;
    open = &fresh;
  }

  void put(const Symbol& key, Index value) {
    const auto number = key.number();
    if (number >= symbols.size()) {
      symbols.resize(std::max<std::size_t>(Symbol::count(), number + std::size_t{1}));
    }
    SymbolEntry& entry = symbols[number];
    if (entry.key == kUnfilled) {
      // The archive's own keys begin with "$"; one of an object gets a second one.
      entry.key = key.text().substr(0, 1) == "$" ? writer.addString("$" + std::string(key.text()))
                                                 : writer.addSymbol(key);
    }
    if (entry.serial == open->serial) {
      open->values[entry.position] = value;
      return;
    }
    entry.serial = open->serial;
    entry.position = static_cast<std::uint32_t>(open->keys.size());
    open->keys.push_back(entry.key);
    open->values.push_back(value);
  }

  UID newUID(const Object* object) {
    const auto uid = static_cast<UID>(bodies.size());
    bodies.push_back(kUnfilled);
    objects.emplace_back(object);
    queued.push_back(false);
    return uid;
  }

  UID uidOfValue(Index value) {
    if (value >= valueUIDs.size()) {
      valueUIDs.resize(std::max<std::size_t>(value + std::size_t{1}, valueUIDs.size() * 2));
    }
    UID& uid = valueUIDs[value];
    if (uid == 0) {
      uid = newUID(nullptr);
      bodies[uid] = value;
    }
    return uid;
  }

  UID uidOfString(const StringObject* text) {
    const Index value = text ? writer.addString(*text) : writer.addString("");
    if (value != null) return uidOfValue(value);
    // A bare "$null" would read as nil; as a mutable string it stays the text.
    if (nullTextUID == 0) {
      nullTextUID = newUID(nullptr);
      const Index keys[] = {writer.addSymbol(kClassKey), writer.addSymbol(kStringKey)};
      const Index values[] = {writer.addUID(uidOfClass(kMutableString)), null};
      bodies[nullTextUID] = writer.addMap(keys, values);
    }
    return nullTextUID;
  }

  Index scalar(const Number& number) {
    switch (number.kind()) {
      case Number::Kind::boolean:
        return writer.addBool(number.boolValue());
      case Number::Kind::float32:
        return writer.addReal32(number.floatValue());
      case Number::Kind::float64:
        return writer.addReal64(number.doubleValue());
      default:
        return writer.addInt(number.int64Value());
    }
  }

  UID reference(const Object* object, bool isConditional) {
    switch (object->codingKind()) {
      case CodingKind::string:
        return uidOfString(static_cast<const StringObject*>(object));
      case CodingKind::number:
        return uidOfValue(scalar(*static_cast<const Number*>(object)));
      default:
        break;
    }
    UID uid = identities.find(object);
    if (uid == detail::IdentityTable::kNone) {
      uid = newUID(object);
      identities.set(object, uid);
    }
    if (!isConditional && !queued[uid]) {
      queued[uid] = true;
      pending.push_back({uid, coder.codingType()});
    }
    return uid;
  }

  ClassEntry& entryOfClass(const Class& record) {
    auto number = classIdentities.find(&record);
    if (number == detail::IdentityTable::kNone) {
      number = static_cast<std::uint32_t>(classes.size());
      classes.push_back({&record, String(), 0});
      classIdentities.set(&record, number);
    }
    return classes[number];
  }

  Index nameOfClass(const Class& record) {
    const ClassEntry& entry = entryOfClass(record);
    return writer.addString(entry.substitute.isNil() ? record.name() : entry.substitute.view());
  }

  UID uidOfClass(const Class& record) {
    if (const UID known = entryOfClass(record).uid; known != 0) return known;
    const UID uid = newUID(nullptr);
    std::vector<Index> chain;
    for (const Class* base = &record; base; base = base->superclass()) {
      chain.push_back(nameOfClass(*base));
    }
    const Index keys[] = {writer.addString("$classname"), writer.addString("$classes")};
    const Index values[] = {chain.front(), writer.addArray(chain)};
    bodies[uid] = writer.addMap(keys, values);
    entryOfClass(record).uid = uid;
    return uid;
  }

  static const Class& classOfKind(CodingKind kind) {
    if (kind == CodingKind::set) return Set::kClass;
    return kind == CodingKind::orderedSet ? OrderedSet::kClass : Array::kClass;
  }

  // The record of a collection whose element UIDs are known.
  Index collectionBody(CodingKind kind, const std::vector<Index>& elements) {
    const Index classReference = writer.addUID(uidOfClass(classOfKind(kind)));
    if (kind != CodingKind::orderedSet) {
      const Index keys[] = {writer.addSymbol(kClassKey), writer.addSymbol(kObjectsKey)};
      const Index values[] = {classReference, writer.addArray(elements)};
      return writer.addMap(keys, values);
    }
    std::vector<Index> keys{writer.addSymbol(kClassKey)};
    std::vector<Index> values{classReference};
    std::string key = "NS.object.";
    const auto prefix = key.size();
    for (const Index element : elements) {
      key.resize(prefix);
      key += std::to_string(values.size() - 1);
      keys.push_back(writer.addString(key));
      values.push_back(element);
    }
    return writer.addMap(keys, values);
  }

  Index mapBody(const std::vector<Index>& names, const std::vector<Index>& entries) {
    const Index keys[] = {writer.addSymbol(kClassKey), writer.addSymbol(kKeysKey),
                          writer.addSymbol(kObjectsKey)};
    const Index values[] = {writer.addUID(uidOfClass(Dictionary::kClass)), writer.addArray(names),
                            writer.addArray(entries)};
    return writer.addMap(keys, values);
  }

  Index refer(const Object* object) { return writer.addUID(reference(object, false)); }

  template <class Collection>
  Index bodyOfMembers(const Collection& collection, CodingKind kind) {
    std::vector<Index> elements;
    elements.reserve(collection.count());
    for (const auto& member : collection) {
      if (member) elements.push_back(refer(member.get()));
    }
    return collectionBody(kind, elements);
  }

  Index bodyOfDictionary(const Dictionary& dictionary) {
    std::vector<Index> names;
    std::vector<Index> entries;
    for (const auto& entry : dictionary.entries()) {
      if (!entry.value) continue;
      names.push_back(writer.addUID(uidOfString(entry.key.object().get())));
      entries.push_back(refer(entry.value.get()));
    }
    return mapBody(names, entries);
  }

  Index body(const Object& value, StandardKeyedArchiver& archiver) {
    switch (const CodingKind kind = value.codingKind()) {
      case CodingKind::data:
        return writer.addData(static_cast<const Data&>(value).bytes());
      case CodingKind::list:
        return bodyOfMembers(static_cast<const Array&>(value), kind);
      case CodingKind::set:
        return bodyOfMembers(static_cast<const Set&>(value), kind);
      case CodingKind::orderedSet:
        return bodyOfMembers(static_cast<const OrderedSet&>(value), kind);
      case CodingKind::map:
        return bodyOfDictionary(static_cast<const Dictionary&>(value));
      default:
        break;
    }
    openFields(fields);
    fields.keys.push_back(writer.addSymbol(kClassKey));
    fields.values.push_back(0);
    if (&value.isa() != &Null::kClass) value.encodeWithCoder(archiver);
    // After the keys: a class may substitute its own name while it encodes itself.
    fields.values[0] = writer.addUID(uidOfClass(value.isa()));
    return writer.addMap(fields.keys, fields.values);
  }

  // Encodes everything that was referred to. The references that an object makes stand in the order
  // of its keys; the last is taken first, so they are turned round.
  void work(StandardKeyedArchiver& archiver) {
    std::reverse(pending.begin(), pending.end());
    while (!pending.empty()) {
      const PendingObject next = pending.back();
      pending.pop_back();
      const std::size_t before = pending.size();
      archiver.setCodingType(next.codingType);
      bodies[next.uid] = body(*objects[next.uid], archiver);
      std::reverse(pending.begin() + static_cast<std::ptrdiff_t>(before), pending.end());
    }
    open = &top;
  }

  // Values that are written straight into the top bring what they refer to along. An object that
  // throws leaves the archiver empty.
  void workAtTop(StandardKeyedArchiver& archiver) {
    if (open != &top) return;
    const std::int32_t codingType = archiver.codingType();
    try {
      work(archiver);
    } catch (...) {
      reset();
      archiver.setCodingType(codingType);
      throw;
    }
    archiver.setCodingType(codingType);
  }
};

StandardKeyedArchiver::StandardKeyedArchiver() : state_(std::make_unique<State>(*this)) {}
StandardKeyedArchiver::~StandardKeyedArchiver() = default;

Result<Ref<Data>> StandardKeyedArchiver::archivedData(const Object* root, std::int32_t codingType) {
  StandardKeyedArchiver archiver;
  archiver.setCodingType(codingType);
  try {
    archiver.encodeRootObject(root);
    auto bytes = archiver.finishEncoding();
    if (!bytes) return std::move(bytes).status();
    return make<Data>(*std::move(bytes));
  } catch (const std::length_error& tooLarge) {
    return Status::failure(StatusCode::tooLarge, tooLarge.what());
  }
}

void StandardKeyedArchiver::encodeRootObject(const Object* root) {
  if (root) {
    encodeObject(root, kRootKey);
  } else {
    state_->put(kRootKey, state_->writer.addUID(0));
  }
}

Result<std::vector<std::uint8_t>> StandardKeyedArchiver::finishEncoding() {
  State& state = *state_;
  PropertyListWriter& writer = state.writer;
  for (Index& body : state.bodies) {
    if (body == kUnfilled) body = state.null;  // referred to conditionally only
  }
  std::vector<std::uint8_t> bytes;
  Status status;
  try {
    const Index keys[] = {writer.addString("$archiver"), writer.addString("$objects"),
                          writer.addString("$top"), writer.addString("$version")};
    const Index values[] = {writer.addString("NSKeyedArchiver"), writer.addArray(state.bodies),
                            writer.addMap(state.top.keys, state.top.values),
                            writer.addInt(kArchiveVersion)};
    const auto into = writer.fillMap(state.list, std::size(keys));
    std::copy_n(values, std::size(values), std::copy_n(keys, std::size(keys), into.begin()));
    bytes = writer.finish(state.list);
  } catch (const std::length_error& tooLarge) {
    status = Status::failure(StatusCode::tooLarge, tooLarge.what());
  }
  state.reset();
  if (!status) return status;
  return bytes;
}

void StandardKeyedArchiver::encodeBool(bool value, const Symbol& key) {
  state_->put(key, state_->writer.addBool(value));
}

void StandardKeyedArchiver::encodeInt(std::int32_t value, const Symbol& key) {
  state_->put(key, state_->writer.addInt(value));
}

void StandardKeyedArchiver::encodeInt64(std::int64_t value, const Symbol& key) {
  state_->put(key, state_->writer.addInt(value));
}

void StandardKeyedArchiver::encodeFloat(float value, const Symbol& key) {
  state_->put(key, state_->writer.addReal32(value));
}

void StandardKeyedArchiver::encodeDouble(double value, const Symbol& key) {
  state_->put(key, state_->writer.addReal64(value));
}

void StandardKeyedArchiver::encodeBytes(ByteSpan bytes, const Symbol& key) {
  state_->put(key, state_->writer.addData(bytes));
}

void StandardKeyedArchiver::encodeObject(const Object* object, const Symbol& key) {
  if (!object) return;
  State& state = *state_;
  state.put(key, state.refer(object));
  state.workAtTop(*this);
}

void StandardKeyedArchiver::encodeConditionalObject(const Object* object, const Symbol& key) {
  if (!object) return;
  state_->put(key, state_->writer.addUID(state_->reference(object, true)));
}

void StandardKeyedArchiver::encodeCollection(CodingKind kind, std::size_t count,
                                             FunctionRef<const Object*(std::size_t)> at,
                                             const Symbol& key) {
  State& state = *state_;
  const UID uid = state.newUID(nullptr);
  std::vector<Index> elements;
  elements.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    if (const Object* const element = at(i)) elements.push_back(state.refer(element));
  }
  state.bodies[uid] = state.collectionBody(kind, elements);
  state.put(key, state.writer.addUID(uid));
  state.workAtTop(*this);
}

void StandardKeyedArchiver::encodeMap(std::size_t count, FunctionRef<MapEntry(std::size_t)> at,
                                      const Symbol& key) {
  State& state = *state_;
  const UID uid = state.newUID(nullptr);
  std::vector<Index> names;
  std::vector<Index> entries;
  names.reserve(count);
  entries.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const MapEntry entry = at(i);
    if (!entry.value) continue;
    names.push_back(state.writer.addUID(state.uidOfString(entry.key.object().get())));
    entries.push_back(state.refer(entry.value));
  }
  state.bodies[uid] = state.mapBody(names, entries);
  state.put(key, state.writer.addUID(uid));
  state.workAtTop(*this);
}

void StandardKeyedArchiver::setClassName(const Symbol& name, const Class& forClass) {
  ClassEntry& entry = state_->entryOfClass(forClass);
  if (entry.substitute == name.string()) return;
  entry.substitute = name.string();
  entry.uid = 0;
}

}  // namespace tarnkit
