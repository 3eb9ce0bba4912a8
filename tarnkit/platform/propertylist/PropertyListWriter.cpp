#include "tarnkit/platform/propertylist/PropertyListWriter.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "tarnkit/platform/collections/KeyedHash.h"
#include "tarnkit/platform/objects/HugePages.h"
#include "tarnkit/platform/propertylist/PropertyListEncoding.h"
#include "tarnkit/platform/text/UTF8.h"

namespace tarnkit {

namespace {

using namespace detail::marker;
using detail::bigEndian;

constexpr std::size_t kHeaderSize = detail::kPropertyListHeaderSize;
constexpr std::size_t kTrailerSize = detail::kPropertyListTrailerSize;
constexpr std::size_t kMaximumCountSize = 6;  // a marker, an integer's marker and 4 bytes
constexpr std::size_t kSlack = 16;            // bytes that may be read past a small scalar
constexpr std::size_t kPiece = std::size_t{1} << 18;
constexpr char kMagic[] = "bplist00";

[[noreturn]] void throwTooLarge() {
  throw std::length_error("the property list is too large to be written");
}

template <class Word>
std::uint8_t* put(std::uint8_t* at, Word value) noexcept {
  value = bigEndian(value);
  std::memcpy(at, &value, sizeof value);
  return at + sizeof value;
}

// How many bytes an unsigned number takes: 1, 2, 4 or 8.
unsigned widthOf(std::uint64_t value) noexcept {
  if (value <= 0xFF) return 1;
  if (value <= 0xFFFF) return 2;
  return value <= 0xFFFFFFFFU ? 4 : 8;
}

std::uint8_t* putWidth(std::uint8_t* at, std::uint64_t value, unsigned width) noexcept {
  switch (width) {
    case 1:
      return put(at, static_cast<std::uint8_t>(value));
    case 2:
      return put(at, static_cast<std::uint16_t>(value));
    case 4:
      return put(at, static_cast<std::uint32_t>(value));
    default:
      return put(at, value);
  }
}

std::size_t countSize(std::size_t count) noexcept {
  return count < 15 ? 1 : 2 + std::size_t{widthOf(count)};
}

std::uint8_t* putCount(std::uint8_t* at, std::uint8_t marker, std::size_t count) noexcept {
  if (count < 15) return put(at, static_cast<std::uint8_t>(marker | count));
  const unsigned width = widthOf(count);
  at = put(at, static_cast<std::uint8_t>(marker | 0x0F));
  at = put(at, static_cast<std::uint8_t>(kInteger | std::countr_zero(width)));
  return putWidth(at, count, width);
}

template <class Word>
std::uint8_t* putAll(std::uint8_t* at, const std::uint32_t* values, std::size_t count) noexcept {
  for (std::size_t i = 0; i < count; ++i) {
    const Word value = bigEndian(static_cast<Word>(values[i]));
    std::memcpy(at + i * sizeof value, &value, sizeof value);
  }
  return at + count * sizeof(Word);
}

std::uint8_t* putReferences(std::uint8_t* at, const std::uint32_t* values, std::size_t count,
                            unsigned width) noexcept {
  if (width == 1) return putAll<std::uint8_t>(at, values, count);
  if (width == 2) return putAll<std::uint16_t>(at, values, count);
  return putAll<std::uint32_t>(at, values, count);
}

// Most scalars are small: they are copied in one piece, with what follows them, which the next
// object overwrites.
std::uint8_t* putScalar(std::uint8_t* at, const std::uint8_t* end, const std::uint8_t* bytes,
                        std::size_t size) noexcept {
  if (size <= kSlack && kSlack <= static_cast<std::size_t>(end - at)) {
    std::memcpy(at, bytes, kSlack);
  } else {
    std::memcpy(at, bytes, size);
  }
  return at + size;
}

std::uint8_t* putTrailer(std::uint8_t* at, unsigned offsetWidth, unsigned width,
                         std::size_t objects, std::uint32_t root, std::size_t tableStart) noexcept {
  at = put(put(at, std::uint32_t{0}), std::uint16_t{0});
  at = put(at, static_cast<std::uint8_t>(offsetWidth));
  at = put(at, static_cast<std::uint8_t>(width));
  at = put(at, static_cast<std::uint64_t>(objects));
  at = put(at, static_cast<std::uint64_t>(root));
  return put(at, static_cast<std::uint64_t>(tableStart));
}

bool areEqual(const std::uint8_t* a, const std::uint8_t* b, std::size_t size) noexcept {
  const auto word = [](const std::uint8_t* at) {
    std::uint64_t value = 0;
    std::memcpy(&value, at, sizeof value);
    return value;
  };
  if (size < 8) {
    for (std::size_t i = 0; i < size; ++i) {
      if (a[i] != b[i]) return false;
    }
    return true;
  }
  for (std::size_t i = 0; i + 8 < size; i += 8) {
    if (word(a + i) != word(b + i)) return false;
  }
  return word(a + size - 8) == word(b + size - 8);
}

}  // namespace

PropertyListWriter::PropertyListWriter() { smallInts_.fill(kNone); }
PropertyListWriter::~PropertyListWriter() = default;

PropertyListWriter::Index PropertyListWriter::addRecord(std::size_t position, Form form,
                                                        std::size_t count) {
  if (position > kMaximumSize || count > kMaximumCount || records_.size() >= kMaximumSize) {
    throwTooLarge();
  }
  records_.append(
      {static_cast<std::uint32_t>(position),
       (static_cast<std::uint32_t>(form) << kFormShift) | static_cast<std::uint32_t>(count)});
  return static_cast<Index>(records_.size() - 1);
}

PropertyListWriter::Index PropertyListWriter::addNewSymbol(const Symbol& symbol,
                                                           std::uint32_t number) {
  if (number >= symbols_.size()) {
    symbols_.resize(std::max<std::size_t>(Symbol::count(), number + std::size_t{1}), kNone);
  }
  return symbols_[number] = addText(symbol.text(), true);
}

// For a scalar, with what may be read past it.
std::uint8_t* PropertyListWriter::roomFor(std::size_t bytes) { return bytes_.room(bytes + kSlack); }

PropertyListWriter::Index PropertyListWriter::addText(std::string_view utf8, bool shared) {
  if (utf8.size() > kMaximumCount) throwTooLarge();
  std::size_t size = 0;
  if (detail::isASCII(utf8)) {
    std::uint8_t* const room = roomFor(utf8.size() + kMaximumCountSize);
    std::uint8_t* const text = putCount(room, kASCII, utf8.size());
    if (!utf8.empty()) std::memcpy(text, utf8.data(), utf8.size());
    size = static_cast<std::size_t>(text - room) + utf8.size();
  } else {
    std::size_t units = 0;
    for (std::size_t at = 0; at < utf8.size();) {
      const auto point = detail::codePointAt(utf8, at);
      units += point.value < 0x10000 ? 1 : 2;
      at += point.size;
    }
    std::uint8_t* const room = roomFor(units * 2 + kMaximumCountSize);
    std::uint8_t* into = putCount(room, kUTF16, units);
    for (std::size_t at = 0; at < utf8.size();) {
      const auto point = detail::codePointAt(utf8, at);
      at += point.size;
      if (point.value < 0x10000) {
        into = put(into, static_cast<std::uint16_t>(point.value));
      } else {
        const std::uint32_t rest = point.value - 0x10000;
        into = put(into, static_cast<std::uint16_t>(0xD800U + (rest >> 10)));
        into = put(into, static_cast<std::uint16_t>(0xDC00U + (rest & 0x3FFU)));
      }
    }
    size = static_cast<std::size_t>(into - room);
  }
  return addScalar(size, shared);
}

PropertyListWriter::Index PropertyListWriter::addLongString(const StringObject& text) {
  KnownText& known = longTexts_[&text];
  if (!known.text) known = {Ref<const StringObject>(&text), addText(text.view(), true)};
  return known.index;
}

PropertyListWriter::Index PropertyListWriter::addOtherInt(std::int64_t value) {
  const unsigned width = widthOf(static_cast<std::uint64_t>(value));
  std::uint8_t* const room = roomFor(9);
  put(room, static_cast<std::uint8_t>(kInteger | std::countr_zero(width)));
  putWidth(room + 1, static_cast<std::uint64_t>(value), width);
  return addScalar(1 + width, true);
}

PropertyListWriter::Index PropertyListWriter::addReal32(float value) {
  put(put(roomFor(5), static_cast<std::uint8_t>(kReal | 2)), std::bit_cast<std::uint32_t>(value));
  return addScalar(5, true);
}

PropertyListWriter::Index PropertyListWriter::addReal64(double value) {
  put(put(roomFor(9), static_cast<std::uint8_t>(kReal | 3)), std::bit_cast<std::uint64_t>(value));
  return addScalar(9, true);
}

PropertyListWriter::Index PropertyListWriter::addBool(bool value) {
  Index& known = booleans_[value ? 1 : 0];
  if (known == kNone) {
    put(roomFor(1), value ? kTrue : kFalse);
    known = addScalar(1, false);
  }
  return known;
}

PropertyListWriter::Index PropertyListWriter::addData(ByteSpan bytes) {
  if (bytes.size() > kMaximumCount) throwTooLarge();
  std::uint8_t* const room = roomFor(bytes.size() + kMaximumCountSize);
  std::uint8_t* const into = putCount(room, kData, bytes.size());
  if (!bytes.empty()) std::memcpy(into, bytes.data(), bytes.size());
  return addScalar(static_cast<std::size_t>(into - room) + bytes.size(), false);
}

PropertyListWriter::Index PropertyListWriter::addUID(std::uint32_t value) {
  if (value < uids_.size() && uids_[value] != kNone) return uids_[value];
  const unsigned width = widthOf(value);
  std::uint8_t* const room = roomFor(5);
  put(room, static_cast<std::uint8_t>(kUID | (width - 1)));
  putWidth(room + 1, value, width);
  // Archives number their objects from 0, so the index by value stays as small as the archive; a
  // stray large number is hashed instead.
  if (value > records_.size()) return addScalar(1 + width, true);
  uids_.extend(value + std::size_t{1}, kNone);
  return uids_[value] = addScalar(1 + width, false);
}

PropertyListWriter::Index PropertyListWriter::addArray(std::span<const Index> elements) {
  const Index array = reserve();
  std::copy(elements.begin(), elements.end(), fillArray(array, elements.size()).begin());
  return array;
}

PropertyListWriter::Index PropertyListWriter::addMap(std::span<const Index> keys,
                                                     std::span<const Index> values) {
  assert(keys.size() == values.size());
  const Index map = reserve();
  std::copy(values.begin(), values.end(), fillMap(map, keys).begin());
  return map;
}

PropertyListWriter::Index PropertyListWriter::reserve() { return addRecord(0, Form::reserved, 0); }

std::span<PropertyListWriter::Index> PropertyListWriter::fillArray(Index object,
                                                                   std::size_t count) {
  return fill(object, Form::array, count, count);
}

PropertyListWriter::MapRoom PropertyListWriter::fillMap(Index object, std::size_t count) {
  const auto words = fill(object, Form::map, count, 1 + count * 2);
  words[count] = std::exchange(records_[object].position,
                               records_[object].position + static_cast<std::uint32_t>(count));
  return {words.first(count), words.subspan(count + 1)};
}

std::span<PropertyListWriter::Index> PropertyListWriter::fillMap(Index object,
                                                                 std::span<const Index> keys) {
  const std::uint32_t position = positionOfKeys(keys);
  const auto words = fill(object, Form::map, keys.size(), 1 + keys.size());
  words[0] = position;
  return words.subspan(1);
}

std::span<PropertyListWriter::Index> PropertyListWriter::fill(Index object, Form form,
                                                              std::size_t count,
                                                              std::size_t references) {
  assert(object < records_.size() && formOf(records_[object]) == Form::reserved);
  if (count > kMaximumCount) throwTooLarge();
  const auto words = appendReferences(references);
  records_[object] = {
      static_cast<std::uint32_t>(references_.size() - references),
      (static_cast<std::uint32_t>(form) << kFormShift) | static_cast<std::uint32_t>(count)};
  return words;
}

std::span<PropertyListWriter::Index> PropertyListWriter::appendReferences(std::size_t count) {
  if (count > kMaximumSize) throwTooLarge();
  Index* const room = references_.room(count);
  references_.commit(count);
  if (references_.size() > kMaximumSize) throwTooLarge();
  return {room, count};
}

std::uint32_t PropertyListWriter::positionOfKeys(std::span<const Index> keys) {
  if (keys.empty()) return 0;
  const std::uint32_t mixed =
      (keys.front() * 31U + keys.back()) * 31U + static_cast<std::uint32_t>(keys.size());
  KnownKeys& known = knownKeys_[mixed * 0x9E3779B9U >> (32 - kKnownKeysBits)];
  const auto areKnown = [&] {
    const Index* const at = references_.at(known.position);
    return *at == keys.front() && std::equal(keys.begin() + 1, keys.end(), at + 1);
  };
  if (known.count != keys.size() || !areKnown()) {
    const auto into = appendReferences(keys.size());
    std::copy(keys.begin(), keys.end(), into.begin());
    known = {static_cast<std::uint32_t>(references_.size() - keys.size()),
             static_cast<std::uint32_t>(keys.size())};
  }
  return known.position;
}

// The scalar's encoded bytes stand in the room at the end of the buffer; when an equal one is there
// already, they are left out. Comparing the encoding compares kind, width and bytes at once.
PropertyListWriter::Index PropertyListWriter::addScalar(std::size_t size, bool shared) {
  const std::size_t start = bytes_.size();
  const auto add = [&] {
    bytes_.commit(size);
    return addRecord(start, Form::scalar, size);
  };
  if (!shared) return add();
  if (tableUsed_ * 2 >= table_.size()) growTable();
  const std::uint8_t* const bytes = bytes_.at(start);
  const auto hash = static_cast<std::uint32_t>(detail::keyedHash(bytes, size, detail::hashKeys()));
  const std::size_t mask = table_.size() - 1;
  for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
    Slot& slot = table_[at];
    if (slot.indexPlusOne == 0) {
      const Index index = add();
      slot = {hash, index + 1};
      ++tableUsed_;
      return index;
    }
    if (slot.hash != hash) continue;
    const Record& record = records_[slot.indexPlusOne - 1];
    if (record.formAndCount == size && areEqual(bytes_.at(record.position), bytes, size)) {
      return slot.indexPlusOne - 1;
    }
  }
}

