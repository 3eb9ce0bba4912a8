#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "tarnkit/platform/propertylist/PropertyListBuilder.h"
#include "tarnkit/platform/propertylist/PropertyListForms.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/text/UTF8.h"

namespace tarnkit::detail {

namespace {

using Kind = PropertyList::Kind;
using Index = PropertyList::Index;

constexpr std::size_t kHeaderSize = kPropertyListHeaderSize;
constexpr std::size_t kTrailerSize = kPropertyListTrailerSize;

// Its steps tell by false that one of them has failed; the reason stands in `failure_`.
class BinaryParser {
 public:
  BinaryParser(ByteSpan bytes, PropertyListBuilder& builder) noexcept
      : bytes_(bytes), builder_(builder) {}

  Status parse() {
    if (parseObjects()) return {};
    return std::move(failure_);
  }

 private:
  bool parseObjects() {
    if (!readTrailer()) return false;
    budget_ = tableStart_ - kHeaderSize + PropertyListReader::kOverlapAllowance;
    const std::uint8_t* const table = bytes_.data() + tableStart_;
    const unsigned shift = shiftOfWidth(offsetWidth_);
    for (std::uint64_t i = 0; i < objectCount_; ++i) {
      const std::uint64_t offset = readWidth(table + i * offsetWidth_, shift);
      if (offset < kHeaderSize || offset >= tableStart_) {
        return refuse("an offset points outside of the objects");
      }
      if (!parseObject(static_cast<std::size_t>(offset))) return false;
    }
    return true;
  }

  bool refuse(const char* reason) { return refuse(Status::damaged(reason)); }
  bool refuse(Status failure) {
    failure_ = std::move(failure);
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
    objectCount_ = readBytes(trailer + 8, 8);
    const std::uint64_t root = readBytes(trailer + 16, 8);
    const std::uint64_t tableStart = readBytes(trailer + 24, 8);
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
    builder_.beginInPlace(bytes_, static_cast<std::size_t>(objectCount_), referenceWidth_);
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
    if (at >= tableStart_ || (bytes_[at] & 0xFC) != marker::kInteger) {
      return refuse("a count is not an integer");
    }
    const unsigned width = 1U << (bytes_[at] & 3U);
    ++at;
    if (width > tableStart_ - at) return refuse("an object reaches beyond the objects");
    count = readBytes(bytes_.data() + at, width);
    at += width;
    return true;
  }

  bool parseObject(std::size_t object) {
    std::size_t at = object + 1;
    const unsigned first = bytes_[object];
    const unsigned low = first & 0x0FU;
    std::uint64_t count = 0;
    switch (first >> 4) {
      case 0x0:
        return parseSingle(object, first);
      case 0x1:
        return parseInteger(object, low);
      case 0x2:
        if (low != 2 && low != 3) return refuse("a real number of an unknown width");
        return addScalar(low == 2 ? Kind::real32 : Kind::real64, object, 1U << low);
      case 0x3:
        if (low != 3) return refuse("an object of an unknown kind");
        return addScalar(Kind::date, object, 8);
      case 0x4:
        if (!readCount(at, low, count) || !take(at, count, 1)) return false;
        builder_.add(Kind::data, object);
        return true;
      case 0x5:
        return readCount(at, low, count) && take(at, count, 1) && parseASCII(object, at, count);
      case 0x6:
        return readCount(at, low, count) && take(at, count, 2) && parseUTF16(at, count);
      case 0x8:
        if (low > 7) return refuse("a UID of an unknown width");
        return addScalar(Kind::uid, object, low + 1);
      case 0xA:
        return readCount(at, low, count) && take(at, count, referenceWidth_) &&
               addContainer(Kind::array, object, at, count);
      case 0xD:
        return readCount(at, low, count) && take(at, count, 2 * referenceWidth_) &&
               addContainer(Kind::map, object, at, count * 2);
      default:
        return refuse("an object of an unknown kind");
    }
  }

  bool addScalar(Kind kind, std::size_t object, unsigned width) {
    if (!take(object + 1, width, 1)) return false;
    builder_.add(kind, object);
    return true;
  }

  bool parseSingle(std::size_t object, unsigned first) {
    if (first == 0x00) return addScalar(Kind::null, object, 0);
    if (first == marker::kFalse || first == marker::kTrue) {
      return addScalar(Kind::boolean, object, 0);
    }
    return refuse("an object of an unknown kind");
  }

  // Up to 4 bytes are unsigned, 8 and 16 bytes are signed.
  bool parseInteger(std::size_t object, unsigned power) {
    if (power > 4) return refuse("an integer of an unknown width");
    if (power < 4) return addScalar(Kind::integer, object, 1U << power);
    if (!addScalar(Kind::integer, object, 16)) return false;
    const auto high = static_cast<std::int64_t>(readBytes(bytes_.data() + object + 1, 8));
    const auto low = static_cast<std::int64_t>(readBytes(bytes_.data() + object + 9, 8));
    if (high == low >> 63) return true;
    builder_.changeLast(high == 0 ? Kind::unsignedInteger : Kind::wideInteger);
    return true;
  }

  bool parseASCII(std::size_t object, std::size_t at, std::uint64_t count) {
    const std::string_view text(reinterpret_cast<const char*>(bytes_.data() + at),
                                static_cast<std::size_t>(count));
    if (!isASCII(text)) return refuse("an ASCII string has a byte above 127");
    builder_.addASCII(object, text);
    return true;
  }

  bool parseUTF16(std::size_t at, std::uint64_t count) {
    const auto units = static_cast<std::size_t>(count);
    text_.resize(units * 3 + 1);
    std::size_t size = 0;
    const std::uint8_t* const text = bytes_.data() + at;
    for (std::size_t i = 0; i < units; ++i) {
      auto unit = static_cast<std::uint32_t>(readBytes(text + 2 * i, 2));
      if (unit >= 0xD800 && unit < 0xE000) {
        const auto low =
            i + 1 < units ? static_cast<std::uint32_t>(readBytes(text + 2 * i + 2, 2)) : 0U;
        if (unit >= 0xDC00 || low < 0xDC00 || low >= 0xE000) {
          return refuse("a string has half of a surrogate pair");
        }
        unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        ++i;
      }
      size += writeUTF8(unit, text_.data() + size);
    }
    builder_.addText({text_.data(), size});
    return true;
  }

  bool addContainer(Kind kind, std::size_t object, std::size_t at, std::uint64_t references) {
    // An index has 4 bytes; what does not fit in is none.
    for (std::uint64_t i = 0; referenceWidth_ > sizeof(Index) && i < references; ++i) {
      if (readBytes(bytes_.data() + at + i * referenceWidth_, referenceWidth_) >= objectCount_) {
        return refuse(kDanglingReference);
      }
    }
    auto status = builder_.addContainer(kind, object);
    return status || refuse(std::move(status));
  }

  ByteSpan bytes_;
  PropertyListBuilder& builder_;
  Status failure_;
  unsigned offsetWidth_ = 0;
  unsigned referenceWidth_ = 0;
  std::uint64_t objectCount_ = 0;
  std::size_t tableStart_ = 0;
  std::uint64_t budget_ = 0;
  std::string text_;
};

}  // namespace

Status parseBinaryPropertyList(ByteSpan bytes, PropertyListBuilder& builder) {
  return BinaryParser(bytes, builder).parse();
}

}  // namespace tarnkit::detail
