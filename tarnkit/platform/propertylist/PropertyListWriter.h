#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/objects/FunctionRef.h"
#include "tarnkit/platform/propertylist/SegmentedBuffer.h"
#include "tarnkit/platform/text/String.h"
#include "tarnkit/platform/text/Symbol.h"

namespace tarnkit {

/// Writes a binary property list, made for speed: every object is a number, given in the order of
/// addition; scalars stand already encoded in one growing buffer, containers as spans of one array
/// of object numbers; there is no tree of boxed values.
///
/// Equal strings, integers, reals and booleans are one object, when kind, width and bytes agree.
/// Maps of the same keys hold them once, as long as they are met again soon: most are objects of a
/// few classes. A container whose contents are not known yet is reserved and filled later, so that
/// the root can be object 0. The file depends on nothing but the calls. Text that is not UTF-8 is
/// written with U+FFFD for every byte that does not fit in.
///
/// Belongs to whoever makes it; one thread at a time. Costs a hash per scalar and a copy per
/// container. Everything throws std::length_error when the list outgrows the writer: `kMaximumSize`
/// bytes of scalars or references, or a single value of `kMaximumCount`.
class PropertyListWriter {
 public:
  using Index = std::uint32_t;
  static constexpr std::size_t kMaximumSize = 0xFFFFFFF0U;
  static constexpr std::size_t kMaximumCount = 0x3FFFFFFFU;

  PropertyListWriter();
  PropertyListWriter(const PropertyListWriter&) = delete;
  PropertyListWriter& operator=(const PropertyListWriter&) = delete;
  ~PropertyListWriter();

  Index addString(std::string_view utf8) { return addText(utf8, true); }
  /// The string's text. The objects that were met last are remembered (and kept), and all those of
  /// long texts, so that a text that many objects share is not hashed for each.
  Index addString(const StringObject& text) {
    KnownText& known = recentTexts_[slotOf(text)];
    if (known.text.get() == &text) return known.index;
    known.text = nullptr;
    known.index =
        text.view().size() <= kLongText ? addText(text.view(), true) : addLongString(text);
    known.text = Ref<const StringObject>(&text);
    return known.index;
  }
  /// As `addString`, without looking for an equal one: for texts known to be different.
  Index addDistinctString(std::string_view utf8) { return addText(utf8, false); }
  /// The symbol's text; costs one look-up by number after the first time.
  Index addSymbol(const Symbol& symbol) {
    const auto number = symbol.number();
    if (number < symbols_.size() && symbols_[number] != kNone) return symbols_[number];
    return addNewSymbol(symbol, number);
  }
  /// 1, 2 or 4 bytes unsigned, else 8 signed.
  Index addInt(std::int64_t value) {
    if (value < 0 || value >= kSmallInts) return addOtherInt(value);
    Index& known = smallInts_[static_cast<std::size_t>(value)];
    if (known == kNone) known = addOtherInt(value);
    return known;
  }
  Index addReal32(float value);
  Index addReal64(double value);
  Index addBool(bool value);
  /// Never shared.
  Index addData(ByteSpan bytes);
  Index addUID(std::uint32_t value);
  Index addArray(std::span<const Index> elements);
  /// The keys must be strings and differ from each other.
  Index addMap(std::span<const Index> keys, std::span<const Index> values);

  /// An object to be filled, once, by one of the next two.
  Index reserve();
  /// Makes it an array; the elements are written to the span, before the next call of the writer.
  std::span<Index> fillArray(Index object, std::size_t count);
  /// Makes it a map; the spans take the keys and the values.
  struct MapRoom {
    std::span<Index> keys;
    std::span<Index> values;
  };
  MapRoom fillMap(Index object, std::size_t count);
  /// Makes it a map of these keys; the span takes the values.
  std::span<Index> fillMap(Index object, std::span<const Index> keys);

  /// The values of a map that is filled; valid until the next call.
  std::span<const Index> valuesOfMap(Index map) const noexcept {
    const Record& record = records_[map];
    return {valuesOf(record), record.formAndCount & kMaximumCount};
  }