void PropertyListWriter::growTable() {
  std::vector<Slot> larger(std::max<std::size_t>(256, table_.size() * 2));
  const std::size_t mask = larger.size() - 1;
  for (const Slot& slot : table_) {
    if (slot.indexPlusOne == 0) continue;
    std::size_t at = slot.hash & mask;
    while (larger[at].indexPlusOne != 0) at = (at + 1) & mask;
    larger[at] = slot;
  }
  table_ = std::move(larger);
}

std::size_t PropertyListWriter::sizeOf(const Record& record, unsigned width) const noexcept {
  const std::size_t count = record.formAndCount & kMaximumCount;
  switch (formOf(record)) {
    case Form::scalar:
      return count;
    case Form::array:
      return countSize(count) + count * width;
    default:
      return countSize(count) + 2 * count * width;
  }
}

// Every container refers to objects of the list, and a map's keys are strings.
bool PropertyListWriter::areReferencesSound() const noexcept {
  for (std::size_t i = 0; i < records_.size(); ++i) {
    const Form form = formOf(records_[i]);
    if (form != Form::array && form != Form::map) continue;
    const bool isMap = form == Form::map;
    const Index* const values =
        isMap ? valuesOf(records_[i]) : references_.at(records_[i].position);
    const std::size_t count = records_[i].formAndCount & kMaximumCount;
    const auto exists = [this](Index index) { return index < records_.size(); };
    const auto isString = [this](Index index) {
      const Record& key = records_[index];
      const auto marker = bytes_[key.position] & 0xF0;
      return formOf(key) == Form::scalar && (marker == kASCII || marker == kUTF16);
    };
    if (!std::all_of(values, values + count, exists)) return false;
    if (!isMap) continue;
    const Index* const keys = keysOf(records_[i]);
    if (!std::all_of(keys, keys + count, exists)) return false;
    if (!std::all_of(keys, keys + count, isString)) return false;
  }
  return true;
}

