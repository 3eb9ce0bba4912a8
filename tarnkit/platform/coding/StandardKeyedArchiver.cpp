#include "tarnkit/platform/coding/StandardKeyedArchiver.h"

#include <algorithm>

#include "tarnkit/platform/coding/KeptObjects.h"
#include "tarnkit/platform/coding/KeyedArchiveLayout.h"
#include "tarnkit/platform/coding/KeyedArchiveNames.h"
#include "tarnkit/platform/collections/NumberTable.h"
#include "tarnkit/platform/numbers/Number.h"

namespace tarnkit {

namespace {

using UID = std::uint32_t;

const Class kMutableString{"NSMutableString", &StringObject::kClass};

class Layout final : public detail::KeyedArchiveLayout {
 public:
  Layout() { start(); }

  void putRoot(const Object* root) override {
    if (root) {
      putObject(detail::archive::kTopObject, *root, false);
    } else {
      put(detail::archive::kTopObject, writer().addUID(0));
    }
  }

  void put(const Symbol& key, Index value) override {
    SymbolEntry& entry = symbol(key);
    if (entry.serial == open_->serial) {
      open_->values[entry.position] = value;
      return;
    }
    entry.serial = open_->serial;
    entry.position = static_cast<std::uint32_t>(open_->keys.size());
    open_->keys.push_back(entry.key);
    open_->values.push_back(value);
  }

  void putObject(const Symbol& key, const Object& object, bool isConditional) override {
    put(key, writer().addUID(reference(object, isConditional)));
    if (!isConditional) workAtTop();
  }

  void putCollection(const Symbol& key, CodingKind kind, std::size_t count,
                     FunctionRef<const Object*(std::size_t)> at) override {
    const UID uid = newUID();
    std::vector<Index> elements;
    elements.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
      if (const Object* const element = at(i)) elements.push_back(refer(*element));
    }
    bodies_[uid] = collectionBody(kind, elements);
    put(key, writer().addUID(uid));
    workAtTop();
  }

  bool putMap(const Symbol& key, std::size_t count,
              FunctionRef<Encoder::MapEntry(std::size_t)> at) override {
    const UID uid = newUID();
    MapEntries entries;
    entries.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
      const Encoder::MapEntry entry = at(i);
      if (entry.value) addEntry(entries, entry.key, *entry.value);
    }
    bodies_[uid] = mapBody(entries);
    put(key, writer().addUID(uid));
    workAtTop();
    return true;
  }

  void setClassName(const String& name, const Class& forClass) override {
    classes().substitute(forClass, name);
  }

  Index finish() override {
    namespace names = detail::archive;
    // Given back before the longest of the arrays is made.
    forgetObjects();
    const Index keys[] = {writer().addSymbol(names::kArchiver), writer().addSymbol(names::kObjects),
                          writer().addSymbol(names::kTop), writer().addSymbol(names::kVersion)};
    const Index values[] = {writer().addString(names::kArchiverName), addBodies(),
                            writer().addMap(top_.keys, top_.values),
                            writer().addInt(names::kFormatVersion)};
    std::copy_n(values, std::size(values), writer().fillMap(list_, keys).begin());
    bodies_.clear();
    return list_;
  }

  void clear() override {
    KeyedArchiveLayout::clear();
    bodies_.clear();
    forgetObjects();
    nullTextUID_ = 0;
    pending_.clear();
    start();
  }

 private:
  // The keyed values of one container, in the order in which they were first written.
  struct Fields {
    std::vector<Index> keys;
    std::vector<Index> values;
    std::uint32_t serial = 0;
  };
  struct PendingObject {
    const Object* object;
    UID uid;
    std::int32_t codingType;  // that of the archiver when the object was referred to
  };
  struct MapEntries {
    std::vector<Index> names;
    std::vector<Index> values;
    void reserve(std::size_t count) {
      names.reserve(count);
      values.reserve(count);
    }
  };

  Index keyText(const Symbol& key) override {
    if (key.text().substr(0, 1) != "$") return writer().addSymbol(key);
    return writer().addString(detail::archive::keyOfObject(key.text()));
  }

