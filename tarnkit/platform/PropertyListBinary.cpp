#include <algorithm>
#include <bit>
#include <cstring>

#include "tarnkit/platform/PropertyListBuilder.h"
#include "tarnkit/platform/PropertyListForms.h"
#include "tarnkit/platform/PropertyListReader.h"
#include "tarnkit/platform/UTF8.h"

namespace tarnkit::detail {

namespace {

using Kind = PropertyList::Kind;
using Index = PropertyList::Index;

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kTrailerSize = 32;

std::uint64_t bigEndian(const std::uint8_t* at, unsigned width) noexcept {
  std::uint64_t value = 0;
  for (unsigned i = 0; i < width; ++i) value = (value << 8) | at[i];
  return value;
}

class BinaryParser {
 public:
  BinaryParser(ByteSpan bytes, PropertyListBuilder& builder, std::string& error) noexcept
      : bytes_(bytes), builder_(builder), error_(error) {}

  bool parse() {
    if (!readTrailer()) return false;
    budget_ = tableStart_ - kHeaderSize + PropertyListReader::kOverlapAllowance;
    const std::uint8_t* const table = bytes_.data() + tableStart_;
    for (std::uint64_t i = 0; i < objectCount_; ++i) {
      const std::uint64_t offset = bigEndian(table + i * offsetWidth_, offsetWidth_);
      if (offset < kHeaderSize || offset >= tableStart_) {
        return refuse("an offset points outside of the objects");
      }
      if (!parseObject(static_cast<std::size_t>(offset))) return false;
    }
    return true;
  }

 private:
  bool refuse(const char* reason) {
    error_ = reason;
    return false;
  }

  bool readTrailer() {
    if (bytes_.size() < kHeaderSize + 1 + 1 + kTrailerSize) return refuse("it is too short");
    if (std::memcmp(bytes_.data(), "bplist00", kHeaderSize) != 0) {
      return refuse("its version is unknown");
    }
    const std::size_t trailerStart = bytes_.size() - kTrailerSize;
    const std::uint8_t* const trailer = bytes_.data() + trailerStart;
    offsetWidth_ = trailer[6];
    referenceWidth_ = trailer[7];
    objectCount_ = bigEndian(trailer + 8, 8);
    const std::uint64_t root = bigEndian(trailer + 16, 8);
    const std::uint64_t tableStart = bigEndian(trailer + 24, 8);
    if (offsetWidth_ < 1 || offsetWidth_ > 8 || referenceWidth_ < 1 || referenceWidth_ > 8) {
      return refuse("a width is not 1 to 8 bytes");
    }
    if (tableStart <= kHeaderSize || tableStart >= trailerStart) {
      return refuse("the table of offsets stands outside of the file");
    }
    tableStart_ = static_cast<std::size_t>(tableStart);
    const std::size_t tableSize = trailerStart - tableStart_;
    if (objectCount_ == 0 || tableSize % offsetWidth_ != 0 ||
        objectCount_ != tableSize / offsetWidth_) {
      return refuse("the table of offsets and the length of the file do not agree");
    }
    if (root >= objectCount_) return refuse("the root is no object of the file");
    builder_.setRoot(static_cast<Index>(root));
    // Archives hold about two references for each object; more find room as they come.
    builder_.expect(tableSize / offsetWidth_,
                    std::min(tableStart_ / referenceWidth_, tableSize / offsetWidth_ * 2));
    return true;
  }

  // Whether `count` items of `width` bytes from `at` on lie among the objects, and takes them from
  // what all objects together may come to.
  bool take(std::size_t at, std::uint64_t count, unsigned width) {
    if (count > (tableStart_ - at) / width) {
      return refuse("an object reaches beyond the objects");
    }
    const std::uint64_t size = count * width + 1;
    if (size > budget_) return refuse("its objects overlap too much");
    budget_ -= size;
    return true;
  }

  // A count of 15 says that an integer with the real count follows.
  bool readCount(std::size_t& at, unsigned low, std::uint64_t& count) {
    count = low;
    if (low != 15) return true;
    if (at >= tableStart_ || (bytes_[at] & 0xFC) != 0x10) {
      return refuse("a count is not an integer");
    }
    const unsigned width = 1U << (bytes_[at] & 3U);
    ++at;
    if (width > tableStart_ - at) return refuse("an object reaches beyond the objects");
    count = bigEndian(bytes_.data() + at, width);
    at += width;
    return true;
  }

  bool parseObject(std::size_t at) {
    const unsigned marker = bytes_[at++];
    const unsigned low = marker & 0x0FU;
    std::uint64_t count = 0;
    switch (marker >> 4) {
      case 0x0:
        return parseSingle(at, marker);
      case 0x1:
        return parseInteger(at, low);
      case 0x2:
        return parseReal(at, low);
      case 0x3:
        if (low != 3) return refuse("an object of an unknown kind");
        if (!take(at, 8, 1)) return false;
        builder_.addReal(Kind::date, std::bit_cast<double>(bigEndian(bytes_.data() + at, 8)));
        return true;
      case 0x4:
        if (!readCount(at, low, count) || !take(at, count, 1)) return false;
        builder_.addSpan(Kind::data, at, static_cast<std::size_t>(count));
        return true;
      case 0x5:
        return readCount(at, low, count) && take(at, count, 1) && parseASCII(at, count);
      case 0x6:
        return readCount(at, low, count) && take(at, count, 2) && parseUTF16(at, count);
      case 0x8:
        return parseUID(at, low + 1);
      case 0xA:
        return readCount(at, low, count) && take(at, count, referenceWidth_) &&
               parseReferences(Kind::array, at, count, count);
      case 0xD:
        return readCount(at, low, count) && take(at, count, 2 * referenceWidth_) &&
               parseReferences(Kind::map, at, count, count * 2);
      default:
        return refuse("an object of an unknown kind");
    }
  }