// Where the table of offsets begins.
std::size_t PropertyListWriter::prepareToFinish(unsigned width) {
  std::size_t size = kHeaderSize;
  const bool allFilled = records_.forEach([&](const Record& record) {
    size += sizeOf(record, width);
    return formOf(record) != Form::reserved;
  });
  if (!allFilled) {
    throw std::logic_error("a reserved object of the property list was never filled");
  }
  assert(areReferencesSound());
  // Given back before the output is made.
  table_ = std::vector<Slot>();
  tableUsed_ = 0;
  return size;
}

std::uint8_t* PropertyListWriter::putObject(std::uint8_t* at, const std::uint8_t* end,
                                            const Record& record, unsigned width) const noexcept {
  const std::size_t count = record.formAndCount & kMaximumCount;
  switch (formOf(record)) {
    case Form::scalar:
      return putScalar(at, end, bytes_.at(record.position), count);
    case Form::array:
      return putReferences(putCount(at, kArray, count), references_.at(record.position), count,
                           width);
    default:
      at = putReferences(putCount(at, kMap, count), keysOf(record), count, width);
      return putReferences(at, valuesOf(record), count, width);
  }
}

std::vector<std::uint8_t> PropertyListWriter::finish(Index root) {
  const std::size_t objects = records_.size();
  assert(root < objects);
  const unsigned width = widthOf(objects - 1);
  const std::size_t tableStart = prepareToFinish(width);
  const unsigned offsetWidth = widthOf(tableStart);
  const std::size_t size = tableStart + objects * offsetWidth + kTrailerSize;
  std::vector<std::uint8_t> output;
  output.reserve(size);
  detail::adviseHugePages(output.data(), size);
  output.resize(size);

  std::uint8_t* at = output.data();
  std::memcpy(at, kMagic, kHeaderSize);
  at += kHeaderSize;
  std::uint8_t* offset = output.data() + tableStart;
  const std::uint8_t* const end = offset;
  records_.forEach([&](const Record& record) {
    offset = putWidth(offset, static_cast<std::uint64_t>(at - output.data()), offsetWidth);
    at = putObject(at, end, record, width);
    return true;
  });
  putTrailer(offset, offsetWidth, width, objects, root, tableStart);
  return output;
}