  Index addBodies() {
    const Index objects = writer().reserve();
    const auto into = writer().fillArray(objects, bodies_.size());
    for (std::size_t uid = 0; uid < into.size(); ++uid) {
      into[uid] =
          bodies_[uid] == kNone ? null_ : bodies_[uid];  // or only referred to conditionally
    }
    return objects;
  }

  void forgetObjects() {
    objects_.clear();
    queued_ = std::vector<bool>();
    identities_.clear();
    valueUIDs_.clear();
  }

  void start() {
    list_ = writer().reserve();
    null_ = writer().addString(detail::archive::kNull);
    bodies_.append(null_);
    queued_.push_back(true);
    openFields(top_);
  }

  void openFields(Fields& fresh) {
    fresh.keys.clear();
    fresh.values.clear();
    fresh.serial = newSerial();
    open_ = &fresh;
  }

  UID newUID() {
    const auto uid = static_cast<UID>(bodies_.size());
    bodies_.append(kNone);
    queued_.push_back(false);
    return uid;
  }

  UID uidOfValue(Index value) {
    UID uid = valueUIDs_.find(value);
    if (uid == detail::NumberTable::kNone) {
      uid = newUID();
      bodies_[uid] = value;
      valueUIDs_.set(value, uid);
    }
    return uid;
  }

  UID uidOfString(const StringObject* text) {
    const Index value = text ? writer().addString(*text) : writer().addString("");
    if (value != null_) return uidOfValue(value);
    // A bare "$null" would read as nil; as a mutable string it stays the text.
    if (nullTextUID_ == 0) {
      nullTextUID_ = newUID();
      const Index keys[] = {writer().addSymbol(detail::archive::kClass),
                            writer().addSymbol(detail::archive::kText)};
      const Index values[] = {writer().addUID(uidOfClass(kMutableString)), null_};
      bodies_[nullTextUID_] = writer().addMap(keys, values);
    }
    return nullTextUID_;
  }

  UID reference(const Object& object, bool isConditional) {
    switch (object.codingKind()) {
      case CodingKind::string:
        return uidOfString(static_cast<const StringObject*>(&object));
      case CodingKind::number:
        return uidOfValue(scalar(static_cast<const Number&>(object)));
      default:
        break;
    }
    UID uid = identities_.find(&object);
    if (uid == detail::IdentityTable::kNone) {
      uid = newUID();
      identities_.set(&object, uid);
      objects_.append(Ref<const Object>(&object));
    }
    if (!isConditional && !queued_[uid]) {
      queued_[uid] = true;
      pending_.push_back({&object, uid, coder().codingType()});
    }
    return uid;
  }

  Index refer(const Object& object) { return writer().addUID(reference(object, false)); }

  UID uidOfClass(const Class& record) {
    if (const UID known = classes().of(record).written; known != 0) return known;
    const UID uid = newUID();
    std::vector<Index> chain;
    for (const Class* base = &record; base; base = base->superclass()) {
      chain.push_back(writer().addString(classes().of(*base).name()));
    }
    const Index keys[] = {writer().addSymbol(detail::archive::kClassName),
                          writer().addSymbol(detail::archive::kClassChain)};
    const Index values[] = {chain.front(), writer().addArray(chain)};
    bodies_[uid] = writer().addMap(keys, values);
    classes().of(record).written = uid;
    return uid;
  }

  // The record of a collection whose element UIDs are known.
  Index collectionBody(CodingKind kind, const std::vector<Index>& elements) {
    const Index classReference = writer().addUID(uidOfClass(classOfCollection(kind)));
    const Index classKey = writer().addSymbol(detail::archive::kClass);
    if (kind != CodingKind::orderedSet) {
      const Index keys[] = {classKey, writer().addSymbol(detail::archive::kMembers)};
      const Index values[] = {classReference, writer().addArray(elements)};
      return writer().addMap(keys, values);
    }
    std::vector<Index> keys{classKey};
    std::vector<Index> values{classReference};
    for (const Index element : elements) {
      keys.push_back(memberKey(values.size() - 1));
      values.push_back(element);
    }
    return writer().addMap(keys, values);
  }

  void addEntry(MapEntries& entries, const String& key, const Object& value) {
    entries.names.push_back(writer().addUID(uidOfString(key.object().get())));
    entries.values.push_back(refer(value));
  }

