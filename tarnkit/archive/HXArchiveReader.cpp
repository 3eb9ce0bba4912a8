#include "tarnkit/archive/HXArchiveReader.h"

#include <utility>
#include <vector>

#include "tarnkit/platform/coding/KeyedArchiveNames.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"

namespace tarnkit {

namespace archive = detail::archive;

namespace {

using Kind = PropertyList::Kind;
using Index = PropertyList::Index;

constexpr std::string_view kImageEntryClass = "PMImageStoreEntry";

std::string_view classOfBody(const PropertyList& list, Index body) noexcept {
  if (list.kind(body) != Kind::map) return {};
  const Index name = list.valueOfKind(body, archive::kClass.text(), Kind::string);
  return name == PropertyList::kNone ? std::string_view() : list.string(name);
}

// The class of the root object; looked up without an index, once.
std::string_view classOfRoot(const PropertyList& list, Index objects, Index root) noexcept {
  const Index id = list.valueOfKind(root, archive::kReference.text(), Kind::string);
  if (id == PropertyList::kNone) return {};
  const Index body = list.valueForKey(objects, list.string(id));
  return body == PropertyList::kNone ? std::string_view() : classOfBody(list, body);
}

}  // namespace

HXArchiveReader::Visitor::~Visitor() = default;

HXArchiveKind HXArchiveReader::sniff(const PropertyList& list) noexcept {
  const Index top = list.root();
  if (top == PropertyList::kNone || list.kind(top) != Kind::map) return HXArchiveKind::none;
  const Index archiver = list.valueOfKind(top, archive::kArchiver.text(), Kind::string);
  if (archiver != PropertyList::kNone) {
    const bool isStandard =
        list.string(archiver) == archive::kArchiverName &&
        list.valueOfKind(top, archive::kObjects.text(), Kind::array) != PropertyList::kNone;
    return isStandard ? HXArchiveKind::editorDocument : HXArchiveKind::none;
  }
  const Index objects = list.valueOfKind(top, archive::kObjects.text(), Kind::map);
  const Index root = list.valueOfKind(top, archive::kRoot.text(), Kind::map);
  if (objects == PropertyList::kNone || root == PropertyList::kNone ||
      list.valueOfKind(top, archive::kVersion.text(), Kind::string) == PropertyList::kNone) {
    return HXArchiveKind::none;
  }
  return classOfRoot(list, objects, root) == kImageEntryClass ? HXArchiveKind::imageArchive
                                                              : HXArchiveKind::deviceGraph;
}

HXArchiveKind HXArchiveReader::sniff(ByteSpan bytes) {
  const auto list = PropertyListReader::read(bytes);
  return list ? sniff(*list) : HXArchiveKind::none;
}

Status HXArchiveReader::open(ByteSpan bytes) {
  auto list = PropertyListReader::read(bytes);
  if (!list) {
    *this = HXArchiveReader();
    return std::move(list).status();
  }
  return open(*std::move(list));
}

Status HXArchiveReader::open(PropertyList list) {
  *this = HXArchiveReader();
  const auto kind = sniff(list);
  if (kind != HXArchiveKind::deviceGraph && kind != HXArchiveKind::imageArchive) {
    return Status::failure(StatusCode::unsupported, "neither a device graph nor an image archive");
  }
  list_ = std::move(list);
  kind_ = kind;
  const Index top = list_.root();
  root_ = list_.valueForKey(top, archive::kRoot.text());
  version_ = list_.string(list_.valueForKey(top, archive::kVersion.text()));
  classKey_ = list_.keyNamed(archive::kClass.text());
  referenceKey_ = list_.keyNamed(archive::kReference.text());
  const Index objects = list_.valueForKey(top, archive::kObjects.text());
  ids_ = list_.keys(objects);
  bodies_ = list_.values(objects);
  objectsByKey_ = PropertyListKeyMap<Object>(list_, kNoObject);
  for (Object object = 0; object < objectCount(); ++object) {
    objectsByKey_[list_.keyOf(ids_[object])] = object;
  }
  return {};
}

HXArchiveReader::Object HXArchiveReader::objectNamed(std::string_view id) const noexcept {
  const auto key = list_.keyNamed(id);
  return key == PropertyList::kNoKey ? kNoObject : objectsByKey_[key];
}

std::string_view HXArchiveReader::classOf(Object object) const {
  const Index name = findClass(bodies_[object]);
  return name == PropertyList::kNone ? std::string_view() : list_.string(name);
}

Index HXArchiveReader::findClass(Index body) const {
  if (list_.kind(body) != Kind::map) return PropertyList::kNone;
  constexpr std::uint32_t kFew = 8;
  const bool isSought = list_.count(body) > kFew && list_.keyOf(list_.keys(body)[0]) != classKey_;
  if (!isSought) return list_.valueOfKind(body, classKey_, Kind::string);
  const auto [known, isNew] = classesOfBodies_.try_emplace(body, PropertyList::kNone);
  if (isNew) known->second = list_.valueOfKind(body, classKey_, Kind::string);
  return known->second;
}

bool HXArchiveReader::isReference(Index value) const noexcept {
  return list_.kind(value) == Kind::map && list_.count(value) == 1 &&
         list_.keyOf(list_.keys(value)[0]) == referenceKey_ &&
         list_.kind(list_.values(value)[0]) == Kind::string;
}

HXArchiveReader::Object HXArchiveReader::resolve(Index reference) const {
  const Index id = list_.values(reference)[0];
  const auto key = list_.keyOf(id);
  if (key != PropertyList::kNoKey) return objectsByKey_[key];
  // As a rule the string in a reference is the very one that is the key in "$objects".
  const auto [found, isNew] = foreignIDs_.try_emplace(id, kNoObject);
  if (isNew) found->second = objectNamed(list_.string(id));
  return found->second;
}

void HXArchiveReader::walk(Visitor& visitor) const {
  struct Step {
    PropertyList::Elements keys;  // none of a list
    PropertyList::Elements values;
    std::uint32_t next;
    bool isMap;
  };
  std::vector<bool> metObjects(objectCount());
  std::vector<bool> metContainers(list_.count());
  std::vector<Step> path;
  const auto open = [&](Index container, bool isMap) {
    const auto values = isMap ? list_.values(container) : list_.elements(container);
    list_.prefetch(values);
    metContainers[container] = true;
    path.push_back({isMap ? list_.keys(container) : PropertyList::Elements(), values, 0, isMap});
  };
  const auto enter = [&](Index value) {
    Object object = kNoObject;
    if (isReference(value)) {
      object = resolve(value);
      if (object == kNoObject) return visitor.nil();
      if (metObjects[object]) return visitor.repeated(object);
      metObjects[object] = true;
      value = bodyOf(object);
    }
    if (list_.kind(value) == Kind::map && !metContainers[value]) {
      visitor.beginMap(object, list_.count(value));
      open(value, true);
    } else if (list_.kind(value) == Kind::array && !metContainers[value]) {
      visitor.beginList(object, list_.count(value));
      open(value, false);
    } else {
      visitor.value(object, value);
    }
  };
  enter(root_);
  while (!path.empty()) {
    Step& step = path.back();
    if (step.next == step.values.size()) {
      const bool isMap = step.isMap;
      path.pop_back();
      if (isMap) {
        visitor.endMap();
      } else {
        visitor.endList();
      }
      continue;
    }
    const std::uint32_t at = step.next++;
    const Index value = step.values[at];
    if (step.isMap) {
      const Index name = step.keys[at];
      if (list_.keyOf(name) == classKey_) continue;
      visitor.key(name);
    }
    enter(value);
  }
}

}  // namespace tarnkit
