#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tarnkit/platform/coding/Coder.h"

namespace tarnkit::testing {

/// What an object wrote: objects by key, and lists of objects by key.
struct CodedObject {
  const Class* record = nullptr;
  Ref<Object> value;  // of a string or a number
  std::map<std::string, std::size_t, std::less<>> objects;
  std::map<std::string, std::vector<std::size_t>, std::less<>> lists;
};

/// Writes a graph of objects into memory, each once, without recursion.
class MemoryEncoder final : public Encoder {
 public:
  std::deque<CodedObject> records;  // the root first

  explicit MemoryEncoder(const Object& root) {
    idOf(&root);
    for (std::size_t i = 0; i < pending_.size(); ++i) {
      current_ = i;
      if (pending_[i]->codingKind() == CodingKind::object) pending_[i]->encodeWithCoder(*this);
    }
  }
  void encodeObject(const Object* object, const Symbol& key) override {
    const std::size_t id = idOf(object);
    records[current_].objects[std::string(key.text())] = id;
  }
  void encodeCollection(CodingKind, std::size_t count, FunctionRef<const Object*(std::size_t)> at,
                        const Symbol& key) override {
    std::vector<std::size_t> ids;
    for (std::size_t i = 0; i < count; ++i) ids.push_back(idOf(at(i)));
    records[current_].lists[std::string(key.text())] = ids;
  }
  using Encoder::encodeObject;
  void encodeBool(bool, const Symbol&) override {}
  void encodeInt(std::int32_t, const Symbol&) override {}
  void encodeInt64(std::int64_t, const Symbol&) override {}
  void encodeFloat(float, const Symbol&) override {}
  void encodeDouble(double, const Symbol&) override {}
  void encodeBytes(ByteSpan, const Symbol&) override {}
  void encodeConditionalObject(const Object*, const Symbol&) override {}
  void encodeMap(std::size_t, FunctionRef<MapEntry(std::size_t)>, const Symbol&) override {}
  void setClassName(const Symbol&, const Class&) override {}

 private:
  std::size_t idOf(const Object* object) {
    const auto [entry, isNew] = ids_.emplace(object, records.size());
    if (isNew) {
      records.push_back({&object->isa(), nullptr, {}, {}});
      if (object->codingKind() != CodingKind::object) {
        records.back().value = Ref<Object>(const_cast<Object*>(object));
      }
      pending_.push_back(object);
    }
    return entry->second;
  }

  std::map<const Object*, std::size_t> ids_;
  std::vector<const Object*> pending_;
  std::size_t current_ = 0;
};

/// Reads such records back: makes all objects, lets each read its keys, then wakes them.
class MemoryDecoder final : public Decoder {
 public:
  std::string reason;

  explicit MemoryDecoder(const std::deque<CodedObject>& records) : records_(records) {
    for (const CodedObject& each : records) {
      objects_.push_back(each.value ? each.value : each.record->make());
    }
    for (current_ = 0; current_ < objects_.size(); ++current_) {
      if (!records[current_].value) objects_[current_]->initWithCoder(*this);
    }
    for (std::size_t i = objects_.size(); i-- > 0;) objects_[i]->awakeAfterDecoding(*this);
    if (failed()) {
      for (const auto& object : objects_) object->abandonDecoding();
    }
  }
  Ref<Object> root() const { return failed() ? nullptr : objects_.front(); }

  Ref<Object> decodeObject(const Symbol& key) override {
    const auto found = records_[current_].objects.find(key.text());
    return found == records_[current_].objects.end() ? nullptr : objects_[found->second];
  }
  bool decodeCollection(const Symbol& key, FunctionRef<void(const Ref<Object>&)> visit) override {
    const auto found = records_[current_].lists.find(key.text());
    if (found == records_[current_].lists.end()) return false;
    for (const std::size_t id : found->second) visit(objects_[id]);
    return true;
  }
  void fail(Status failure) override {
    if (reason.empty()) reason = failure.sentence();
  }
  bool failed() const override { return !reason.empty(); }
  void eachDecoded(FunctionRef<void(Object&)> visit) const override {
    for (const auto& object : objects_) visit(*object);
  }
  bool containsValue(const Symbol&) override { return false; }
  bool decodeBool(const Symbol&) override { return false; }
  std::int32_t decodeInt(const Symbol&) override { return 0; }
  std::int64_t decodeInt64(const Symbol&) override { return 0; }
  float decodeFloat(const Symbol&) override { return 0; }
  double decodeDouble(const Symbol&) override { return 0; }
  std::vector<std::uint8_t> decodeBytes(const Symbol&) override { return {}; }
  bool decodeMap(const Symbol&, FunctionRef<void(const String&, const Ref<Object>&)>) override {
    return false;
  }

 private:
  const std::deque<CodedObject>& records_;
  std::vector<Ref<Object>> objects_;
  std::size_t current_ = 0;
};

}  // namespace tarnkit::testing