  bool parseSingle(std::size_t at, unsigned marker) {
    if (!take(at, 0, 1)) return false;
    if (marker == 0x00) {
      builder_.addInteger(Kind::null, 0);
    } else if (marker == 0x08 || marker == 0x09) {
      builder_.addInteger(Kind::boolean, marker & 1U);
    } else {
      return refuse("an object of an unknown kind");
    }
    return true;
  }

  bool parseInteger(std::size_t at, unsigned power) {
    if (power > 4) return refuse("an integer of an unknown width");
    const unsigned width = 1U << power;
    if (!take(at, width, 1)) return false;
    const std::uint8_t* const digits = bytes_.data() + at;
    if (width < 16) {
      // Up to 4 bytes are unsigned, 8 bytes are signed.
      builder_.addInteger(Kind::integer, static_cast<std::int64_t>(bigEndian(digits, width)));
      return true;
    }
    const auto high = static_cast<std::int64_t>(bigEndian(digits, 8));
    const std::uint64_t low = bigEndian(digits + 8, 8);
    const auto value = static_cast<std::int64_t>(low);
    if (high == value >> 63) {
      builder_.addInteger(Kind::integer, value);
    } else if (high == 0) {
      builder_.addInteger(Kind::unsignedInteger, value);
    } else {
      builder_.addReal(Kind::wideInteger,
                       static_cast<double>(high) * 0x1p64 + static_cast<double>(low));
    }
    return true;
  }

  bool parseReal(std::size_t at, unsigned power) {
    if (power != 2 && power != 3) return refuse("a real number of an unknown width");
    const unsigned width = 1U << power;
    if (!take(at, width, 1)) return false;
    const std::uint64_t bits = bigEndian(bytes_.data() + at, width);
    if (width == 4) {
      const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
      builder_.addReal(Kind::real32, static_cast<double>(value));
    } else {
      builder_.addReal(Kind::real64, std::bit_cast<double>(bits));
    }
    return true;
  }

  bool parseUID(std::size_t at, unsigned width) {
    if (width > 8) return refuse("a UID of an unknown width");
    if (!take(at, width, 1)) return false;
    builder_.addInteger(Kind::uid, static_cast<std::int64_t>(bigEndian(bytes_.data() + at, width)));
    return true;
  }

  bool parseASCII(std::size_t at, std::uint64_t count) {
    const auto size = static_cast<std::size_t>(count);
    if (!isASCII({reinterpret_cast<const char*>(bytes_.data() + at), size})) {
      return refuse("an ASCII string has a byte above 127");
    }
    builder_.addSpan(Kind::string, at, size);
    return true;
  }

  bool parseUTF16(std::size_t at, std::uint64_t count) {
    auto& arena = builder_.arena();
    const std::size_t start = arena.size();
    const auto units = static_cast<std::size_t>(count);
    char* const room = arena.room(units * 3 + 1);
    std::size_t size = 0;
    const std::uint8_t* const text = bytes_.data() + at;
    for (std::size_t i = 0; i < units; ++i) {
      auto unit = static_cast<std::uint32_t>(bigEndian(text + 2 * i, 2));
      if (unit >= 0xD800 && unit < 0xE000) {
        const auto low =
            i + 1 < units ? static_cast<std::uint32_t>(bigEndian(text + 2 * i + 2, 2)) : 0U;
        if (unit >= 0xDC00 || low < 0xDC00 || low >= 0xE000) {
          return refuse("a string has half of a surrogate pair");
        }
        unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        ++i;
      }
      size += writeUTF8(unit, room + size);
    }
    arena.commit(size);
    builder_.addFromArena(Kind::string, start);
    return true;
  }

  bool parseReferences(Kind kind, std::size_t at, std::uint64_t count, std::uint64_t references) {
    const auto number = static_cast<std::size_t>(references);
    Index* const into = builder_.addContainer(kind, static_cast<std::size_t>(count), number);
    const std::uint8_t* const from = bytes_.data() + at;
    std::uint64_t largest = 0;
    const auto copy = [&](unsigned width) {
      for (std::size_t i = 0; i < number; ++i) {
        const std::uint64_t value = bigEndian(from + i * width, width);
        largest = std::max(largest, value);
        into[i] = static_cast<Index>(value);
      }
    };
    switch (referenceWidth_) {  // the usual widths as constants, for the compiler's sake
      case 1:
        copy(1);
        break;
      case 2:
        copy(2);
        break;
      case 4:
        copy(4);
        break;
      default:
        copy(referenceWidth_);
    }
    if (number > 0 && largest >= objectCount_) {
      return refuse("a reference points to no object of the file");
    }
    return true;
  }

  ByteSpan bytes_;
  PropertyListBuilder& builder_;
  std::string& error_;
  unsigned offsetWidth_ = 0;
  unsigned referenceWidth_ = 0;
  std::uint64_t objectCount_ = 0;
  std::size_t tableStart_ = 0;
  std::uint64_t budget_ = 0;
};

}  // namespace

bool parseBinaryPropertyList(ByteSpan bytes, PropertyListBuilder& builder, std::string& error) {
  return BinaryParser(bytes, builder, error).parse();
}

}  // namespace tarnkit::detail