  Index mapBody(const MapEntries& entries) {
    const Index keys[] = {writer().addSymbol(detail::archive::kClass),
                          writer().addSymbol(detail::archive::kKeys),
                          writer().addSymbol(detail::archive::kMembers)};
    const Index values[] = {writer().addUID(uidOfClass(Dictionary::kClass)),
                            writer().addArray(entries.names), writer().addArray(entries.values)};
    return writer().addMap(keys, values);
  }

  Index body(const Object& value) {
    switch (const CodingKind kind = value.codingKind()) {
      case CodingKind::data:
        return writer().addData(static_cast<const Data&>(value).bytes());
      case CodingKind::list:
      case CodingKind::set:
      case CodingKind::orderedSet: {
        std::vector<Index> elements;
        eachMember(value, kind, [&](const Object& member) { elements.push_back(refer(member)); });
        return collectionBody(kind, elements);
      }
      case CodingKind::map: {
        MapEntries entries;
        eachEntry(value,
                  [&](const String& key, const Object& object) { addEntry(entries, key, object); });
        return mapBody(entries);
      }
      default:
        return recordOf(value);
    }
  }

  Index recordOf(const Object& value) {
    openFields(fields_);
    fields_.keys.push_back(writer().addSymbol(detail::archive::kClass));
    fields_.values.push_back(0);
    encodeContents(value);
    // After the keys: a class may substitute its own name while it encodes itself.
    fields_.values[0] = writer().addUID(uidOfClass(value.isa()));
    return writer().addMap(fields_.keys, fields_.values);
  }

  // Values that are written straight into the top bring what they refer to along.
  void workAtTop() {
    if (isEncoding()) return;
    const CodingTypeKeeper keeper(coder());
    setEncoding(true);
    work();
    setEncoding(false);
    open_ = &top_;
  }

  // Encodes everything that was referred to. The references that an object makes stand in the order
  // of its keys; the last is taken first, so they are turned round.
  void work() {
    std::reverse(pending_.begin(), pending_.end());
    while (!pending_.empty()) {
      const PendingObject next = pending_.back();
      pending_.pop_back();
      const std::size_t before = pending_.size();
      coder().setCodingType(next.codingType);
      bodies_[next.uid] = body(*next.object);
      std::reverse(pending_.begin() + static_cast<std::ptrdiff_t>(before), pending_.end());
    }
  }

  Index list_ = 0;
  Index null_ = 0;
  detail::SegmentedBuffer<Index> bodies_;  // for each UID
  std::vector<bool> queued_;               // for each UID
  detail::KeptObjects objects_;            // those that have an identity
  detail::IdentityTable identities_;
  detail::NumberTable valueUIDs_;  // UID of the string or number that is this object of the list
  UID nullTextUID_ = 0;
  std::vector<PendingObject> pending_;  // the next to be encoded stands last
  Fields top_;
  Fields fields_;
  Fields* open_ = nullptr;  // the fields that receive keyed values
};

}  // namespace

StandardKeyedArchiver::StandardKeyedArchiver() : KeyedArchiver(std::make_unique<Layout>()) {}
StandardKeyedArchiver::~StandardKeyedArchiver() = default;

Result<Ref<Data>> StandardKeyedArchiver::archivedData(const Object* root, std::int32_t codingType) {
  StandardKeyedArchiver archiver;
  archiver.setCodingType(codingType);
  archiver.encodeRootObject(root);
  auto bytes = archiver.finishEncoding();
  if (!bytes) return std::move(bytes).status();
  return make<Data>(*std::move(bytes));
}

Status StandardKeyedArchiver::writeArchive(const Object* root, std::int32_t codingType,
                                           const std::string& path) {
  StandardKeyedArchiver archiver;
  archiver.setCodingType(codingType);
  archiver.encodeRootObject(root);
  return archiver.finishInFile(path);
}

void StandardKeyedArchiver::encodeRootObject(const Object* root) { putRoot(root); }

Result<std::vector<std::uint8_t>> StandardKeyedArchiver::finishEncoding() { return finish(); }

}  // namespace tarnkit