  /// How many objects there are.
  std::size_t count() const noexcept { return records_.size(); }

  /// The property list with that root; every reserved object must be filled (std::logic_error). The
  /// writer can only be cleared or destroyed afterwards, or finished again.
  std::vector<std::uint8_t> finish(Index root);
  /// The same in pieces, so that the list never stands in memory as a whole. Whether all of them
  /// were taken: none is handed over after one that was refused.
  bool finish(Index root, FunctionRef<bool(ByteSpan)> take);
  /// Forgets everything.
  void clear() noexcept;

 private:
  static constexpr Index kNone = 0xFFFFFFFFU;
  static constexpr std::size_t kLongText = 256;
  static constexpr unsigned kRecentTextBits = 9;
  static constexpr std::int64_t kSmallInts = 64;
  enum class Form : std::uint32_t { scalar, array, map, reserved };
  // A scalar: `position` and `count` of its encoded bytes; an array: of its object numbers; a map:
  // of its values, before which stands the position of its keys.
  struct Record {
    std::uint32_t position;
    std::uint32_t formAndCount;
  };
  static constexpr unsigned kFormShift = 30;
  static Form formOf(const Record& record) noexcept {
    return static_cast<Form>(record.formAndCount >> kFormShift);
  }
  struct Slot {
    std::uint32_t hash;
    std::uint32_t indexPlusOne;
  };

  Index addNewSymbol(const Symbol& symbol, std::uint32_t number);
  Index addText(std::string_view utf8, bool shared);
  Index addLongString(const StringObject& text);
  Index addOtherInt(std::int64_t value);
  std::uint8_t* roomFor(std::size_t bytes);
  Index addScalar(std::size_t size, bool shared);
  Index addRecord(std::size_t position, Form form, std::size_t count);
  std::span<Index> fill(Index object, Form form, std::size_t count, std::size_t references);
  std::span<Index> appendReferences(std::size_t count);
  std::uint32_t positionOfKeys(std::span<const Index> keys);
  const Index* keysOf(const Record& map) const noexcept {
    return references_.at(references_[map.position]);
  }
  const Index* valuesOf(const Record& map) const noexcept {
    return references_.at(map.position) + 1;
  }
  void growTable();
  std::size_t sizeOf(const Record& record, unsigned width) const noexcept;
  std::uint8_t* putObject(std::uint8_t* at, const std::uint8_t* end, const Record& record,
                          unsigned width) const noexcept;
  std::size_t prepareToFinish(unsigned width);
  bool areReferencesSound() const noexcept;

  detail::SegmentedBuffer<std::uint8_t> bytes_;
  detail::SegmentedBuffer<Index> references_;
  detail::SegmentedBuffer<Record> records_;
  std::vector<Slot> table_;
  std::size_t tableUsed_ = 0;
  // Keys of maps that were met lately, by what tells most of them apart.
  struct KnownKeys {
    std::uint32_t position = 0;
    std::uint32_t count = 0;
  };
  static constexpr unsigned kKnownKeysBits = 8;
  std::array<KnownKeys, std::size_t{1} << kKnownKeysBits> knownKeys_;
  std::vector<Index> symbols_;
  detail::SegmentedBuffer<Index> uids_;  // by value
  struct KnownText {
    Ref<const StringObject> text;
    Index index = kNone;
  };
  static std::size_t slotOf(const StringObject& text) noexcept {
    constexpr std::uint64_t kGolden = 0x9E3779B97F4A7C15U;
    return reinterpret_cast<std::uintptr_t>(&text) * kGolden >> (64 - kRecentTextBits);
  }
  std::array<KnownText, std::size_t{1} << kRecentTextBits> recentTexts_;
  std::unordered_map<const StringObject*, KnownText> longTexts_;
  std::array<Index, kSmallInts> smallInts_;
  Index booleans_[2] = {kNone, kNone};
};

}  // namespace tarnkit