bool PropertyListWriter::finish(Index root, FunctionRef<bool(ByteSpan)> take) {
  const std::size_t objects = records_.size();
  assert(root < objects);
  const unsigned width = widthOf(objects - 1);
  const std::size_t tableStart = prepareToFinish(width);
  const unsigned offsetWidth = widthOf(tableStart);
  std::vector<std::uint8_t> piece(kPiece);
  std::uint8_t* at = piece.data();
  const auto handOver = [&] {
    const ByteSpan written(piece.data(), static_cast<std::size_t>(at - piece.data()));
    at = piece.data();
    return take(written);
  };
  // Makes room for so many bytes, at most a piece.
  const auto makeRoom = [&](std::size_t size) {
    return size <= static_cast<std::size_t>(piece.data() + kPiece - at) || handOver();
  };
  std::memcpy(at, kMagic, kHeaderSize);
  at += kHeaderSize;
  const auto putInPieces = [&](const Index* references, std::size_t count) {
    while (count != 0) {
      const std::size_t some = std::min(count, kPiece / width);
      if (!makeRoom(some * width)) return false;
      at = putReferences(at, references, some, width);
      references += some;
      count -= some;
    }
    return true;
  };
  // An object that is larger than a piece.
  const auto putLarge = [&](const Record& record) {
    const std::size_t count = record.formAndCount & kMaximumCount;
    const Form form = formOf(record);
    if (form == Form::scalar) {
      return handOver() && take({bytes_.at(record.position), count});
    }
    if (!makeRoom(countSize(count))) return false;
    at = putCount(at, form == Form::array ? kArray : kMap, count);
    if (form == Form::array) return putInPieces(references_.at(record.position), count);
    return putInPieces(keysOf(record), count) && putInPieces(valuesOf(record), count);
  };
  const auto putOne = [&](const Record& record) {
    const std::size_t size = sizeOf(record, width);
    if (size > kPiece) return putLarge(record);
    if (!makeRoom(size)) return false;
    at = putObject(at, piece.data() + kPiece, record, width);
    return true;
  };
  std::uint64_t offset = kHeaderSize;
  const auto putOffset = [&](const Record& record) {
    if (!makeRoom(offsetWidth)) return false;
    at = putWidth(at, offset, offsetWidth);
    offset += sizeOf(record, width);
    return true;
  };
  if (!records_.forEach(putOne) || !records_.forEach(putOffset)) return false;
  if (!makeRoom(kTrailerSize)) return false;
  at = putTrailer(at, offsetWidth, width, objects, root, tableStart);
  return handOver();
}

void PropertyListWriter::clear() noexcept {
  bytes_.clear();
  references_.clear();
  records_.clear();
  table_ = std::vector<Slot>();
  tableUsed_ = 0;
  symbols_ = std::vector<Index>();
  uids_.clear();
  knownKeys_.fill({});
  recentTexts_.fill({});
  smallInts_.fill(kNone);
  longTexts_.clear();
  booleans_[0] = booleans_[1] = kNone;
}

}  // namespace tarnkit
